#include "graphs/ui/graph_frame.h"

#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPrintDialog>
#include <QPrinter>

#include "app/qt_dialogs.h"
#include "graphs/plot_text.h"
#include "graphs/ui/axis_dialog.h"
#include "graphs/ui/plot_widget.h"
#include "recording/dialogs.h"
#include "recording/save_path.h"

namespace vess {

namespace {

constexpr const char* kExportCaption = "Export Plot";
constexpr const char* kPlotAllTitle = "All Plots";

// A file name from a plot title: letters, digits, spaces, '-' and '_' kept.
std::string FileNameOf(const std::string& title) {
    std::string out;
    for (char c : title)
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == ' ') out += c;
    while (!out.empty() && out.front() == ' ') out.erase(out.begin());
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out.empty() ? "plot" : out;
}

}  // namespace

GraphFrame::~GraphFrame() { disconnect(area_, nullptr, this, nullptr); }

GraphFrame::GraphFrame(QWidget* parent)
    : QMainWindow(parent), area_(new QMdiArea(this)), ownDialogs_(std::make_unique<QtDialogs>(this)) {
    setObjectName("GraphFrame");
    setWindowTitle(tr("Graphs"));
    setAttribute(Qt::WA_QuitOnClose, false);  // the main window decides when the program ends
    area_->setObjectName("GraphArea");
    setCentralWidget(area_);
    resize(900, 650);
    BuildMenus();
    connect(area_, &QMdiArea::subWindowActivated, this, &GraphFrame::OnCurrentChanged);
    OnCurrentChanged();
}

