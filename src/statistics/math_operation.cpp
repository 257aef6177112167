#include "statistics/math_operation.h"

#include <algorithm>
#include <cmath>

#include "recording/workspace.h"
#include "statistics/array_fill.h"
#include "statistics/texts.h"

namespace vess {

namespace st = stats_texts;

namespace {

// The fill item behind each event-field operand.
std::optional<ArrayField> FieldOf(MathOperand operand) {
    switch (operand) {
        case MathOperand::Amplitude: return ArrayField::Amplitude;
        case MathOperand::Time: return ArrayField::Time;
        case MathOperand::RiseTime: return ArrayField::RiseTime;
        case MathOperand::DecayTime: return ArrayField::DecayTime;
        case MathOperand::Area: return ArrayField::Area;
        case MathOperand::Noise: return ArrayField::Noise;
        case MathOperand::Baseline: return ArrayField::Baseline;
        case MathOperand::Group: return ArrayField::Group;
        case MathOperand::Channel: return ArrayField::Channel;
        case MathOperand::Rise1090: return ArrayField::Rise1090;
        case MathOperand::HalfWidth: return ArrayField::HalfWidth;
        case MathOperand::Rise50: return ArrayField::Rise50;
        case MathOperand::Direction: return ArrayField::PeakDirection;
        default: break;
    }
    return std::nullopt;
}

double Apply(MathOperation op, double a, double b) {
    switch (op) {
        case MathOperation::Addition: return a + b;
        case MathOperation::Subtraction: return a - b;
        case MathOperation::Multiply: return a * b;
        case MathOperation::Divide: return a / b;  // IEEE: x/0 is +-inf, 0/0 NaN
        case MathOperation::Squared: return a * a;
        case MathOperation::SquareRoot: break;
    }
    return std::sqrt(a);
}

std::vector<double> ToDouble(const std::vector<float>& v) { return {v.begin(), v.end()}; }

}  // namespace

std::string_view MathOperandCaption(MathOperand operand) { return st::kOperandCaptions[int(operand)]; }
std::string_view MathOperationCaption(MathOperation operation) { return st::kOperationCaptions[int(operation)]; }
bool IsUnary(MathOperation operation) {
    return operation == MathOperation::Squared || operation == MathOperation::SquareRoot;
}

std::optional<std::vector<double>> OperandValues(const Workspace& ws, MathOperand operand) {
    if (operand == MathOperand::Constant) return std::nullopt;
    if (operand == MathOperand::Array1 || operand == MathOperand::Array2) {
        const DataArray& a = ws.Array(operand == MathOperand::Array1 ? 1 : 2);
        return a.ValuesAsDouble();
    }
    if (operand == MathOperand::InterEventInterval) return ToDouble(InterEventIntervals(ws.events, 0, ws.recording ? ws.recording->IntervalUs() : 0.0));
    return ToDouble(EventFieldValues(ws.recording.get(), ws.events, *FieldOf(operand), 0));
}

MathResult ComputeMath(const Workspace& ws, const MathRequest& request) {
    const bool unary = IsUnary(request.operation);
    const auto first = OperandValues(ws, request.operand1);
    const auto second = unary ? std::optional<std::vector<double>>{} : OperandValues(ws, request.operand2);
    // A constant has no length: the series operand decides, the shorter of two.
    std::size_t n = 1;
    if (first && second)
        n = std::min(first->size(), second->size());
    else if (first)
        n = first->size();
    else if (second)
        n = second->size();
    MathResult result;
    result.values.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double a = first ? (*first)[i] : request.constant1;
        const double b = second ? (*second)[i] : request.constant2;
        const auto v = float(Apply(request.operation, a, b));
        if (!std::isfinite(v)) ++result.nonFinite;
        result.values.push_back(v);
    }
    return result;
}

CommandResult MathOperationCommand(Workspace& ws, Dialogs& dialogs, const MathRequest& request) {
    const MathResult result = ComputeMath(ws, request);
    if (result.values.empty()) return CommandResult::Cancelled();
    const int k = request.destination == 1 ? 1 : 2;
    ws.Array(k).Assign(result.values);
    dialogs.Message(std::string(st::kMathFinishedCaption), st::MathFinishedText(k));
    if (result.nonFinite > 0)
        dialogs.Message(std::string(st::kMathFinishedCaption), st::MathNotNumbersText(result.nonFinite));
    return CommandResult::Ok();
}

}  // namespace vess
