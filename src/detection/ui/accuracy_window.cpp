#include "detection/ui/accuracy_window.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

#include "detection/method_texts.h"

namespace vess {

AccuracyWindow::AccuracyWindow(QWidget* parent) : QDialog(parent) {
    setObjectName("frmAccuracy");
    setWindowTitle(method_texts::kCheckCaption);
    auto* layout = new QVBoxLayout(this);
    summary_ = new QLabel(this);
    summary_->setObjectName("lbAccuracySummary");
    summary_->setWordWrap(true);
    table_ = new QTableWidget(this);
    table_->setObjectName("tblAccuracy");
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->verticalHeader()->hide();
    table_->horizontalHeader()->setStretchLastSection(true);
    recall90_ = new QLabel(this);
    recall90_->setObjectName("lbRecall90");
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(summary_);
    layout->addWidget(table_, 1);
    layout->addWidget(recall90_);
    layout->addWidget(buttons);
    resize(560, 400);
}

QString AccuracyWindow::Summary() const { return summary_->text() + "\n" + recall90_->text(); }

void AccuracyWindow::Show(const AccuracyReport& r) {
    const QString units = QString::fromStdString(r.units);
    summary_->setText(tr("%1 s of the channel checked, noise SD %2 %3. %4 events added, %5 found "
                         "(recall %6); %7 false detections; %8 detections in the unchanged copy.")
                          .arg(r.seconds, 0, 'f', 1)
                          .arg(r.noiseSdUnits, 0, 'g', 4)
                          .arg(units)
                          .arg(r.added)
                          .arg(r.found)
                          .arg(r.added > 0 ? double(r.found) / r.added : 0.0, 0, 'f', 3)
                          .arg(r.falsePositives)
                          .arg(r.originalEvents));
    const QStringList headers{tr("From (%1)").arg(units), tr("To (%1)").arg(units), tr("Added"),
                              tr("Found"), tr("Recall"), tr("False")};
    table_->clear();
    table_->setColumnCount(int(headers.size()));
    table_->setHorizontalHeaderLabels(headers);
    table_->setRowCount(int(r.bins.size()));
    for (int row = 0; row < int(r.bins.size()); ++row) {
        const AccuracyBin& b = r.bins[std::size_t(row)];
        const QString cells[] = {QString::number(b.lowUnits, 'g', 4), QString::number(b.highUnits, 'g', 4),
                                 QString::number(b.added), QString::number(b.found),
                                 QString::number(b.Recall(), 'f', 3), QString::number(b.falsePositives)};
        for (int c = 0; c < 6; ++c) {
            auto* item = new QTableWidgetItem(cells[c]);
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            table_->setItem(row, c, item);
        }
    }
    table_->resizeColumnsToContents();
    recall90_->setText(r.recall90Units
                           ? tr("Recall reaches 90 % from %1 %2.").arg(*r.recall90Units, 0, 'g', 4).arg(units)
                           : tr("Recall stays below 90 %."));
}

}  // namespace vess
