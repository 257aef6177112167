#include "hrv/ui/hrv_widgets.h"

#include <QHeaderView>

#include "hrv/texts.h"

namespace vess::hrv {

QComboBox* MakeValueList(const char* objectName, const QStringList& values, double current,
                         QWidget* parent) {
    auto* list = new QComboBox(parent);
    list->setObjectName(objectName);
    list->setEditable(true);
    list->addItems(values);
    SetValue(list, current);
    return list;
}

double ValueOf(const QComboBox* list, double fallback) {
    bool ok = false;
    const double v = list->currentText().trimmed().toDouble(&ok);
    return ok ? v : fallback;
}

void SetValue(QComboBox* list, double value) { list->setCurrentText(QString::number(value)); }

BoundLists AddBoundRow(QGridLayout* grid, int row, const HrvOptions& options, QWidget* parent) {
    const BoundLists b{
        MakeValueList("cbRRUBound", {"100", "200", "250", "500", "1000", "2000"}, options.upperBoundMs, parent),
        MakeValueList("cbRRLBound", {"10", "20", "50", "100", "300"}, options.lowerBoundMs, parent)};
    grid->addWidget(new QLabel(Q(texts::kUpperBoundLabel), parent), row, 0);
    grid->addWidget(b.upper, row, 1);
    grid->addWidget(new QLabel(Q(texts::kLowerBoundLabel), parent), row, 2);
    grid->addWidget(b.lower, row, 3);
    grid->addWidget(new QLabel(Q(texts::kMsecLabel), parent), row, 4);
    return b;
}

QComboBox* MakePresetList(QWidget* parent) {
    auto* list = new QComboBox(parent);
    list->setObjectName("cbPreset");
    for (Preset p : {Preset::Stored, Preset::Human, Preset::Mouse})
        list->addItem(QString::fromStdString(std::string(PresetName(p))), int(p));
    return list;
}

void ShowPresetInForce(QLabel* label, QComboBox* presets, const HrvOptions& options, double intervalUs) {
    const Preset p = PresetInForce(options, intervalUs);
    label->setText(QStringLiteral("In force: %1").arg(Q(PresetName(p))));
    if (const int index = presets->findData(int(p)); index >= 0) presets->setCurrentIndex(index);
}

void FillGrid(QTableWidget* grid, const std::vector<std::string>& titles,
              const std::vector<std::vector<std::string>>& rows) {
    grid->clear();
    grid->setColumnCount(int(titles.size()));
    grid->setRowCount(int(rows.size()));
    QStringList headers;
    for (const auto& t : titles) headers << QString::fromStdString(t);
    grid->setHorizontalHeaderLabels(headers);
    for (int r = 0; r < int(rows.size()); ++r)
        for (int c = 0; c < int(rows[std::size_t(r)].size()); ++c) {
            auto* item = new QTableWidgetItem(QString::fromStdString(rows[std::size_t(r)][std::size_t(c)]));
            item->setFlags(item->flags() & ~Qt::ItemIsEditable);
            if (c > 0) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            grid->setItem(r, c, item);
        }
    grid->resizeColumnsToContents();
}

}  // namespace vess::hrv
