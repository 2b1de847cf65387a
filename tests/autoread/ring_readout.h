#pragma once

#include "support/scripted_readout.h"
#include "text/number.h"

#include <QDateTime>

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace quorvel::test {

/// A readout at address 1 with a ring, which answers at once; time is moved by hand.
class RingReadout {
public:
    inline static const QDateTime kBegun{QDate(2024, 1, 1), QTime(0, 0)};

    explicit RingReadout(int capacity, bool threeDirection = false)
        : slots_(static_cast<std::size_t>(capacity)), hasZ_(threeDirection)
    {}

    /// Stores readings, one interval after the other; each has values of its own.
    void take(int count = 1)
    {
        for (int i = 0; i < count; ++i) {
            slots_[static_cast<std::size_t>(next)] = {now, ++taken_ + offset};
            next = (next + 1) % capacity();
            if (next == first) first = (first + 1) % capacity();
            now = now.addSecs(interval);
        }
    }
    void clear() { first = next = 0; }
    /// From now on another readout, whose readings began at the same time; its ring is empty.
    void becomeAnother()
    {
        clear();
        now = kBegun;
        offset = 100;
    }
    int capacity() const { return static_cast<int>(slots_.size()); }

    /// The records in the order of a download from `first`, as lines of a text file.
    std::string table(bool wholeRing) const
    {
        std::string lines = hasZ_ ? "time,x,y,z1,z2\n" : "time,x,y\n";
        const int held = (next - first + capacity()) % capacity();
        const int count = wholeRing && next < first ? capacity() : held;
        for (int i = 0; i < count; ++i) {
            const auto& [time, value] = slots_[static_cast<std::size_t>((first + i) % capacity())];
            lines += time.toString(Qt::ISODate).toStdString() + "," + number(value) + ",-1.5" +
                     (hasZ_ ? ",3," + number(value) : std::string()) + "\n";
        }
        return lines;
    }

    std::string answerTo(const std::string& frame)
    {
        auto reply = wholeAnswerTo(frame);
        return spoil ? spoil(frame, std::move(reply)) : reply;
    }

    int first = 0;
    int next = 0;
    int interval = 3600; ///< s
    double offset = 0;   ///< of the values, so that two readouts differ
    QDateTime now = kBegun;
    bool deletes = true; ///< does what it confirms
    std::function<std::string(const std::string& frame, std::string reply)>
        spoil; ///< what becomes of an answer

    ScriptedReadout line{[this](const std::string& frame) { return answerTo(frame); }};

private:
    struct Slot {
        QDateTime time{QDate(2023, 1, 1), QTime(0, 0)};
        double value = 0;
    };

    static std::string number(double value) { return text::general(value); }
    static std::string digits(int number) { return text::format(number, "0000"); }
    static std::string field(double value) { return "+" + text::format(value, "000.000"); }

    std::string recordIn(int slot) const
    {
        const auto& [time, value] = slots_[static_cast<std::size_t>(slot % capacity())];
        return ":0124" + digits(slot) + time.toString(QStringLiteral("yyMMddHHmmss")).toStdString() +
               field(value) + "-001.500" + (hasZ_ ? "+003.000" + field(value) : std::string()) + "FF\r\n";
    }

    std::string wholeAnswerTo(const std::string& frame)
    {
        if (frame == ":0122FF") return ":0122" + digits(capacity()) + digits(first) + digits(next) + "FF\r\n";
        if (frame.starts_with(":0124")) return recordIn(text::integerOf(frame.substr(5, 4)));
        if (frame == ":0104FF")
            return ":0104" +
                   line.clock.now().addSecs(-60).toString(QStringLiteral("yyMMddHHmmss")).toStdString() +
                   "FF\r\n";
        if (frame == ":0106FF")
            return ":010601" + text::format(interval / 3600, "00") + text::format(interval / 60 % 60, "00") +
                   text::format(interval % 60, "00") + "00FF\r\n";
        if (frame == ":012102FF" && hasZ_) return ":012102+3.00000+4.0000000FF\r\n";
        if (frame != ":0125FF") return {};
        if (deletes) clear();
        return frame + "\r\n";
    }

    std::vector<Slot> slots_;
    bool hasZ_;
    int taken_ = 0;
};

} // namespace quorvel::test
