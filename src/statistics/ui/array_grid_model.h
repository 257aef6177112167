// Both work arrays side by side ("Data Array #1", "Data Array #2"), row i
// showing element i formatted "#,##0.000". In edit mode a typed value is
// written back into its array by row, and one empty row at the end takes
// new values.
#pragma once

#include <QAbstractTableModel>

namespace vess {

struct Workspace;

class ArrayGridModel : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit ArrayGridModel(Workspace& ws, QObject* parent = nullptr);

    void SetEditable(bool editable);
    bool Editable() const { return editable_; }
    // Re-reads the arrays (after a fill, paste or import).
    void Reload();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    Workspace& ws_;
    bool editable_ = false;
};

}  // namespace vess
