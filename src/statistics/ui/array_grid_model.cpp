#include "statistics/ui/array_grid_model.h"

#include <algorithm>

#include "recording/workspace.h"
#include "statistics/array_entry.h"
#include "statistics/result_table.h"
#include "statistics/texts.h"

namespace vess {

ArrayGridModel::ArrayGridModel(Workspace& ws, QObject* parent) : QAbstractTableModel(parent), ws_(ws) {}

void ArrayGridModel::SetEditable(bool editable) {
    beginResetModel();
    editable_ = editable;
    endResetModel();
}

void ArrayGridModel::Reload() {
    beginResetModel();
    endResetModel();
}

int ArrayGridModel::rowCount(const QModelIndex& parent) const {
    if (parent.isValid()) return 0;
    const int rows = std::max(ws_.array1.UpperBound(), ws_.array2.UpperBound());
    return std::max(rows, 0) + (editable_ ? 1 : 0);
}

int ArrayGridModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : 2; }

QVariant ArrayGridModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const DataArray& a = ws_.Array(index.column() + 1);
    const int32_t element = index.row() + 1;
    if (element > a.UpperBound()) return {};
    if (role == Qt::DisplayRole)
        return QString::fromStdString(FormatNumber(a[element], 3, true));  // "#,##0.000"
    if (role == Qt::EditRole) return QString::number(double(a[element]), 'g', 9);  // a line editor, all digits
    if (role == Qt::TextAlignmentRole) return int(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant ArrayGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) return {};
    if (orientation == Qt::Vertical) return section + 1;
    return QString::fromStdString(stats_texts::DataArrayColumn(section + 1));
}

Qt::ItemFlags ArrayGridModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (editable_ && index.isValid()) f |= Qt::ItemIsEditable;
    return f;
}

bool ArrayGridModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!editable_ || role != Qt::EditRole || !index.isValid()) return false;
    const auto v = ParseTypedValue(value.toString().toStdString());
    if (!v) return false;
    const int rowsBefore = rowCount();
    SetArrayElement(ws_.Array(index.column() + 1), index.row() + 1, float(*v));
    if (rowCount() != rowsBefore) {
        Reload();  // the empty row moved down
    } else {
        emit dataChanged(index, index);
    }
    return true;
}

}  // namespace vess
