#include "group_analysis/ui/results_grid_model.h"

#include "group_analysis/results_commands.h"

namespace vess::group {

ResultsGridModel::ResultsGridModel(const ResultsTable& table, QObject* parent)
    : QAbstractTableModel(parent), table_(table) {}

void ResultsGridModel::Reload(std::vector<ResultColumn> columns) {
    beginResetModel();
    columns_ = std::move(columns);
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
    const std::string_view title = columns_[std::size_t(section)].title;
    return QString::fromUtf8(title.data(), qsizetype(title.size()));
}

}  // namespace vess::group
