#include "detection/ui/accuracy_window.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <atomic>

#include "app/job_runner.h"
#include "detection/method_texts.h"

namespace vess {

AccuracyWindow::AccuracyWindow(JobRunner& jobs, QWidget* parent) : QDialog(parent), jobs_(jobs) {
    setObjectName("frmAccuracy");
    setWindowTitle(method_texts::kCheckCaption);
    auto* layout = new QVBoxLayout(this);
    summary_ = new QLabel(this);
    summary_->setObjectName("lbAccuracySummary");
    summary_->setWordWrap(true);
    // Two lines that wrap into up to four: a wrapped label does not claim
    // its height in the layout by itself.
    summary_->setMinimumHeight(4 * summary_->fontMetrics().lineSpacing() + 4);
    table_ = new QTableWidget(this);
    table_->setObjectName("tblAccuracy");
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->verticalHeader()->hide();
    table_->horizontalHeader()->setStretchLastSection(true);
    recall90_ = new QLabel(this);
    recall90_->setObjectName("lbRecall90");
    status_ = new QLabel(this);
    status_->setObjectName("lbAccuracyStatus");
    progress_ = new QProgressBar(this);
    progress_->setObjectName("pbAccuracy");
    progress_->setRange(0, 1000);
    progress_->setTextVisible(false);
    stop_ = new QPushButton(method_texts::kCheckStop, this);
    stop_->setObjectName("cmdStopCheck");
    connect(stop_, &QPushButton::clicked, this, &AccuracyWindow::Stop);
    auto* running = new QHBoxLayout;
    running->addWidget(status_, 1);
    running->addWidget(progress_, 2);
    running->addWidget(stop_);
    progress_->hide();
    stop_->hide();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(summary_);
    layout->addWidget(table_, 1);
    layout->addWidget(recall90_);
    layout->addLayout(running);
    layout->addWidget(buttons);
    connect(&jobs_, &JobRunner::Progressed, this, [this](double done) {
        if (running_) progress_->setValue(int(done * 1000));
    });
    connect(&jobs_, &JobRunner::RunningChanged, this, [this](bool running) {
        if (!running && running_) EndRun();  // also when the check failed
    });
    resize(640, 580);  // the ten bins without scrolling
}

// A closed window's check is stopped by the runner, its report dropped.
AccuracyWindow::~AccuracyWindow() = default;

bool AccuracyWindow::Start(AccuracyInput input) {
    if (jobs_.Running()) return false;
    Job job = MakeJob(
        std::string(method_texts::kCheckCaption),
        [in = std::move(input)](const JobProgress& progress) {
            std::atomic<bool> cancel{false};
            AccuracyControl control;
            control.cancel = &cancel;
            control.progress = [&](double done) {
                if (!progress(done, {})) cancel = true;
            };
            return RunAccuracyCheck(in, control);
        },
        [this](AccuracyReport report) { OnRunEnded(report); });
    if (!jobs_.Start(std::move(job), this)) return false;
    running_ = true;
    status_->setText(method_texts::kCheckRunning);
    progress_->setValue(0);
    progress_->show();
    stop_->setEnabled(true);
    stop_->show();
    return true;
}

void AccuracyWindow::Stop() {
    if (!running_) return;
    jobs_.Stop();
    status_->setText(method_texts::kCheckStopping);
    stop_->setEnabled(false);
}

void AccuracyWindow::done(int result) {
    Stop();
    QDialog::done(result);
}

void AccuracyWindow::EndRun() {
    running_ = false;
    progress_->hide();
    stop_->hide();
}

void AccuracyWindow::OnRunEnded(const AccuracyReport& report) {
    EndRun();
    if (report.status.cancelled()) {
        status_->setText(method_texts::kCheckStopped);
        return;
    }
    if (report.status.failed()) {
        status_->setText(QString::fromStdString(report.status.message()));
        return;
    }
    status_->clear();
    Show(report);
    emit Finished(report);
}

QString AccuracyWindow::Summary() const { return summary_->text() + "\n" + recall90_->text(); }

QString AccuracyWindow::Status() const { return status_->text(); }

void AccuracyWindow::Show(const AccuracyReport& r) {
    const QString units = QString::fromStdString(r.units);
    summary_->setText(QString::fromStdString(AccuracySummary(r)));
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
    recall90_->setText(QString::fromStdString(AccuracyRecall90Text(r)));
}

}  // namespace vess
