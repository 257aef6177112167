// Placeholder translation unit for a subsystem that has no sources yet.
