#include "page/page.h"

#include "files/name.h"
#include "files/replace.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QGuiApplication>
#include <QPainter>
#include <QPdfWriter>
#include <QScreen>
#include <QTextDocument>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace quorvel::page {

namespace {

constexpr double kMmOfInch = 25.4;
constexpr double kPageWidthMm = 210;
constexpr double kMarginMm = 14;
constexpr double kFooterMm = 6; // below the text, within the margin
constexpr double kBrowserDpi = 96;
constexpr int kPdfDpi = 1200;
constexpr int kPictureDpi = 130;
constexpr double kTextPoints = 9;
constexpr double kSmallest = 0.8;
constexpr double kStep = 0.05;

constexpr auto kStyle = "h1 { font-size: 16pt; margin-top: 0px; margin-bottom: 2px; }"
                        "h2 { font-size: 11pt; margin-top: 8px; margin-bottom: 3px; }"
                        "p { margin-top: 2px; margin-bottom: 3px; }"
                        "table.grid { border-collapse: collapse; }"
                        ".grid td, .grid th { border: 1px solid #9aa4ae; padding: 1px 4px; }"
                        ".grid th { background-color: #eef1f4; }"
                        "td, th { text-align: left; vertical-align: top; }"
                        "td.number, th.number { text-align: right; }"
                        ".bad { color: #b3261e; }"
                        ".small { font-size: 7.5pt; color: #555555; }";

constexpr auto kBrowserStyle = "body { font: 10pt Arial, 'Liberation Sans', sans-serif; color: black; "
                               "background: white; width: 182mm; margin: 8mm auto; }"
                               "img { max-width: 100%; }"
                               "@media print { body { margin: 0; } @page { size: A4; margin: 14mm; } }";

double heightMm(const Picture& picture)
{
    return picture.image.isNull() ? 0 : picture.widthMm * picture.image.height() / picture.image.width();
}

QByteArray png(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "png");
    return bytes;
}

/// The body with the sizes of its pictures in pixels.
/// @param source  what stands in the place of a picture's name.
template<class Source>
QString bodyWith(const Page& page, double dpi, const Source& source)
{
    auto body = page.body;
    for (const auto& picture : page.pictures) {
        const auto pixels = [dpi](double mm) { return std::lround(mm * dpi / kMmOfInch); };
        body.replace(QStringLiteral("src=\"%1\"").arg(picture.name),
                     QStringLiteral("width=\"%1\" height=\"%2\" src=\"%3\"")
                         .arg(pixels(picture.widthMm))
                         .arg(pixels(heightMm(picture)))
                         .arg(source(picture)));
    }
    return body;
}

QImage smoothed(const Picture& picture, double dpi)
{
    const auto width = static_cast<int>(std::lround(picture.widthMm / kMmOfInch * dpi));
    if (width < 1 || width >= picture.image.width()) return picture.image;
    return picture.image.scaledToWidth(width, Qt::SmoothTransformation);
}

/// The page as Qt sets it, measured for a device.
class Document {
public:
    /// @param smoothDpi  of a device that would thin out larger pictures; 0: it takes them as they are.
    Document(const Page& page, QPaintDevice& device, double smoothDpi = 0)
    {
        document_.documentLayout()->setPaintDevice(&device);
        document_.setDocumentMargin(0);
        QFont font;
        font.setFamilies({QStringLiteral("Arial"), QStringLiteral("Liberation Sans"),
                          QStringLiteral("DejaVu Sans"), QStringLiteral("WenQuanYi Micro Hei")});
        font.setStyleHint(QFont::SansSerif);
        font.setPointSizeF(kTextPoints);
        document_.setDefaultFont(font);
        document_.setDefaultStyleSheet(QLatin1String(kStyle));
        for (const auto& picture : page.pictures) {
            document_.addResource(QTextDocument::ImageResource, QUrl(picture.name),
                                  smoothed(picture, smoothDpi));
        }
        // what Qt takes a pixel for
        const auto* screen = QGuiApplication::primaryScreen();
        const double dpi = screen ? screen->logicalDotsPerInchY() : kBrowserDpi;
        document_.setHtml(bodyWith(page, dpi, [](const Picture& picture) { return picture.name; }));
    }

    int pages(const QSizeF& size)
    {
        document_.setPageSize(size);
        return document_.pageCount();
    }
    double height(double width)
    {
        document_.setPageSize({width, -1});
        return document_.size().height();
    }
    void draw(QPainter& painter, const QRectF& part) { document_.drawContents(&painter, part); }

private:
    QTextDocument document_;
};

