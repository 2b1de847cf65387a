#pragma once

#include "main/inputfilter.h"
#include "site/sitewindow.h"
#include "support/bench_on_the_bus.h"
#include "support/scripted_readout.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <map>

namespace quorvel::test {

/// The controls of a window "Site" by their names.
struct SiteControls {
    explicit SiteControls(site::SiteWindow& window) : form(window) {}

    QPushButton& button(const QString& name) const { return *child<QPushButton>(form, name); }
    void press(const QString& name) const { button(name).click(); }
    QCheckBox& box(const QString& name) const { return *child<QCheckBox>(form, name); }
    QLineEdit& field(const QString& name) const { return *child<QLineEdit>(form, name); }
    QTableView& table() const { return *child<QTableView>(form, "SiteTable"); }
    std::string status() const { return child<QLabel>(form, "Status")->text().toStdString(); }
    /// What a cell shows, by the row of the screen.
    std::string cell(int row, int column) const
    {
        return data(row, column, Qt::DisplayRole).toString().toStdString();
    }
    QVariant data(int row, int column, int role) const
    {
        return table().model()->index(row, column).data(role);
    }
    /// Types into a cell, as its editor does.
    bool type(int row, int column, const QString& text) const
    {
        return table().model()->setData(table().model()->index(row, column), text, Qt::EditRole);
    }

    site::SiteWindow& form;
};

/// The real window before scripted readouts: 5 of type A, 12 of type C and 7 of type D; time is moved by hand, from
/// 09:05:30 on.
class SiteByHand : public ::testing::Test {
protected:
    SiteByHand()
    {
        qApp->installEventFilter(&filter);
        parent.show();
        form.show();
    }

    std::string answer(const std::string& frame)
    {
        if (onFrame) onFrame(frame);
        const auto value = values.find(frame.substr(1, frame.size() - 3));
        if (value == values.end()) return {};
        return frame.substr(0, 7) + value->second + "00FF\r\n";
    }

    QString file(const QString& name) const { return folder.filePath(name); }
    void put(const QString& name, const QByteArray& content) const
    {
        QFile out(file(name));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(content);
    }
    std::string read(const QString& name) const
    {
        QFile in(file(name));
        EXPECT_TRUE(in.open(QIODevice::ReadOnly)) << name.toStdString();
        return in.readAll().toStdString();
    }
    /// Opens a site of the three readouts.
    void openDam()
    {
        put("dam.quorvel-site.json",
            R"({"name":"North dam","operator":"key of another program","readouts":[
  {"address":5,"type":"A","name":"Block 7","limitsMm":{"x":{"low":-2,"high":2}}},
  {"address":12,"type":"C","name":"Block 9","limitsMm":{"z1":{"high":3}},"reference":"Zero of May"},
  {"address":7,"type":"D","name":"Abutment"}]})");
        form.open(file("dam.quorvel-site.json"));
    }
    void with(const QString& name, const QString& button)
    {
        messages.files.push_back(file(name));
        controls.press(button);
    }
    files::Result<site::ChangesMade> changesSince(const QDateTime& since)
    {
        asked = since;
        if (!noChanges.empty()) return files::Failure{noChanges};
        return changes;
    }
    void moveTo(const QTime& time)
    {
        clock.move(static_cast<double>(clock.now().time().msecsTo(time)) / 1000);
        form.look();
    }

    /// The two values of an answer by address and command.
    std::map<std::string, std::string> values{{"052101", "+1.50000-0.25000"},
                                              {"0C2101", "+0.10000+0.20000"},
                                              {"0C2102", "+2.00000+2.10000"},
                                              {"072101", "-7.00000+0.00000"}};
    std::function<void(const std::string&)> onFrame;
    QTemporaryDir folder;
    ScriptedReadout readout{[this](const std::string& frame) { return answer(frame); }};
    HandClock& clock = readout.clock;
    link::Bench bench;
    link::Gate gate;
    InputFilter filter{gate};
    TestMessages messages;
    Workplace workplace{bench, readout.module1, gate, messages};
    std::vector<int> found;
    site::ChangesMade changes;
    std::string noChanges; ///< why none is known; empty when they are
    QDateTime asked;       ///< since when changes were asked for
    std::map<int, site::LineState> lines;
    site::Surroundings surroundings{[this] { return found; }, [this](int address) { return lines[address]; },
                                    [this](const QDateTime& since) { return changesSince(since); }, "anna"};
    QWidget parent;
    site::SiteWindow form{workplace, surroundings, &parent};
    SiteControls controls{form};
};

} // namespace quorvel::test
