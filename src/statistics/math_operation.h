// The Mathematical Operation window's core: result[i] = operand1[i] op
// operand2[i] over the shorter operand, into Array #1 or #2.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {

struct Workspace;

// Operand choices (Combo1), by index.
enum class MathOperand {
    Amplitude = 0, Time, RiseTime, DecayTime, Area, Noise, Baseline, Group, Channel, Rise1090,
    HalfWidth, Rise50, Direction, InterEventInterval, Array1, Array2, Constant
};
inline constexpr int kMathOperandCount = 17;
// Operations (Combo2), by index; Squared and SquareRoot are unary.
enum class MathOperation { Addition = 0, Subtraction, Multiply, Divide, Squared, SquareRoot };
inline constexpr int kMathOperationCount = 6;

std::string_view MathOperandCaption(MathOperand operand);
std::string_view MathOperationCaption(MathOperation operation);
bool IsUnary(MathOperation operation);

struct MathRequest {
    MathOperand operand1 = MathOperand::Array1;
    double constant1 = 0;        // used when operand1 is Constant
    MathOperation operation = MathOperation::Addition;
    MathOperand operand2 = MathOperand::Array2;
    double constant2 = 0;        // used when operand2 is Constant
    int destination = 1;         // array 1 or 2
};

// The operand's series: event fields in table order (converted as the array
// fill converts them), intervals of all events, elements 1..upper bound of an
// array; std::nullopt for Constant (a constant has no length).
std::optional<std::vector<double>> OperandValues(const Workspace& ws, MathOperand operand);

struct MathResult {
    std::vector<float> values;
    int nonFinite = 0;           // elements that came out as inf or NaN (x/0, sqrt(-1))
};
// Element by element over the shorter series operand (a constant applies to
// every element; two constants give one element). Division by zero gives
// +-inf (0/0 NaN), the square root of a negative NaN, counted in nonFinite.
MathResult ComputeMath(const Workspace& ws, const MathRequest& request);

// "Caculate": compute, replace the destination array, report. Cancelled
// (and changes nothing) when there is nothing to compute.
CommandResult MathOperationCommand(Workspace& ws, Dialogs& dialogs, const MathRequest& request);

}  // namespace vess
