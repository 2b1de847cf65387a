#include "app/openers.h"
#include "app/program.h"
#include "line/journal.h"
#include "link/module1.h"
#include "protocol/command.h"
#include "site/sitewindow.h"
#include "support/bench_on_the_bus.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTimer>

#include <gmock/gmock.h>

namespace quorvel::test {
namespace {

using protocol::CommandId;
using site::SiteWindow;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

/// The folder of a user who has just come.
struct FreshUser {
    FreshUser() : before(qgetenv("XDG_DATA_HOME")) { qputenv("XDG_DATA_HOME", data.path().toLocal8Bit()); }
    ~FreshUser() { qputenv("XDG_DATA_HOME", before); }

    QTemporaryDir data;
    QByteArray before;
};

/// The window "Site" as the program opens it, before readouts 5 and 12, with the journal of the user.
class SiteOfTheProgram : public ::testing::Test {
protected:
    SiteOfTheProgram()
    {
        program.form1.show();
        child<QPushButton>(program.form1, "Command1")->click();
        EXPECT_TRUE(program.mscomm1.PortOpen());
    }

    /// The window with a site of readout 5 alone.
    SiteWindow& open()
    {
        const auto path = folder.filePath("a.quorvel-site.json");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(R"({"name":"North dam","readouts":[{"address":5,"type":"A","name":"Block 7"}]})");
        file.close();
        showSite(program);
        auto* window = program.form1.findChild<SiteWindow*>();
        window->open(path);
        return *window;
    }
    void press(const QObject& window, const QString& name) { child<QPushButton>(window, name)->click(); }
    std::string cell(const SiteWindow& window, int row, int column)
    {
        const auto* model = child<QTableView>(window, "SiteTable")->model();
        return model->index(row, column).data().toString().toStdString();
    }
    std::string report(const SiteWindow& window)
    {
        const auto path = folder.filePath("visit.html");
        messages.files.push_back(path);
        messages.answers.push_back(true); // to overwrite an earlier one
        QTimer::singleShot(0, [] {
            auto* dialog = QApplication::activeModalWidget();
            ASSERT_TRUE(dialog);
            child<QPushButton>(*dialog, "SiteSaveReport")->click();
        });
        press(window, "SiteReport");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().toStdString();
    }

    FreshUser user;
    QTemporaryDir folder;
    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:C"}};
    TestMessages messages;
    quorvel::Program program{{bus.device()},
                             folder.path().toStdString(),
                             {},
                             QStringLiteral("FACTORY"),
                             StandIns{nullptr, &messages}};
};

TEST_F(SiteOfTheProgram, HasTheLineHealthAndReportsWhatTheJournalHoldsOfItsReadouts)
{
    auto& window = open();
    press(window, "SiteSweep");
    EXPECT_THAT(cell(window, 0, site::SiteModel::LineColumn), HasSubstr("100 % of 1, "));
    EXPECT_THAT(report(window), HasSubstr("This run of the program keeps no journal."));
    program.keepJournal("quorvel");
    for (const auto* digits : {"05", "0C"})
        program.module1.transact(protocol::transaction(CommandId::SetOffsetX, digits, "+1.50000"));
    QFile journal(QString::fromStdString(line::journalFile().string()));
    ASSERT_TRUE(journal.open(QIODevice::Append));
    journal.write("{\"time\":\"2001-01-01T00:00:00\",\"address\":5,\"meaning\":\"Long ago\"}\n"
                  "{\"time\":\"yesterday\",\"address\":5,\"meaning\":\"At no time\"}\nno object\n");
    journal.close();
    EXPECT_THAT(report(window), AllOf(HasSubstr("Set the offset of X to +1.50000"), HasSubstr(">confirmed<"),
                                      HasSubstr("quorvel"), Not(HasSubstr("Long ago")),
                                      Not(HasSubstr("At no time")), HasSubstr("could not be read: 2.")));
}

} // namespace
} // namespace quorvel::test
