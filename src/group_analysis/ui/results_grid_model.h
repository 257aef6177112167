// The results grid of the group analysis window as a model over the results
// table: cells are formatted when the view asks for them, so a table of
// millions of rows costs its rows and no item per cell.
#pragma once

#include <QAbstractTableModel>

#include <vector>

#include "group_analysis/result_row.h"
#include "recording/results_table.h"

namespace vess::group {

class ResultsGridModel : public QAbstractTableModel {
public:
    ResultsGridModel(const ResultsTable& table, QObject* parent = nullptr);

    // The table changed (rows or the kind of its last row): columns of that
    // kind, every row shown again.
    void Reload(std::vector<ResultColumn> columns);
    const std::vector<ResultColumn>& Columns() const { return columns_; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    const ResultsTable& table_;
    std::vector<ResultColumn> columns_;
};

}  // namespace vess::group
