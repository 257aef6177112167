#include "group_analysis/ui/results_grid_model.h"

#include "group_analysis/result_units.h"
#include "group_analysis/results_commands.h"

namespace vess::group {

ResultsGridModel::ResultsGridModel(const ResultsTable& table, QObject* parent)
    : QAbstractTableModel(parent), table_(table) {}

void ResultsGridModel::Reload(std::vector<ResultColumn> columns, ResultKind kind, std::string_view signalUnit) {
    beginResetModel();
    columns_ = std::move(columns);
    headings_.clear();
    for (const ResultColumn& c : columns_)
        headings_.push_back(QString::fromStdString(ColumnHeading(kind, c.title, signalUnit)));
    endResetModel();
}

int ResultsGridModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : table_.Count();
}

int ResultsGridModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(columns_.size());
}

QVariant ResultsGridModel::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole || !index.isValid() || index.row() >= table_.Count() ||
        index.column() >= int(columns_.size()))
        return {};
    return QString::fromStdString(FormatResult(ResultCell(table_[index.row() + 1], columns_[std::size_t(index.column())])));
}

QVariant ResultsGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) return {};
    if (orientation == Qt::Vertical) return section + 1;
    if (section < 0 || section >= int(columns_.size())) return {};
    return headings_[std::size_t(section)];
}

}  // namespace vess::group
