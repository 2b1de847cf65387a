#include "page/page.h"

#include "files/folder.h"

#include <QRegularExpression>

#include <gmock/gmock.h>

namespace quorvel::page {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

QImage redSquare()
{
    QImage image(40, 20, QImage::Format_RGB32);
    image.fill(Qt::red);
    return image;
}

/// @param lines  of text below a picture of 100 mm by 50 mm.
Page pageOf(int lines)
{
    Page page{QStringLiteral("Record <5>"),
              QStringLiteral("<h1>Record</h1><p><img src=\"square\" alt=\"a red square\"></p>"),
              {{QStringLiteral("square"), redSquare(), 100}}};
    for (int i = 0; i < lines; ++i) {
        page.body += QStringLiteral("<p>Line %1, 人员 张伟</p>").arg(i);
    }
    return page;
}

int pagesOf(const QByteArray& pdf)
{
    static const QRegularExpression kPage(QStringLiteral("/Type\\s*/Page\\b(?!s)"));
    auto found = kPage.globalMatch(QString::fromLatin1(pdf));
    int count = 0;
    for (; found.hasNext(); found.next())
        ++count;
    return count;
}

/// The area that holds anything red, in pixels.
QRect redOf(const QImage& image)
{
    QRect area;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) == QColor(Qt::red)) area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

TEST(Page, HtmlHoldsItsPicturesAndEscapesItsTitle)
{
    const auto text = html(pageOf(1)).toStdString();
    EXPECT_THAT(text, HasSubstr("<title>Record &lt;5&gt;</title>"));
    EXPECT_THAT(text, HasSubstr("<meta charset=\"utf-8\">"));
    EXPECT_THAT(text, HasSubstr("人员 张伟"));
    // 100 mm at 96 dots an inch
    EXPECT_THAT(text, HasSubstr("<img width=\"378\" height=\"189\" src=\"data:image/png;base64,"));
    EXPECT_THAT(text, HasSubstr("alt=\"a red square\""));
    EXPECT_THAT(text, Not(HasSubstr("src=\"square\"")));
    const auto begin = text.find("base64,") + 7;
    const auto picture =
        QByteArray::fromBase64(QByteArray::fromStdString(text.substr(begin, text.find('"', begin) - begin)));
    EXPECT_EQ(QImage::fromData(picture).size(), QSize(40, 20));
}

TEST(Page, PdfIsOnePageWhereItFits)
{
    const auto small = pdf(pageOf(1));
    EXPECT_TRUE(small.startsWith("%PDF-"));
    EXPECT_EQ(pagesOf(small), 1);
    EXPECT_EQ(pagesOf(pdf(pageOf(400))), 8);
}

TEST(Page, WhatIsALittleTooLongIsSetSmallerAndStaysOnOnePage)
{
    int lines = 1;
    while (picture(pageOf(lines), 72).height() <= 842)
        ++lines; // one more than an A4 page at 72 dots an inch takes
    EXPECT_EQ(pagesOf(pdf(pageOf(lines + 3))), 1);
    EXPECT_EQ(pagesOf(pdf(pageOf(2 * lines))), 2);
}

TEST(Page, ThePictureIsAsWideAsPaperAndItsPicturesAreOfTheSizeNamed)
{
    const auto image = picture(pageOf(1), 254);
    EXPECT_EQ(image.width(), 2100);
    const auto red = redOf(image);
    EXPECT_NEAR(red.width(), 1000, 12);
    EXPECT_NEAR(red.height(), 500, 12);
    EXPECT_EQ(red.left(), 140);
}

class PageFile : public files::FolderOfFiles {};

TEST_F(PageFile, TheEndingSaysHowItIsSaved)
{
    EXPECT_TRUE(save(pageOf(1), at("a.PDF")));
    EXPECT_TRUE(save(pageOf(1), at("a.html")));
    EXPECT_TRUE(save(pageOf(1), at("a.png")));
    EXPECT_THAT(contentOf("a.PDF"), ::testing::StartsWith("%PDF-"));
    EXPECT_THAT(contentOf("a.html"), ::testing::StartsWith("<!DOCTYPE html>"));
    EXPECT_THAT(contentOf("a.png"), ::testing::StartsWith("\x89PNG"));
}

TEST_F(PageFile, AnotherEndingIsRefusedAndNothingIsWritten)
{
    const auto saved = save(pageOf(1), put("a.doc", "mine"));
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error(), at("a.doc").string() + " has none of the endings .pdf, .html and .png. Choose a "
                                                    "name with one of them.");
    EXPECT_EQ(contentOf("a.doc"), "mine");
}

TEST_F(PageFile, WhatIsThereIsReplacedAndAMissingFolderIsSaid)
{
    EXPECT_TRUE(save(pageOf(1), put("a.html", "old")));
    EXPECT_THAT(contentOf("a.html"), HasSubstr("Record"));
    EXPECT_FALSE(save(pageOf(1), at("missing/a.html")));
    EXPECT_THAT(names(), ::testing::ElementsAre("a.html"));
}

} // namespace
} // namespace quorvel::page
