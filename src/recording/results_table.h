// The program-wide results table of the group analysis window: a 1-based
// table of fixed 280-byte rows that outlives the window. The table only
// stores and moves whole rows; what lies where inside a row is the group
// analysis subsystem's layout.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vess {

inline constexpr std::size_t kResultRowBytes = 280;
using ResultBytes = std::array<uint8_t, kResultRowBytes>;

class ResultsTable {
public:
    int32_t Count() const { return static_cast<int32_t>(rows_.size()); }
    bool Empty() const { return rows_.empty(); }
    // 1-based access; i must lie in 1..Count().
    ResultBytes& operator[](int32_t i) { return rows_[static_cast<std::size_t>(i - 1)]; }
    const ResultBytes& operator[](int32_t i) const { return rows_[static_cast<std::size_t>(i - 1)]; }

    void Append(const ResultBytes& row) { rows_.push_back(row); }
    void Clear() { rows_.clear(); }
    const std::vector<ResultBytes>& Rows() const { return rows_; }
    void Assign(std::vector<ResultBytes> rows) { rows_ = std::move(rows); }

    bool operator==(const ResultsTable&) const = default;

private:
    std::vector<ResultBytes> rows_;
};

}  // namespace vess
