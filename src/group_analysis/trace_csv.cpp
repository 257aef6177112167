#include "group_analysis/trace_csv.h"

#include <sstream>

#include <fmt/format.h>

namespace vess::group {

std::optional<TextTrace> ReadTextTrace(std::istream& in, std::string& error) {
    TextTrace t;
    std::string line;
    std::getline(in, line);
    int number = 1;
    while (std::getline(in, line)) {
        ++number;
        for (char& c : line)
            if (c == ',' || c == '\t' || c == ';' || c == '\r') c = ' ';
        if (line.find_first_not_of(' ') == std::string::npos) continue;
        std::istringstream fields(line);
        double x = 0, y = 0;
        if (!(fields >> x >> y)) {
            error = fmt::format("line {} does not hold two numbers", number);
            return std::nullopt;
        }
        t.x.push_back(x);
        t.y.push_back(y);
    }
    if (t.x.size() < 2) {
        error = "the trace needs at least two points";
        return std::nullopt;
    }
    return t;
}

}  // namespace vess::group
