#include "statistics/ui/data_analysis_window.h"

#include <QApplication>
#include <QClipboard>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QStackedWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTextDocument>

#include "graphs/ui/axis_dialog.h"
#include "graphs/ui/plot_widget.h"
#include "recording/dialogs.h"
#include "recording/workspace.h"
#include "statistics/array_entry.h"
#include "statistics/texts.h"
#include "statistics/ui/array_grid_model.h"
#include "statistics/ui/result_grid.h"
#include "statistics/ui/sample_frame.h"
#include "statistics/ui/texts.h"

namespace vess {

using stats_ui_texts::Q;

namespace {

// Tests that read a sample's summary instead of an array.
bool ReadsSummaries(StatTest test) {
    return test == StatTest::TTestEqualVar || test == StatTest::TTestUnequalVar ||
           test == StatTest::FTest;
}
}  // namespace

DataAnalysisWindow::DataAnalysisWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent)
    : QMainWindow(parent, Qt::Window), ws_(ws), dialogs_(dialogs, this) {
    setObjectName("frmDataAnalysis");
    auto* central = new QWidget(this);
    auto* layout = new QHBoxLayout(central);
    layout->addWidget(BuildInputFrame());
    pages_ = new QStackedWidget(central);
    pages_->addWidget(BuildResultFrame());
    arrays_ = new ArrayGridModel(ws_, this);
    arrayGrid_ = new QTableView(pages_);
    arrayGrid_->setObjectName("ArrayGrid");
    arrayGrid_->setModel(arrays_);
    arrayGrid_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    pages_->addWidget(arrayGrid_);
    layout->addWidget(pages_, 1);
    setCentralWidget(central);
    BuildMenus();
    resize(900, 520);
    SetTest(test_);
}

QGroupBox* DataAnalysisWindow::BuildInputFrame() {
    auto* frame = new QGroupBox(Q(stats_texts::kDataInputFrame), this);
    frame->setObjectName("DataInput");
    sample1_ = new SampleFrame(1, frame);
    sample2_ = new SampleFrame(2, frame);
    alpha_ = new QLineEdit(Q(stats_texts::kAlphaDefault), frame);
    alpha_->setObjectName("txtAlpha");
    auto* test = run_ = new QPushButton(Q(stats_texts::kTestButton), frame);
    test->setObjectName("Command1");
    test->setDefault(true);
    auto* cancel = new QPushButton(Q(stats_texts::kCancelButton), frame);
    cancel->setObjectName("Command2");
    auto* help = new QPushButton(Q(stats_texts::kHelpButton), frame);
    help->setObjectName("Command3");
    connect(test, &QPushButton::clicked, this, &DataAnalysisWindow::RunTest);
    connect(cancel, &QPushButton::clicked, this, &QWidget::close);
    connect(help, &QPushButton::clicked, this, &DataAnalysisWindow::ShowHelp);

    auto* alphaRow = new QHBoxLayout;
    alphaRow->addWidget(new QLabel(Q(stats_ui_texts::kSignificance), frame));
    alphaRow->addWidget(alpha_);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {test, cancel, help}) buttons->addWidget(b);
    auto* v = new QVBoxLayout(frame);
    v->addWidget(sample1_);
    v->addWidget(sample2_);
    v->addLayout(alphaRow);
    v->addStretch(1);
    v->addLayout(buttons);
    return frame;
}

QGroupBox* DataAnalysisWindow::BuildResultFrame() {
    auto* frame = new QGroupBox(Q(stats_texts::kResultDisplayFrame), this);
    frame->setObjectName("ResultDisplay");
    grid_ = new QTableWidget(frame);
    grid_->setObjectName("Grid1");
    grid_->verticalHeader()->hide();
    graphBox_ = new QVBoxLayout;
    auto* v = new QVBoxLayout(frame);
    v->addWidget(grid_, 1);
    v->addLayout(graphBox_, 2);
    return frame;
}

void DataAnalysisWindow::BuildMenus() {
    auto add = [&](QMenu* menu, const char* name, std::string_view text, auto slot) {
        QAction* a = menu->addAction(Q(text));
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, slot);
    };
    QMenu* data = menuBar()->addMenu(tr("&Data"));
    add(data, "menu_ViewArray", stats_ui_texts::kViewArrayMenu, [this] { ShowArrays(false); });
    add(data, "menu_EditArray", stats_ui_texts::kEditArrayMenu, [this] { ShowArrays(true); });
    QMenu* result = menuBar()->addMenu(tr("&Result"));
    add(result, "menu_CopyResult", stats_ui_texts::kCopyResultMenu, [this] { CopyResults(); });
    add(result, "menu_PrintResult", stats_ui_texts::kPrintResultMenu, [this] { PrintResults(); });
    QMenu* graph = menuBar()->addMenu(tr("&Graph"));
    add(graph, "menu_CustomizeGraph", stats_ui_texts::kCustomizeGraphMenu, [this] { CustomizeGraph(); });
}

void DataAnalysisWindow::SetTest(StatTest test) {
    test_ = test;
    setWindowTitle(Q(stats_ui_texts::kDataAnalysisTitle) + " - " + Q(StatTestMenuCaption(test)));
    sample1_->AllowSummary(ReadsSummaries(test));
    sample2_->AllowSummary(ReadsSummaries(test));
    pages_->setCurrentIndex(0);
}

void DataAnalysisWindow::ShowArrays(bool editable) {
    setWindowTitle(Q(stats_ui_texts::kDataAnalysisTitle) + " - " + Q(stats_texts::kManualDataEntryMenu));
    arrays_->SetEditable(editable);
    pages_->setCurrentWidget(arrayGrid_);
}

void DataAnalysisWindow::ReloadArrays() { arrays_->Reload(); }

bool DataAnalysisWindow::RunTest() {
    const auto s1 = sample1_->Chosen();
    const auto s2 = sample2_->Chosen();
    const auto alpha = ParseTypedValue(alpha_->text().toStdString());
    if (!s1 || !s2 || !alpha) {
        dialogs_.Message(std::string(stats_ui_texts::kBadSummaryCaption),
                         std::string(stats_ui_texts::kBadSummaryText));
        return false;
    }
    const auto outcome = RunTestCommand(ws_, TestRequest{test_, *s1, *s2, *alpha});
    if (!ShowFailure(dialogs_, outcome.status())) return false;
    pages_->setCurrentIndex(0);
    ShowResultTable(*grid_, outcome->table);
    delete graph_;
    graph_ = nullptr;
    if (outcome->plot) {
        graph_ = new PlotWidget(*outcome->plot);
        graph_->setObjectName("ResultGraph");
        graphBox_->addWidget(graph_);
        graph_->show();
    }
    return true;
}

void DataAnalysisWindow::CopyResults() { QApplication::clipboard()->setText(GridText(*grid_)); }

void DataAnalysisWindow::PrintResults() {
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted) return;
    QTextDocument doc;
    doc.setPlainText(windowTitle() + "\n\n" + GridText(*grid_).replace('\t', "    "));
    doc.print(&printer);
}

void DataAnalysisWindow::CustomizeGraph() {
    if (!graph_) return;
    AxisDialog dialog(*graph_, this);
    dialog.exec();
}

void DataAnalysisWindow::ShowHelp() {
    dialogs_.Message(std::string(stats_texts::kHelpButton), std::string(stats_ui_texts::kHelpText));
}

}  // namespace vess
