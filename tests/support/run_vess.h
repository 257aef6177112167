// Runs the built vess program (VESS_CLI, defined for the command-line tests)
// and captures its standard output, standard error and exit status.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vess::test {

struct VessRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

// args are passed to the shell as written; errFile receives stderr.
inline VessRun RunVessCli(const std::string& args, const std::filesystem::path& errFile) {
    const std::string command = std::string(VESS_CLI) + " " + args + " 2>" + errFile.string();
    VessRun run;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return run;
    char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) run.out.append(buffer, n);
    const int status = ::pclose(pipe);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream err(errFile);
    run.err.assign(std::istreambuf_iterator<char>(err), std::istreambuf_iterator<char>());
    return run;
}

}  // namespace vess::test
