// The results grid of the group analysis window as a model over the results
// table: cells are formatted when the view asks for them, so a table of
// millions of rows costs its rows and no item per cell.
#pragma once

#include <QAbstractTableModel>
#include <QString>

#include <string_view>
#include <vector>

#include "group_analysis/result_row.h"
#include "recording/results_table.h"

namespace vess::group {

class ResultsGridModel : public QAbstractTableModel {
public:
    ResultsGridModel(const ResultsTable& table, QObject* parent = nullptr);

    // The table changed (rows or the kind of its last row): columns of that
    // kind, headed with their units (signalUnit: the recording's, empty when
    // none is open), every row shown again.
    void Reload(std::vector<ResultColumn> columns, ResultKind kind, std::string_view signalUnit);
    const std::vector<ResultColumn>& Columns() const { return columns_; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    const ResultsTable& table_;
    std::vector<ResultColumn> columns_;
    std::vector<QString> headings_;
};

}  // namespace vess::group
