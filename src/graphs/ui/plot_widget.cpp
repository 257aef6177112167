#include "graphs/ui/plot_widget.h"

#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QMenu>
#include <QVBoxLayout>

#include "graphs/plot_layout.h"
#include "graphs/ui/plot_canvas.h"
#include "graphs/ui/plot_style.h"

namespace vess {

namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

// The points of one series as QCustomPlot data, optionally shifted in x.
QSharedPointer<QCPGraphDataContainer> GraphData(const PlotSeries& s, bool sorted) {
    auto data = QSharedPointer<QCPGraphDataContainer>::create();
    QVector<QCPGraphData> points(static_cast<qsizetype>(s.Size()));
    for (std::size_t i = 0; i < s.Size(); ++i) points[qsizetype(i)] = {s.x[i], s.y[i]};
    data->set(points, sorted);
    return data;
}

bool IsSorted(const std::vector<double>& x, std::size_t n) {
    for (std::size_t i = 1; i < n; ++i)
        if (x[i] < x[i - 1]) return false;
    return true;
}

}  // namespace

PlotWidget::PlotWidget(PlotData plot, QWidget* parent) : QWidget(parent), plot_(std::move(plot)) {
    setObjectName("PlotWidget");
    canvas_ = new PlotCanvas(this);
    canvas_->setObjectName("PlotCanvas");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(canvas_);
    connect(canvas_, &PlotCanvas::ResetRequested, this, &PlotWidget::ResetView);
    BuildMenu();
    Draw();
}

QCustomPlot* PlotWidget::Canvas() const { return canvas_; }

void PlotWidget::Draw() {
    canvas_->clearPlottables();
    canvas_->clearItems();
    title_ = new QCPTextElement(canvas_, Q(plot_.title), QFont(font().family(), 10, QFont::Bold));
    title_->setObjectName("plotTitle");
    canvas_->plotLayout()->insertRow(0);
    canvas_->plotLayout()->addElement(0, 0, title_);
    if (!plot_.note.empty()) {
        canvas_->plotLayout()->insertRow(1);
        canvas_->plotLayout()->addElement(1, 0, new QCPTextElement(canvas_, Q(plot_.note), QFont(font().family(), 8)));
    }
    canvas_->xAxis->setLabel(Q(plot_.xAxis));
    canvas_->yAxis->setLabel(Q(plot_.yAxis));
    ApplyScales();
    if (plot_.colourMap && plot_.colourMap->Valid()) DrawColourMap(*plot_.colourMap);
    for (std::size_t i = 0; i < plot_.series.size(); ++i) DrawSeries(plot_.series[i], int(i));
    // Band shading goes under everything, band labels over it.
    for (const XBand& b : plot_.bands) DrawBand(b);
    canvas_->legend->setVisible(HasLegend(plot_));
    ResetView();
}

void PlotWidget::DrawSeries(const PlotSeries& s, int index) {
    const QColor colour = s.colour ? QColor(s.colour->r, s.colour->g, s.colour->b) : PaletteColour(index);
    const QPen pen(colour, s.lineWidth);
    const std::size_t n = s.Size();
    if (s.kind == SeriesKind::Scatter && !s.z.empty() && s.z.size() >= n) {
        DrawColourScatter(s);
        return;
    }
    if (s.kind == SeriesKind::Bars) {
        auto* bars = new QCPBars(canvas_->xAxis, canvas_->yAxis);
        const double width = BarWidth(s);
        const double shift = s.barAlign == BarAlign::Left ? width / 2 : 0;
        QVector<double> keys(static_cast<qsizetype>(n)), values(static_cast<qsizetype>(n));
        for (std::size_t i = 0; i < n; ++i) {
            keys[qsizetype(i)] = s.x[i] + shift;
            values[qsizetype(i)] = s.y[i];
        }
        bars->setData(keys, values, IsSorted(s.x, n));
        bars->setWidth(width);
        bars->setPen(QPen(colour.darker(140), 1));
        bars->setBrush(colour.lighter(130));
        bars->setName(Q(s.legend));
        if (s.legend.empty()) bars->removeFromLegend();
        return;
    }
    // Lines, steps and points: a graph, which QCustomPlot reduces to the
    // pixel width when the data are sorted by x.
    auto* graph = canvas_->addGraph();
    graph->setData(GraphData(s, IsSorted(s.x, n)));
    graph->setPen(pen);
    graph->setName(Q(s.legend));
    const QCPScatterStyle points(QCPScatterStyle::ssDisc, colour, colour, s.pointSize);
    switch (s.kind) {
        case SeriesKind::Steps: graph->setLineStyle(QCPGraph::lsStepLeft); break;
        case SeriesKind::Lines: graph->setLineStyle(QCPGraph::lsLine); break;
        case SeriesKind::Scatter:
            graph->setLineStyle(QCPGraph::lsNone);
            graph->setScatterStyle(points);
            break;
        case SeriesKind::LinesAndPoints:
            graph->setLineStyle(QCPGraph::lsLine);
            graph->setScatterStyle(points);
            break;
        case SeriesKind::Bars: break;
    }
    if (s.legend.empty()) graph->removeFromLegend();
}

