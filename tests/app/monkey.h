#pragma once

#include "app/line_watch.h"
#include "app/program.h"
#include "support/simulated_bus.h"

#include <QMap>
#include <QPointer>
#include <QTemporaryDir>
#include <QWidget>

#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace quorvel::test {

/// Somebody who clicks, types and chooses at random, with a readout bus at random trouble. Same seed, same choices; the
/// moments are those of the machine.
class Monkey final : public Messages {
public:
    /// @param log  takes a line for each step; null: none.
    Monkey(unsigned seed, int steps, std::FILE* log);

    /// Runs programs, one after the other when one is quit, until all steps are done.
    void run();

    /// What it came to see, for people.
    std::string report() const;
    /// The classes of the windows that were open.
    QStringList windows() const { return windows_.keys(); }
    const LineWatch& line() const { return watch_; }

    void say(QWidget* parent, const QString& text) override;
    bool ask(QWidget* parent, const QString& text) override;
    void showResult(QWidget* parent, const QString& firstLine, const QString& secondLine) override;
    QString chooseFile(QWidget* parent, const FileChoice& choice) override;
    QString askText(QWidget* parent, const QString& caption, const QString& label) override;

private:
    using Step = void (Monkey::*)();

    void runProgram();
    void stepSoon();
    void step();
    void windUp();
    Step chooseStep();
    void look();
    QWidget* target() const;
    QWidget* widgetIn(QWidget* window);

    void clickSomething();
    void pressSomething();
    void typeKey();
    void typeText();
    void openPort();
    void chooseAction();
    void contextMenu();
    void troubleBus();
    void closeWindow();
    void waitABit();

    void box(QWidget* parent, const QString& text);
    std::size_t below(std::size_t count) { return random_() % count; }
    template<class List>
    auto& oneOf(List& list)
    {
        return list[below(std::size(list))];
    }
    void note(const QString& what);

    std::mt19937 random_;
    int left_;
    std::FILE* log_;
    QTemporaryDir folder_;
    SimulatedBus bus_;
    FastClock clock_;
    LineWatch watch_;
    std::unique_ptr<Program> program_;
    QMap<QString, int> windows_;
    std::size_t nextAction_ = 0;
    int steps_ = 0;
    int depth_ = 0;
    int boxes_ = 0;
    int boxesOpen_ = 0;
    int programs_ = 0;
};

} // namespace quorvel::test
