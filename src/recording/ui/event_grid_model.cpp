#include "recording/ui/event_grid_model.h"

#include <QColor>

#include "recording/event_grid.h"
#include "recording/event_grid_format.h"

namespace vess {
namespace {
const QColor kRejectedText(0x9a, 0x9a, 0x9a);
const QColor kGroupedBack(0xe6, 0xf0, 0xff);
}  // namespace

EventGridModel::EventGridModel(const Workspace& ws, QObject* parent)
    : QAbstractTableModel(parent), ws_(ws), rows_(ws.events.Count()) {}

int EventGridModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

int EventGridModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kEventGridColumns;
}

QVariant EventGridModel::data(const QModelIndex& index, int role) const {
    const int row = index.row() + 1;
    if (!index.isValid() || row > ws_.events.Count()) return {};
    const EventRecord& r = ws_.events[row];
    switch (role) {
    case Qt::DisplayRole:
        return QString::fromStdString(
            FormatGridCell(EventCellValue(ws_.recording.get(), r, row, index.column()),
                           EventColumnDecimals(ws_.recording.get(), index.column())));
    case Qt::TextAlignmentRole:
        return int(Qt::AlignRight | Qt::AlignVCenter);
    case Qt::ForegroundRole:
        if (r.group == kGroupRejected) return kRejectedText;
        return {};
    case Qt::BackgroundRole:
        if (r.group != 0 && r.group != kGroupRejected) return kGroupedBack;
        return {};
    default:
        return {};
    }
}

QVariant EventGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) return {};
    if (orientation == Qt::Vertical) return section + 1;
    const std::string units = ws_.recording ? ws_.recording->Units() : std::string();
    return QString::fromStdString(EventColumnLabel(section, units));
}

void EventGridModel::Sync() {
    const int count = ws_.events.Count();
    if (contentChanged_ || count < rows_) {
        beginResetModel();
        rows_ = count;
        contentChanged_ = false;
        endResetModel();
        return;
    }
    if (count > rows_) {
        beginInsertRows({}, rows_, count - 1);
        rows_ = count;
        endInsertRows();
    }
}

void EventGridModel::ContentChanged() { contentChanged_ = true; }

}  // namespace vess
