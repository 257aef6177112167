// Pieces the heart-rate windows share: the bound and preset controls, grids
// filled from rows of text, and printing a grid (from graphs/ui).
#pragma once

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QTableWidget>

#include <string>
#include <string_view>
#include <vector>

#include "graphs/ui/grid_print.h"
#include "hrv/hrv_options.h"


namespace vess::hrv {

inline QString Q(std::string_view s) { return QString::fromUtf8(s.data(), qsizetype(s.size())); }

// An editable list of values in ms, with the current one as typed.
QComboBox* MakeValueList(const char* objectName, const QStringList& values, double current,
                         QWidget* parent);
double ValueOf(const QComboBox* list, double fallback);
void SetValue(QComboBox* list, double value);
// The bound row of every heart-rate window: "Do not use RR intervals greater
// than " [cbRRUBound] "and smaller than" [cbRRLBound] "msec." in columns 0-4
// of row; the two lists are returned.
struct BoundLists {
    QComboBox* upper;
    QComboBox* lower;
};
BoundLists AddBoundRow(QGridLayout* grid, int row, const HrvOptions& options, QWidget* parent);

// The species presets ("Human", "Mouse", the stored defaults) and the label
// that says which one the options match; the list follows a matching preset.
QComboBox* MakePresetList(QWidget* parent);
void ShowPresetInForce(QLabel* label, QComboBox* presets, const HrvOptions& options, double intervalUs);

void FillGrid(QTableWidget* grid, const std::vector<std::string>& titles,
              const std::vector<std::vector<std::string>>& rows);
using vess::PrintGrid;

}  // namespace vess::hrv
