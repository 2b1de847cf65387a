#pragma once

#include "files/result.h"

#include <QByteArray>
#include <QImage>
#include <QString>

#include <filesystem>
#include <vector>

/// Report pages: what a person prints, signs and files. A page is written once, as HTML, and saved as a web page, as A4 or
/// as a picture. Needs a QGuiApplication, for the fonts; none of its windows.
namespace quorvel::page {

/// A picture of a page. The body names it: <img src="NAME" alt="what it shows">.
struct Picture {
    QString name;
    QImage image;
    double widthMm = 0; ///< on paper; the height follows from the image
};

struct Page {
    QString title; ///< plain text
    /// What stands in <body>, in the part of HTML 4 that QTextDocument knows. It brings no style of its own: tables of
    /// class "grid" have lines, cells of class "number" are set to the right, text of class "bad" is red, of class
    /// "small" small. Text from elsewhere goes through QString::toHtmlEscaped().
    QString body;
    std::vector<Picture> pictures;
};

/// One file with the pictures in it, for any browser.
QByteArray html(const Page& page);

/// A4, upright. What is a little too long for one page is set smaller, down to 80 %; what is longer runs on, with the
/// numbers of the pages at their ends.
QByteArray pdf(const Page& page);

/// The whole page as one picture as wide as A4, white behind, without page breaks.
/// @param dotsPerInch  from 1 on.
QImage picture(const Page& page, int dotsPerInch);

/// The endings that save() knows, as a file dialog takes them.
inline constexpr auto kFilter = "Page (*.pdf *.html *.png)";

/// True when save() knows the ending, in any case.
bool isPageName(const std::filesystem::path& path);

/// Saves the page as its ending says: ".pdf", ".html", ".htm" or ".png". What is there is replaced in one step, without a
/// question. Fails with the reason, and leaves what is there, for another ending and as files::replaceContent() does.
files::Status save(const Page& page, const std::filesystem::path& path);

} // namespace quorvel::page
