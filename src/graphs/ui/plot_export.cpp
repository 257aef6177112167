// Files, clipboard and printer for one plot.
#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QFileInfo>
#include <QMimeData>
#include <QPdfWriter>
#include <QPrinter>
#include <QSvgGenerator>

#include <span>

#include "graphs/plot_text.h"
#include "graphs/ui/plot_canvas.h"
#include "graphs/ui/plot_widget.h"
#include "recording/file_io.h"

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

// The picture as a file of the format its extension names (PNG when it
// names none we write); empty when it could not be drawn.
QByteArray PictureBytes(QCustomPlot& canvas, const QString& suffix, int width, int height,
                        const QString& title) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    bool drawn = false;
    if (suffix == "svg") {
        QSvgGenerator svg;
        svg.setOutputDevice(&buffer);
        svg.setSize(QSize(width, height));
        svg.setViewBox(QRect(0, 0, width, height));
        svg.setTitle(title);
        drawn = Render(canvas, svg, width, height);
    } else if (suffix == "pdf") {
        QPdfWriter pdf(&buffer);
        pdf.setCreator(qApp->applicationName());
        pdf.setTitle(title);
        pdf.setResolution(72);  // one device pixel per point: the page is width x height
        pdf.setPageSize(QPageSize(QSizeF(width, height), QPageSize::Point));
        pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
        drawn = Render(canvas, pdf, width, height);
    } else {
        const char* format = suffix == "jpg" || suffix == "jpeg" ? "JPG" : suffix == "bmp" ? "BMP" : "PNG";
        drawn = canvas.toPixmap(width, height).save(&buffer, format);
    }
    buffer.close();
    return drawn ? bytes : QByteArray();
}

}  // namespace

bool PlotWidget::SaveAs(const QString& path, int width, int height) {
    QCustomPlot& canvas = *Canvas();
    if (width <= 0) width = canvas.width();
    if (height <= 0) height = canvas.height();
    const QByteArray bytes = PictureBytes(canvas, QFileInfo(path).suffix().toLower(), width, height,
                                          QString::fromStdString(plot_.title));
    if (bytes.isEmpty()) return false;
    // Through the one safe writer: a failed export never leaves half a file.
    const std::span<const uint8_t> data(reinterpret_cast<const uint8_t*>(bytes.constData()),
                                        std::size_t(bytes.size()));
    return WriteFileAtomic(path.toStdString(), data).empty();
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