void drawFooter(QPainter& painter, const QString& title, const QSizeF& size, int number, int pages)
{
    QFont font = painter.font();
    font.setPointSizeF(kTextPoints - 2);
    painter.setFont(font);
    const double height = kFooterMm / kMmOfInch * kPdfDpi;
    painter.drawText(QRectF(0, size.height(), size.width(), height), Qt::AlignRight | Qt::AlignBottom,
                     QStringLiteral("%1, page %2 of %3").arg(title).arg(number).arg(pages));
}

bool hasEnding(const std::filesystem::path& path, std::initializer_list<const char*> endings)
{
    const auto ending = QString::fromStdString(files::inWords(path.extension())).toLower();
    return std::any_of(endings.begin(), endings.end(),
                       [&](const char* known) { return ending == QLatin1String(known); });
}

} // namespace

QByteArray html(const Page& page)
{
    const auto body = bodyWith(page, kBrowserDpi, [](const Picture& picture) {
        return QStringLiteral("data:image/png;base64,") + QString::fromLatin1(png(picture.image).toBase64());
    });
    return QStringLiteral("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                          "<title>%1</title>\n<style>%2%3</style>\n</head>\n<body>\n")
               .arg(page.title.toHtmlEscaped(), QLatin1String(kBrowserStyle), QLatin1String(kStyle))
               .toUtf8() +
           body.toUtf8() + "\n</body>\n</html>\n";
}

QByteArray pdf(const Page& page)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(kPdfDpi);
    writer.setPageLayout({QPageSize(QPageSize::A4), QPageLayout::Portrait,
                          QMarginsF(kMarginMm, kMarginMm, kMarginMm, kMarginMm), QPageLayout::Millimeter});
    writer.setTitle(page.title);
    writer.setCreator(QStringLiteral("QUORVEL"));
    Document document(page, writer);
    const QSizeF size = writer.pageLayout().paintRectPixels(kPdfDpi).size();
    double scale = 1;
    while (scale > kSmallest && document.pages(size / scale) > 1)
        scale -= kStep;
    if (document.pages(size / scale) > 1) scale = 1;
    const int pages = document.pages(size / scale);
    QPainter painter(&writer);
    for (int number = 0; number < pages; ++number) {
        if (number > 0) writer.newPage();
        painter.save();
        painter.scale(scale, scale);
        const QRectF part({0, number * size.height() / scale}, size / scale);
        painter.translate(0, -part.top());
        document.draw(painter, part);
        painter.restore();
        if (pages > 1) drawFooter(painter, page.title, size, number + 1, pages);
    }
    painter.end();
    return bytes;
}

QImage picture(const Page& page, int dotsPerInch)
{
    const auto pixels = [dotsPerInch](double mm) { return mm / kMmOfInch * dotsPerInch; };
    const auto dotsPerMetre = static_cast<int>(std::lround(pixels(1000)));
    QImage probe(1, 1, QImage::Format_RGB32);
    probe.setDotsPerMeterX(dotsPerMetre);
    probe.setDotsPerMeterY(dotsPerMetre);
    Document document(page, probe, dotsPerInch);
    const double width = pixels(kPageWidthMm - 2 * kMarginMm);
    const QSizeF size(width, document.height(width));
    const double margin = pixels(kMarginMm);
    QImage image(static_cast<int>(std::ceil(width + 2 * margin)),
                 static_cast<int>(std::ceil(size.height() + 2 * margin)), QImage::Format_RGB32);
    image.setDotsPerMeterX(dotsPerMetre);
    image.setDotsPerMeterY(dotsPerMetre);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.translate(margin, margin);
    document.draw(painter, {{0, 0}, size});
    painter.end();
    return image;
}

bool isPageName(const std::filesystem::path& path)
{
    return hasEnding(path, {".pdf", ".html", ".htm", ".png"});
}

files::Status save(const Page& page, const std::filesystem::path& path)
{
    if (!isPageName(path)) {
        return files::Failure{
            files::inWords(path) +
            " has none of the endings .pdf, .html and .png. Choose a name with one of them."};
    }
    const auto bytes = hasEnding(path, {".pdf"})   ? pdf(page)
                       : hasEnding(path, {".png"}) ? png(picture(page, kPictureDpi))
                                                   : html(page);
    return files::replaceContent(path, bytes.toStdString());
}

} // namespace quorvel::page
