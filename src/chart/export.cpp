#include "chart/export.h"

#include "files/replace.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QPageSize>
#include <QPdfWriter>
#include <QPrinter>
#ifdef QUORVEL_SVG
#include <QSvgGenerator>
#endif

#include <algorithm>

namespace quorvel::chart {

namespace {

constexpr int kPictureQuality = 92;
constexpr double kLineSize = 0.85; // of the other texts
constexpr double kPointsAnInch = 72;
constexpr int kLineMargin = 6;

/// The chart, on paper and with its line, while something is made of it.
class Exported {
public:
    Exported(Chart& chart, const About& about) : chart_(chart), paper_(chart)
    {
        if (!about.asLine) return;
        line_ = new QCPTextElement(&chart, lineOf(about));
        line_->setTextFlags(Qt::AlignLeft | Qt::AlignVCenter | Qt::TextWordWrap);
        line_->setMargins({kLineMargin, 0, kLineMargin, kLineMargin});
        auto font = chart.font();
        if (font.pointSizeF() > 0) font.setPointSizeF(font.pointSizeF() * kLineSize);
        line_->setFont(font);
        line_->setTextColor(chart.colours().ink);
        chart.plotLayout()->addElement(chart.plotLayout()->rowCount(), 0, line_);
    }
    ~Exported()
    {
        if (!line_) return;
        chart_.plotLayout()->remove(line_);
        chart_.plotLayout()->simplify();
    }
    Exported(const Exported&) = delete;
    Exported& operator=(const Exported&) = delete;

    QImage image() const
    {
        const double scale = std::max(1.0, static_cast<double>(kPictureWidth) / std::max(chart_.width(), 1));
        return chart_.toPixmap(chart_.width(), chart_.height(), scale).toImage();
    }
    /// Lines and letters instead of dots.
    bool drawOn(QPaintDevice& device, const QRectF& place) const
    {
        QCPPainter painter;
        if (!painter.begin(&device)) return false;
        painter.setMode(QCPPainter::pmVectorized);
        painter.setMode(QCPPainter::pmNoCaching);
        painter.translate(place.topLeft());
        painter.scale(place.width() / chart_.width(), place.height() / chart_.height());
        chart_.toPainter(&painter, chart_.width(), chart_.height());
        return painter.end();
    }

private:
    Chart& chart_;
    Chart::OnPaper paper_;
    QCPTextElement* line_ = nullptr;
};

QString joined(QStringList parts)
{
    parts.removeAll(QString());
    return parts.join(QStringLiteral(" · "));
}

QString timeOf(const About& about) { return about.at.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")); }

/// The names of these texts are those that PNG proposes.
QString writePicture(QImage image, QByteArray& bytes, const QByteArray& form, const About& about)
{
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, form);
    if (form == "jpeg") writer.setQuality(kPictureQuality);
    image.setText(QStringLiteral("Title"), about.title);
    image.setText(QStringLiteral("Description"), about.description);
    image.setText(QStringLiteral("Creation Time"), timeOf(about));
    image.setText(QStringLiteral("Software"), programName());
    return buffer.open(QIODevice::WriteOnly) && writer.write(image) ? QString() : writer.errorString();
}

QString writePdf(Chart& chart, QByteArray& bytes, const About& about)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    const double points = kPointsAnInch / chart.logicalDpiX();
    writer.setResolution(chart.logicalDpiX());
    writer.setPageSize(QPageSize(QSizeF(chart.size()) * points, QPageSize::Point));
    writer.setPageMargins({});
    writer.setTitle(joined({about.title, about.description, timeOf(about)}));
    writer.setCreator(programName());
    return Exported(chart, about).drawOn(writer, QRectF(QPointF(), chart.size()))
               ? QString()
               : Chart::tr("the page cannot be drawn");
}

#ifdef QUORVEL_SVG
QString writeSvg(Chart& chart, QByteArray& bytes, const About& about)
{
    QBuffer buffer(&bytes);
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(chart.size());
    generator.setViewBox(QRect(QPoint(), chart.size()));
    generator.setResolution(chart.logicalDpiX());
    generator.setTitle(about.title.toHtmlEscaped());
    generator.setDescription(lineOf(about).toHtmlEscaped());
    return Exported(chart, about).drawOn(generator, QRectF(QPointF(), chart.size()))
               ? QString()
               : Chart::tr("the drawing cannot be made");
}
#endif

QString write(Chart& chart, QByteArray& bytes, const QString& form, const About& about)
{
    if (form == QLatin1String("pdf")) return writePdf(chart, bytes, about);
#ifdef QUORVEL_SVG
    if (form == QLatin1String("svg")) return writeSvg(chart, bytes, about);
#endif
    const auto known = form == QLatin1String("jpg") ? QByteArray("jpeg") : form.toLatin1();
    return writePicture(picture(chart, about), bytes, known, about);
}

} // namespace

QString programName() { return QStringLiteral("QUORVEL V" QUORVEL_VERSION); }

QString lineOf(const About& about)
{
    return joined(
        {about.description.isEmpty() ? about.title : about.description, timeOf(about), programName()});
}

QImage picture(Chart& chart, const About& about) { return Exported(chart, about).image(); }

QImage picture(Chart& chart, const QSize& size)
{
    chart.resize(size);
    chart.replot(); // parts of one width find it in the second pass
    return picture(chart);
}

QStringList forms()
{
    QStringList all{QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("pdf")};
#ifdef QUORVEL_SVG
    all << QStringLiteral("svg");
#endif
    return all;
}

QString save(Chart& chart, const QString& path, const QString& form, const About& about)
{
    QByteArray bytes;
    const auto reason = write(chart, bytes, form.toLower(), about);
    if (!reason.isEmpty()) return Chart::tr("The picture %1 cannot be written: %2.").arg(path, reason);
    const auto written = files::replaceContent(QFileInfo(path).filesystemFilePath(),
                                               {bytes.constData(), static_cast<std::size_t>(bytes.size())});
    return written ? QString() : QString::fromStdString(written.error());
}

QString print(Chart& chart, QPrinter& printer, const About& about)
{
    printer.setDocName(about.title);
    printer.setCreator(programName());
    const QSizeF page = printer.pageRect(QPrinter::DevicePixel).size();
    const QRectF place(QPointF(), QSizeF(chart.size()).scaled(page, Qt::KeepAspectRatio));
    return Exported(chart, about).drawOn(printer, place)
               ? QString()
               : Chart::tr("The printer %1 does not take the page. Look whether it is there and switched on.")
                     .arg(printer.printerName());
}

} // namespace quorvel::chart
