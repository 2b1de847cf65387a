#pragma once

#include "link/module1.h"

#include <QLabel>
#include <QPushButton>

#include <functional>

namespace quorvel {

/// The words "Why no answer?" at the right end of a status line: there after a command whose last exchange was not
/// answered as it should, until the next command. Reached with Tab, pressed with Space, Return or the mouse.
class WhyLink final : public QPushButton, private link::ExchangeObserver {
    Q_OBJECT
public:
    /// @param line   the status line; its text leaves room for the words.
    /// @param press  leads to the test.
    WhyLink(QLabel& line, link::Module1& module1, const std::function<void()>& press);
    ~WhyLink() override;

    /// A command, as long as this lives: only exchanges meanwhile count.
    class Command {
    public:
        /// @param link  null where no test is offered.
        explicit Command(WhyLink* link);
        ~Command();
        Command(const Command&) = delete;
        Command& operator=(const Command&) = delete;

    private:
        WhyLink* link_;
    };

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void sending(const link::Exchange& /*exchange*/) override {}
    void ended(const link::Exchange& exchange) override;
    void offer(bool on);
    void place();

    QLabel& line_;
    link::Module1& module1_;
    bool running_ = false;
    bool failed_ = false;
};

} // namespace quorvel