void PlotWidget::DrawColourScatter(const PlotSeries& s) {
    // One layer per colour class with a colour scale beside the plot.
    constexpr int kClasses = 32;
    const AxisRange z = ZRange(s.z);
    QCPColorGradient gradient(QCPColorGradient::gpJet);
    const QCPRange range(z.lower, z.upper);
    const auto classes = ColourClasses(s.z, kClasses, z.lower, z.upper);
    bool first = true;
    for (std::size_t c = 0; c < classes.size(); ++c) {
        if (classes[c].empty()) continue;
        const double mid = z.lower + (double(c) + 0.5) * (z.upper - z.lower) / kClasses;
        const QColor colour = gradient.color(mid, range);
        PlotSeries part;
        for (std::size_t i : classes[c]) {
            part.x.push_back(s.x[i]);
            part.y.push_back(s.y[i]);
        }
        SortByX(part);
        auto* graph = canvas_->addGraph();
        graph->setData(GraphData(part, true));
        graph->setLineStyle(QCPGraph::lsNone);
        graph->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssDisc, colour, colour, s.pointSize));
        graph->setName(Q(s.legend));
        if (!first || s.legend.empty()) graph->removeFromLegend();
        first = false;
    }
    auto* scale = new QCPColorScale(canvas_);
    scale->setGradient(gradient);
    scale->setDataRange(range);
    scale->axis()->setLabel(Q(s.zAxis));
    canvas_->plotLayout()->addElement(1, canvas_->plotLayout()->columnCount(), scale);
}

void PlotWidget::DrawColourMap(const ColourMap& m) {
    auto* map = new QCPColorMap(canvas_->xAxis, canvas_->yAxis);
    map->data()->setSize(int(m.nx), int(m.ny));
    map->data()->setRange(QCPRange(m.xMin, m.xMax), QCPRange(m.yMin, m.yMax));
    for (std::size_t iy = 0; iy < m.ny; ++iy)
        for (std::size_t ix = 0; ix < m.nx; ++ix) map->data()->setCell(int(ix), int(iy), m.At(ix, iy));
    map->setInterpolate(true);
    map->removeFromLegend();
    auto* scale = new QCPColorScale(canvas_);
    scale->axis()->setLabel(Q(m.zAxis));
    canvas_->plotLayout()->addElement(1, canvas_->plotLayout()->columnCount(), scale);
    map->setColorScale(scale);
    map->setGradient(QCPColorGradient::gpJet);
    map->rescaleDataRange(true);
}

void PlotWidget::DrawBand(const XBand& b) {
    const QColor colour = b.colour ? QColor(b.colour->r, b.colour->g, b.colour->b) : QColor(120, 160, 220);
    auto* rect = new QCPItemRect(canvas_);
    rect->setLayer("background");
    rect->topLeft->setTypeX(QCPItemPosition::ptPlotCoords);
    rect->topLeft->setTypeY(QCPItemPosition::ptAxisRectRatio);
    rect->bottomRight->setTypeX(QCPItemPosition::ptPlotCoords);
    rect->bottomRight->setTypeY(QCPItemPosition::ptAxisRectRatio);
    // A band from 0 starts, on a logarithmic axis, three decades below its end.
    const double from = plot_.xLog && b.from <= 0 ? b.to / 1000 : b.from;
    rect->topLeft->setCoords(from, 0);
    rect->bottomRight->setCoords(b.to, 1);
    rect->setPen(Qt::NoPen);
    QColor fill = colour;
    fill.setAlpha(60);
    rect->setBrush(fill);
    if (b.label.empty()) return;
    auto* text = new QCPItemText(canvas_);
    text->position->setTypeX(QCPItemPosition::ptPlotCoords);
    text->position->setTypeY(QCPItemPosition::ptAxisRectRatio);
    text->position->setCoords((b.from + b.to) / 2, 0.02);
    text->setPositionAlignment(Qt::AlignTop | Qt::AlignHCenter);
    text->setText(Q(b.label));
}

PlotRanges PlotWidget::Ranges() const {
    const QCPRange x = canvas_->xAxis->range(), y = canvas_->yAxis->range();
    return {{x.lower, x.upper}, {y.lower, y.upper}};
}

void PlotWidget::SetRanges(const PlotRanges& r) {
    canvas_->xAxis->setRange(r.x.lower, r.x.upper);
    canvas_->yAxis->setRange(r.y.lower, r.y.upper);
    canvas_->replot();
}

