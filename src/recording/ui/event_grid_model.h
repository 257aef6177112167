// The event grid (TDBGrid1) as an unbound model: every cell is fetched from
// the workspace's EventTable when the view paints it, so the grid never holds
// a copy of the events. Column 0 is the event number, 1..17 the captioned
// fields in grid order.
#pragma once

#include <QAbstractTableModel>

#include "recording/workspace.h"

namespace vess {

class EventGridModel : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit EventGridModel(const Workspace& ws, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // Brings the row count in line with the table: appended rows are
    // inserted (the view keeps its place), any other change resets.
    void Sync();
    // Rows may have changed in place (groups, sort, undo): repaint them.
    void ContentChanged();

private:
    const Workspace& ws_;
    int rows_ = 0;
    bool contentChanged_ = false;
};

}  // namespace vess
