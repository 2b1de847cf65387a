#include "main/form3.h"
#include "support/bench_on_the_bus.h"

#include <QFile>

namespace quorvel::test {
namespace {

class HelpViewer : public ::testing::Test {
protected:
    void write(const QByteArray& text)
    {
        QFile readme(folder.filePath("readme.txt"));
        ASSERT_TRUE(readme.open(QIODevice::WriteOnly));
        readme.write(text);
    }
    static QString text(const Form3& viewer) { return child<QPlainTextEdit>(viewer, "Text1")->toPlainText(); }

    QTemporaryDir folder;
    std::filesystem::path path{folder.filePath("readme.txt").toStdString()};
};

TEST_F(HelpViewer, ShowsTheFile)
{
    write("First line\r\nZweite Zeile \xc3\xbc\n\xe6\xa0\x87\xe5\xae\x9a\n");
    Form3 viewer(path);
    viewer.show();
    EXPECT_EQ(viewer.windowTitle(), "Help");
    EXPECT_EQ(text(viewer),
              QString::fromUtf8("First line\nZweite Zeile \xc3\xbc\n\xe6\xa0\x87\xe5\xae\x9a\n"));
}

TEST_F(HelpViewer, ResizingReadsTheFileAgain)
{
    write("before");
    Form3 viewer(path);
    viewer.show();
    write("after");
    viewer.resize(viewer.width() + 10, viewer.height());
    EXPECT_EQ(text(viewer), "after\n");
}

TEST_F(HelpViewer, AnEmptyFileIsAnEmptyText)
{
    write("");
    Form3 viewer(path);
    viewer.show();
    EXPECT_EQ(text(viewer), "");
    EXPECT_EQ(Form3::whyUnreadable(path), "");
}

TEST_F(HelpViewer, AFileThatVanishesIsNamedInItsPlace)
{
    write("text");
    Form3 viewer(path);
    viewer.show();
    QFile::remove(folder.filePath("readme.txt"));
    viewer.resize(viewer.width() + 10, viewer.height());
    EXPECT_TRUE(text(viewer).contains(folder.filePath("readme.txt"))) << qPrintable(text(viewer));
    EXPECT_NE(Form3::whyUnreadable(path), "");
}

TEST_F(HelpViewer, LaysOutItsTextAndItsButton)
{
    write("text");
    Form3 viewer(path);
    viewer.show();
    viewer.resize(600, 400);
    EXPECT_EQ(child<QPlainTextEdit>(viewer, "Text1")->geometry(), QRect(12, 12, 576, 333));
    const auto quit = child<QPushButton>(viewer, "Command1")->geometry();
    EXPECT_EQ(quit.top(), 12 + 333 + 12);
    EXPECT_NEAR(quit.center().x(), 300, 1);
}

TEST_F(HelpViewer, ATinyOrMinimisedWindowIsSafe)
{
    write("text");
    Form3 viewer(path);
    viewer.setMinimumSize(0, 0);
    viewer.show();
    viewer.resize(1, 1);
    EXPECT_GE(child<QPlainTextEdit>(viewer, "Text1")->height(), 0);
    viewer.showMinimized();
    viewer.showNormal();
    EXPECT_EQ(text(viewer), "text\n");
}

TEST_F(HelpViewer, QuitClosesIt)
{
    write("text");
    Form3 viewer(path);
    viewer.show();
    child<QPushButton>(viewer, "Command1")->click();
    EXPECT_FALSE(viewer.isVisible());
}

} // namespace
} // namespace quorvel::test
