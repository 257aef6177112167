// The series that the statistics subcommands read: a text file of numbers
// (one a line), a column of an array text file (FILE.txt:1, FILE.txt:2), or
// an event field of an event file (FILE.EVT:FIELD, FIELD being a fill
// caption in lower case without spaces, or "interevent").
#pragma once

#include <string>
#include <vector>

namespace vess::cli {

struct LoadedSeries {
    std::vector<float> values;   // as a work array would hold them
    std::string error;           // empty on success
    bool Ok() const { return error.empty(); }
    std::vector<double> AsDouble() const { return {values.begin(), values.end()}; }
};

// group selects events of one group (0: all); intervals turns the series into
// the differences of its sorted values (for an event file: the inter-event
// intervals of the group, whatever the field).
LoadedSeries LoadSeries(const std::string& source, int group = 0, bool intervals = false);

}  // namespace vess::cli
