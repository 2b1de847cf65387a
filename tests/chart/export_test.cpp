#include "chart/export.h"

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QPrinter>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace quorvel::chart {
namespace {

using ::testing::HasSubstr;

/// A chart of one curve, 800 x 400, and what is known about it.
class Exports : public ::testing::Test {
protected:
    Exports()
    {
        chart.resize(800, 400);
        chart.give(chart.addGraph(), Role::First);
        chart.graph()->setData({0, 1, 2}, {0, 5, 3});
        chart.rescaleAxes();
    }

    QString file(const QString& name) const { return QDir(folder.path()).filePath(name); }
    std::string contents(const QString& name) const
    {
        QFile read(file(name));
        EXPECT_TRUE(read.open(QIODevice::ReadOnly)) << qPrintable(name);
        return read.readAll().toStdString();
    }
    QStringList names() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }
    About withLine() const
    {
        auto changed = about;
        changed.asLine = true;
        return changed;
    }

    QTemporaryDir folder;
    Chart chart;
    const About about{QStringLiteral("Brightness & place"), QStringLiteral("Readout 5, type A, X direction"),
                      QDateTime({2024, 5, 17}, {9, 5, 30})};
};

TEST_F(Exports, ALineSaysWhatWhenAndByWhat)
{
    EXPECT_EQ(lineOf(about), "Readout 5, type A, X direction · 2024-05-17 09:05:30 · QUORVEL V4.11");
    EXPECT_EQ(lineOf({QStringLiteral("Fit"), {}, {}}), "Fit · QUORVEL V4.11");
}

TEST_F(Exports, PicturesCarryWhatTheyShow)
{
    for (const auto* form : {"png", "jpg"}) {
        const auto path = file(QString("p.") + form);
        ASSERT_EQ(save(chart, path, form, about), "");
        QImageReader reader(path);
        EXPECT_EQ(reader.text("Title"), about.title) << form;
        EXPECT_EQ(reader.text("Description"), about.description) << form;
        EXPECT_EQ(reader.text("Software"), "QUORVEL V4.11") << form;
        EXPECT_THAT(contents(QString("p.") + form), HasSubstr("2024-05-17 09:05:30")) << form;
        EXPECT_EQ(reader.size(), QSize(1600, 800)) << form;
    }
}

TEST_F(Exports, SvgCarriesWhatItShowsAndItsLettersAreLetters)
{
    if (!forms().contains("svg")) GTEST_SKIP() << "built without Qt's library for SVG";
    ASSERT_EQ(save(chart, file("p.svg"), "svg", withLine()), "");
    const auto svg = contents("p.svg");
    EXPECT_THAT(svg, HasSubstr("<title>Brightness &amp; place</title>"));
    EXPECT_THAT(
        svg, HasSubstr("<desc>Readout 5, type A, X direction · 2024-05-17 09:05:30 · QUORVEL V4.11</desc>"));
    EXPECT_THAT(svg, HasSubstr("viewBox=\"0 0 800 400\""));
    EXPECT_THAT(svg, HasSubstr("<text"));
}

TEST_F(Exports, PdfIsOnePageOfTheChartsShape)
{
    ASSERT_EQ(save(chart, file("p.pdf"), "pdf", about), "");
    const auto pdf = contents("p.pdf");
    EXPECT_TRUE(pdf.starts_with("%PDF"));
    EXPECT_THAT(pdf, HasSubstr("/Count 1"));
    EXPECT_THAT(pdf, HasSubstr("/Title"));
    EXPECT_THAT(pdf, HasSubstr("/MediaBox [0 0 600.000000 300.000000]")) << "96 dots an inch";
}

TEST_F(Exports, TheLineBelowIsThereOnChoiceAndGoneAfterwards)
{
    const int rows = chart.plotLayout()->rowCount();
    const auto plain = picture(chart);
    const auto lined = picture(chart, withLine());
    EXPECT_EQ(plain.size(), lined.size());
    const auto bottom = QRect(0, 760, 1600, 40);
    EXPECT_NE(plain.copy(bottom), lined.copy(bottom));
    EXPECT_EQ(chart.plotLayout()->rowCount(), rows);
    EXPECT_EQ(picture(chart), plain);
}

TEST_F(Exports, AWindowOfTheDarkDesktopIsWhiteOnPaper)
{
    QPalette dark;
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Text, Qt::white);
    const auto light = picture(chart);
    chart.setPalette(dark);
    EXPECT_EQ(picture(chart), light);
}

TEST_F(Exports, AFileIsReplacedWholeUnderExactlyItsName)
{
    ASSERT_EQ(save(chart, file("profile.of.today"), "jpeg"), "");
    ASSERT_EQ(save(chart, file("profile.of.today"), "png"), "");
    EXPECT_EQ(QImageReader::imageFormat(file("profile.of.today")), "png");
    EXPECT_EQ(names(), QStringList{"profile.of.today"});
}

TEST_F(Exports, TheFileThatALinkLeadsToIsReplaced)
{
    ASSERT_TRUE(QFile::link(file("real.png"), file("link.png")));
    EXPECT_EQ(save(chart, file("link.png"), "png"), "");
    EXPECT_TRUE(QFileInfo(file("link.png")).isSymLink());
    EXPECT_EQ(QImageReader::imageFormat(file("real.png")), "png");
    QFile::setPermissions(file("link.png"), QFileDevice::ReadOwner);
    EXPECT_THAT(save(chart, file("link.png"), "png").toStdString(),
                HasSubstr("link.png is write-protected."));
}

TEST_F(Exports, WhatCannotBeWrittenIsAReasonThatNamesIt)
{
    for (const auto& form : forms()) {
        const auto path = "/no/such/folder/x." + form;
        EXPECT_THAT(save(chart, path, form).toStdString(), HasSubstr(path.toStdString()));
    }
    EXPECT_THAT(save(chart, file("x.xyz"), "xyz").toStdString(), HasSubstr("x.xyz cannot be written"));
    EXPECT_EQ(names(), QStringList());
}

TEST_F(Exports, APrintFillsThePageInTheChartsShape)
{
    QPrinter printer;
    printer.setOutputFileName(file("print.pdf"));
    EXPECT_EQ(print(chart, printer, withLine()), "");
    EXPECT_THAT(contents("print.pdf"), HasSubstr("/Count 1"));
    printer.setOutputFileName("/no/such/folder/print.pdf");
    EXPECT_NE(print(chart, printer), "");
}

} // namespace
} // namespace quorvel::chart