void GraphFrame::BuildMenus() {
    auto add = [&](QMenu* menu, const char* name, const QString& text, auto slot) {
        QAction* a = menu->addAction(text);
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    QMenu* file = menuBar()->addMenu(tr("&File"));
    add(file, "graph_Export", tr("&Export Plot..."), [this] { ExportPlot(CurrentPlot()); });
    add(file, "graph_Print", tr("&Print Plot..."), [this] { PrintPlot(CurrentPlot()); });
    file->addSeparator();
    add(file, "graph_ClosePlot", tr("&Close Plot"), [this] { area_->closeActiveSubWindow(); });
    add(file, "graph_CloseAll", tr("Close &All Plots"), [this] { area_->closeAllSubWindows(); });
    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    add(edit, "graph_CopyPicture", tr("Copy &Picture"), [this] {
        if (PlotWidget* p = CurrentPlot()) p->CopyPicture();
    });
    add(edit, "graph_CopyData", tr("Copy &Data"), [this] {
        if (PlotWidget* p = CurrentPlot()) p->CopyData();
    });
    add(edit, "graph_Axes", tr("&Axes and Titles..."), [this] { EditAxes(CurrentPlot()); });
    add(edit, "graph_ResetView", tr("&Reset View"), [this] {
        if (PlotWidget* p = CurrentPlot()) p->ResetView();
    });
    QMenu* window = menuBar()->addMenu(tr("&Window"));
    add(window, "graph_Tile", tr("&Tile"), [this] { Tile(); });
    add(window, "graph_Cascade", tr("&Cascade"), [this] { Cascade(); });
    add(window, "graph_PlotAll", tr("&All Plots in One"), [this] { PlotAll(); });
}

void GraphFrame::OnCurrentChanged() {
    const bool any = CurrentPlot() != nullptr;
    for (const char* name : {"graph_Export", "graph_Print", "graph_ClosePlot", "graph_CopyPicture",
                             "graph_CopyData", "graph_Axes", "graph_ResetView"})
        if (QAction* a = Action(name)) a->setEnabled(any);
    if (QAction* a = Action("graph_PlotAll")) a->setEnabled(Plots().size() > 1);
}

QAction* GraphFrame::Action(const QString& objectName) const {
    return findChild<QAction*>(objectName);
}

PlotWidget* GraphFrame::AddPlot(const PlotData& plot) {
    auto* widget = new PlotWidget(plot);
    const QString title = plot.title.empty() ? tr("Plot %1").arg(++untitled_)
                                             : QString::fromStdString(plot.title).trimmed();
    widget->setWindowTitle(title);
    connect(widget, &PlotWidget::ExportRequested, this, &GraphFrame::ExportPlot);
    connect(widget, &PlotWidget::PrintRequested, this, &GraphFrame::PrintPlot);
    connect(widget, &PlotWidget::AxesRequested, this, &GraphFrame::EditAxes);
    QMdiSubWindow* sub = area_->addSubWindow(widget);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    connect(sub, &QObject::destroyed, this, &GraphFrame::OnCurrentChanged, Qt::QueuedConnection);
    sub->show();
    // Every plot stays inside the visible frame: the plots share it as tiles.
    area_->tileSubWindows();
    area_->setActiveSubWindow(sub);
    OnCurrentChanged();
    return widget;
}

std::vector<PlotWidget*> GraphFrame::Plots() const {
    std::vector<PlotWidget*> out;
    for (QMdiSubWindow* sub : area_->subWindowList(QMdiArea::CreationOrder))
        if (auto* p = qobject_cast<PlotWidget*>(sub->widget())) out.push_back(p);
    return out;
}

PlotWidget* GraphFrame::CurrentPlot() const {
    QMdiSubWindow* sub = area_->currentSubWindow();
    if (!sub) {
        const auto list = area_->subWindowList(QMdiArea::ActivationHistoryOrder);
        if (list.isEmpty()) return nullptr;
        sub = list.back();
    }
    return qobject_cast<PlotWidget*>(sub->widget());
}

void GraphFrame::Tile() { area_->tileSubWindows(); }
void GraphFrame::Cascade() { area_->cascadeSubWindows(); }

PlotWidget* GraphFrame::PlotAll() {
    std::vector<PlotData> plots;
    for (PlotWidget* p : Plots()) plots.push_back(p->Description());
    if (plots.empty()) return nullptr;
    return AddPlot(CombinePlots(plots, kPlotAllTitle));
}

bool GraphFrame::ExportPlot(PlotWidget* plot) {
    if (!plot) return false;
    const std::string name = FileNameOf(plot->Description().title);
    Dialogs& dialogs = dialogs_ ? *dialogs_ : *ownDialogs_;
    const FileDialogRequest request{kExportCaption, std::string(kPictureFilter), std::string(kPictureExtension),
                                    name};
    const auto chosen = ChooseSavePath(dialogs, request, ExistingFile::AskReplace);
    if (!chosen) return false;
    if (plot->SaveAs(QString::fromStdString(chosen->string()))) return true;
    dialogs.Message(kExportCaption, "The plot could not be written to " + chosen->string() + ".");
    return false;
}

void GraphFrame::SetDialogs(Dialogs* dialogs) {
    windowDialogs_ = dialogs ? std::make_unique<WindowDialogs>(*dialogs, this) : nullptr;
    dialogs_ = windowDialogs_.get();
}

void GraphFrame::PrintPlot(PlotWidget* plot) {
    if (!plot) return;
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(QPageLayout::Landscape);
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted) plot->PrintTo(printer);
}

void GraphFrame::EditAxes(PlotWidget* plot) {
    if (!plot) return;
    AxisDialog dialog(*plot, this);
    dialog.exec();
}

PlotWidget* ShowPlot(ToolWindows& tools, const PlotData& plot) {
    auto* frame = tools.Show<GraphFrame>(
        [&tools](QWidget* owner) {
            auto* f = new GraphFrame(owner);
            f->SetDialogs(tools.Asker());
            return f;
        },
        ToolWindows::Focus::Keep);
    return frame->AddPlot(plot);
}

PlotWidget* ShowPlot(QWidget* from, const PlotData& plot) {
    if (ToolWindows* tools = ToolWindows::Of(from)) return ShowPlot(*tools, plot);
    // A window shown on its own, without the main window: a frame of its own.
    auto* frame = new GraphFrame(from->window());
    frame->setWindowFlag(Qt::Window);
    frame->setAttribute(Qt::WA_DeleteOnClose);
    PlotWidget* widget = frame->AddPlot(plot);
    frame->show();
    return widget;
}

GraphFrame* CurrentGraphFrame() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* frame = qobject_cast<GraphFrame*>(w)) return frame;
    return nullptr;
}

void CloseGraphFrame() { delete CurrentGraphFrame(); }

}  // namespace vess
