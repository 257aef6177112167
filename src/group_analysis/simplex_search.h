// A downhill simplex search over any objective: the starting vertex and one
// more per parameter, each moving one parameter by a tenth of its value,
// then reflect, expand, contract and shrink until the spread of the
// objective over the vertices falls within the tolerance; then restarted
// from the best vertex until a restart no longer lowers the minimum by more
// than the tolerance.
#pragma once

#include <functional>
#include <span>
#include <vector>

namespace vess::group {

struct SimplexLimits {
    int maxIterations = 500;  // over every run together
    double tolerance = 0.001; // relative spread of the objective
};

struct SimplexMinimum {
    std::vector<double> point;
    double value = 0;
    int iterations = 0;
};

using Objective = std::function<double(std::span<const double>)>;

SimplexMinimum MinimiseBySimplex(const Objective& f, std::vector<double> start, const SimplexLimits& limits);

}  // namespace vess::group
