// Files, clipboard and printer for one plot.
#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QMimeData>
#include <QPrinter>
#include <QSvgGenerator>

#include "graphs/plot_text.h"
#include "graphs/ui/plot_canvas.h"
#include "graphs/ui/plot_widget.h"

namespace vess {

namespace {

// Draws the plot at width x height into any paint device.
bool Render(QCustomPlot& canvas, QPaintDevice& device, int width, int height) {
    QCPPainter painter;
    if (!painter.begin(&device)) return false;
    painter.setMode(QCPPainter::pmVectorized);
    painter.setMode(QCPPainter::pmNoCaching);
    canvas.toPainter(&painter, width, height);
    return painter.end();
}

bool SaveSvg(QCustomPlot& canvas, const QString& path, int width, int height, const QString& title) {
    QSvgGenerator svg;
    svg.setFileName(path);
    svg.setSize(QSize(width, height));
    svg.setViewBox(QRect(0, 0, width, height));
    svg.setTitle(title);
    return Render(canvas, svg, width, height) && QFileInfo(path).size() > 0;
}

}  // namespace

bool PlotWidget::SaveAs(const QString& path, int width, int height) {
    QCustomPlot& canvas = *Canvas();
    if (width <= 0) width = canvas.width();
    if (height <= 0) height = canvas.height();
    const QString suffix = QFileInfo(path).suffix().toLower();
    const QString title = QString::fromStdString(plot_.title);
    if (suffix == "svg") return SaveSvg(canvas, path, width, height, title);
    if (suffix == "pdf") return canvas.savePdf(path, width, height, QCP::epAllowCosmetic, qApp->applicationName(), title);
    if (suffix == "jpg" || suffix == "jpeg") return canvas.saveJpg(path, width, height);
    if (suffix == "bmp") return canvas.saveBmp(path, width, height);
    return canvas.savePng(path, width, height);
}

void PlotWidget::CopyPicture() const {
    QApplication::clipboard()->setImage(Canvas()->toPixmap().toImage());
}

void PlotWidget::CopyData() const {
    QApplication::clipboard()->setText(QString::fromStdString(PlotToTabSeparated(plot_)));
}

void PlotWidget::PrintTo(QPrinter& printer) {
    // The plot fills the page's printable area at the widget's proportions.
    const QRectF page = printer.pageRect(QPrinter::DevicePixel);
    const double aspect = double(Canvas()->height()) / std::max(1, Canvas()->width());
    const int width = Canvas()->width();
    const int height = int(width * aspect);
    QCPPainter painter;
    if (!painter.begin(&printer)) return;
    painter.setMode(QCPPainter::pmVectorized);
    painter.setMode(QCPPainter::pmNoCaching);
    const double scale = std::min(page.width() / width, page.height() / height);
    painter.scale(scale, scale);
    Canvas()->toPainter(&painter, width, height);
    painter.end();
}

}  // namespace vess