void PlotWidget::ApplyScales() {
    for (auto [axis, log] : {std::pair{canvas_->xAxis, plot_.xLog}, std::pair{canvas_->yAxis, plot_.yLog}}) {
        axis->setScaleType(log ? QCPAxis::stLogarithmic : QCPAxis::stLinear);
        if (log) axis->setTicker(QSharedPointer<QCPAxisTickerLog>(new QCPAxisTickerLog));
        else axis->setTicker(QSharedPointer<QCPAxisTicker>(new QCPAxisTicker));
    }
    if (QAction* a = findChild<QAction*>("plot_LogX")) a->setChecked(plot_.xLog);
    if (QAction* a = findChild<QAction*>("plot_LogY")) a->setChecked(plot_.yLog);
}

void PlotWidget::SetLogAxes(bool xLog, bool yLog) {
    plot_.xLog = xLog;
    plot_.yLog = yLog;
    // A fixed range that reaches 0 or below cannot be shown on a log axis.
    if (xLog && plot_.xRange && plot_.xRange->lower <= 0) plot_.xRange.reset();
    if (yLog && plot_.yRange && plot_.yRange->lower <= 0) plot_.yRange.reset();
    ApplyScales();
    ResetView();
}

void PlotWidget::ResetView() {
    SetRanges(FittedRanges(plot_));
    PlaceLegend();
}

void PlotWidget::PlaceLegend() {
    if (!canvas_->legend->visible()) return;
    const QRect area = canvas_->axisRect()->rect();
    const QSize box = canvas_->legend->minimumOuterSizeHint();
    if (area.width() <= 0 || area.height() <= 0) return;
    const double w = std::min(1.0, double(box.width()) / area.width());
    const double h = std::min(1.0, double(box.height()) / area.height());
    const LegendCorner corner = LeastCoveredCorner(plot_, Ranges(), w, h);
    const Qt::Alignment where =
        corner == LegendCorner::TopRight      ? Qt::AlignTop | Qt::AlignRight
        : corner == LegendCorner::TopLeft     ? Qt::AlignTop | Qt::AlignLeft
        : corner == LegendCorner::BottomRight ? Qt::AlignBottom | Qt::AlignRight
                                              : Qt::AlignBottom | Qt::AlignLeft;
    canvas_->axisRect()->insetLayout()->setInsetAlignment(0, where);
    canvas_->replot();
}

void PlotWidget::FitTitle() {
    if (!title_) return;
    const QFontMetricsF metrics(title_->font());
    const double room = std::max(60, canvas_->width() - 16);
    const std::string wrapped = WrapTitle(plot_.title, room, [&](const std::string& t) {
        return metrics.horizontalAdvance(Q(t));
    });
    if (title_->text() == Q(wrapped)) return;
    title_->setText(Q(wrapped));
    canvas_->replot();
}

void PlotWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    FitTitle();
    PlaceLegend();
}

void PlotWidget::SetTexts(const std::string& title, const std::string& xLabel,
                          const std::string& yLabel) {
    plot_.title = title;
    plot_.xAxis = xLabel;
    plot_.yAxis = yLabel;
    FitTitle();
    canvas_->xAxis->setLabel(Q(xLabel));
    canvas_->yAxis->setLabel(Q(yLabel));
    setWindowTitle(Q(title));
    canvas_->replot();
}

void PlotWidget::BuildMenu() {
    menu_ = new QMenu(this);
    auto add = [&](const char* name, const QString& text, const QKeySequence& key, auto slot) {
        QAction* a = menu_->addAction(text);
        a->setObjectName(name);
        a->setShortcut(key);
        a->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(a);
        connect(a, &QAction::triggered, this, slot);
    };
    add("plot_ResetView", tr("&Reset View"), QKeySequence(Qt::Key_Home), [this] { ResetView(); });
    add("plot_Axes", tr("&Axes and Titles..."), {}, [this] { emit AxesRequested(this); });
    add("plot_LogX", tr("Logarithmic &X Axis"), {}, [this] { SetLogAxes(!plot_.xLog, plot_.yLog); });
    add("plot_LogY", tr("Logarithmic &Y Axis"), {}, [this] { SetLogAxes(plot_.xLog, !plot_.yLog); });
    for (const char* name : {"plot_LogX", "plot_LogY"}) findChild<QAction*>(name)->setCheckable(true);
    menu_->addSeparator();
    add("plot_CopyPicture", tr("&Copy Picture"), QKeySequence::Copy, [this] { CopyPicture(); });
    add("plot_CopyData", tr("Copy &Data"), QKeySequence("Ctrl+Shift+C"), [this] { CopyData(); });
    add("plot_Export", tr("&Export..."), QKeySequence("Ctrl+E"), [this] { emit ExportRequested(this); });
    add("plot_Print", tr("&Print..."), QKeySequence::Print, [this] { emit PrintRequested(this); });
}

void PlotWidget::contextMenuEvent(QContextMenuEvent* event) { menu_->exec(event->globalPos()); }

}  // namespace vess
