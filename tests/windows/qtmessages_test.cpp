#include "main/qtmessages.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

constexpr int kLook = 200; // ms in which the dialog reads its folder
/// A folder with a file "old.mdb" and a folder "below", which holds another one.
class TypedFileName : public testing::TestWithParam<const char*> {
protected:
    TypedFileName()
    {
        QDir().mkpath(folder.filePath(QStringLiteral("below")));
        for (const auto* name : {"old.mdb", "below/old.mdb"}) {
            EXPECT_TRUE(QFile(folder.filePath(QLatin1String(name))).open(QIODevice::WriteOnly));
        }
    }

    /// What the dialog answers to a text typed character by character, and Return.
    QString chosenBy(const QString& typed, const FileChoice& choice)
    {
        QTimer::singleShot(0, qApp, [this, typed] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog);
            dialog->setDirectory(folder.path());
            QTest::qWait(kLook);
            auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            // Offscreen, the list of completions keeps the keys of the dialog for itself.
            name->setCompleter(nullptr);
            name->setFocus();
            name->clear();
            QTest::keyClicks(name, typed);
            QTest::keyClick(name, Qt::Key_Return);
            dialog->close();
        });
        return messages.chooseFile(nullptr, choice);
    }

    QTemporaryDir temporary;
    QDir folder{temporary.filePath(QStringLiteral("dam/v"))};
    link::Gate gate;
    QtMessages messages{gate};
};

TEST_P(TypedFileName, IsTheAnswer)
{
    const auto path = folder.filePath(QLatin1String(GetParam()));
    EXPECT_EQ(chosenBy(path, {"Open", QString(), false}), path);
    EXPECT_EQ(chosenBy(path, {"Database File", "Database file(*.mdb)", false}), path);
    EXPECT_EQ(chosenBy(path, {"Save As", "*.mdb", true}), path);
}

TEST_F(TypedFileName, StandsThereWhenItIsProposed)
{
    QString found;
    QTimer::singleShot(0, qApp, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_TRUE(dialog);
        found = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text();
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    const auto path = folder.filePath(QStringLiteral("5-A-2024-05-17.mdb"));
    EXPECT_EQ(messages.chooseFile(nullptr, {"New File", "Database file(*.mdb)", true, path}), path);
    EXPECT_EQ(found, "5-A-2024-05-17.mdb");
}

INSTANTIATE_TEST_SUITE_P(Names, TypedFileName,
                         testing::Values("old.mdb", "new.mdb", "below/old.mdb", "below/new.csv"));

TEST(Question, WhoseYesLosesSomethingIsAnsweredNoByEnter)
{
    link::Gate gate;
    QtMessages messages(gate);
    const auto strikeReturn = [] { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Return); };
    QTimer::singleShot(0, qApp, strikeReturn);
    EXPECT_FALSE(messages.askToLose(nullptr, "Delete?"));
    QTimer::singleShot(0, qApp, strikeReturn);
    EXPECT_TRUE(messages.ask(nullptr, "Go on?"));
}

} // namespace
} // namespace quorvel::test
