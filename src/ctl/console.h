#pragma once

#include "line/health.h"
#include "line/journal.h"
#include "line/trace.h"
#include "link/bench.h"
#include "link/clock.h"
#include "link/module1.h"
#include "link/mscomm.h"
#include "link/portlist.h"

#include <QJsonObject>

#include <memory>
#include <string>
#include <vector>

namespace quorvel::ctl {

inline constexpr int kAnswered = 0;
inline constexpr int kNotAnswered = 1;
inline constexpr int kWrongUsage = 2;
inline constexpr int kNotTaken = 6; ///< stored records are not all in the files that were named

/// The options that all subcommands share. They may come before or after the subcommand.
struct CommonOptions {
    std::string port;    ///< device path or tcp:host:port; empty: the first of the port list
    std::string address; ///< 1..249, decimal
    std::string type;    ///< A, B, C or D; empty: A, unless the command finds it out
    bool json = false;
    bool journal = true;   ///< what is set and deleted is booked
    bool readOnly = false; ///< nothing that changes a readout is sent
    bool stats = false;    ///< prints the health of the line at the end
    std::string trace;     ///< file that the traffic is appended to; empty: none
};

/// What a subcommand does to readouts.
enum class Access {
    Reads,  ///< nothing that changes a readout can be sent
    Writes, ///< may be sent, to a port that was named or is the only one
};

/// What every subcommand works with: the options, the link, the way to answer.
class Console {
public:
    /// @param enumerate  finds the ports of the machine.
    explicit Console(const QString& edition, link::PortList::Enumerator enumerate = link::enumeratePorts);

    CommonOptions options;
    int status = kAnswered; ///< of the program

    link::Bench& bench() { return bench_; }
    /// The --type, A without it.
    link::InstrumentType instrumentType() const;
    link::Module1& module1() { return *module1_; }
    /// The port list, that of --port first.
    const link::PortList& ports();

    /// Takes the options over and opens the port.
    /// @return false when that failed: the reason is on stderr and the status set; the command ends.
    bool openPort(Access access);
    /// The halves of openPort(), for a command that goes on without a port: the link, false when that failed and was
    /// said; then its port. @return empty on success, otherwise the reason in words.
    bool makeLink(Access access);
    QString openDevice();
    /// Whether --address was given. What a command needs of the command line is checked first, before a file or a port is
    /// touched.
    /// @return false when it was not: that is on stderr and the status set; the command ends.
    bool checkReadout();
    /// checkReadout() and openPort().
    bool openReadout(Access access);
    /// The --address, which must have been given.
    int address() const;
    /// The letter of the instrument type that the bench has.
    QString typeName() const;

    /// Ends the work: prints the health of the line if it was asked for.
    void finish() const;

    /// A message for the user, on stderr.
    void tell(const QString& words) const;
    /// tell(), and sets the exit status.
    void fail(int exitStatus, const QString& words);
    /// A line on stderr that the next one overwrites, until anything else is said. In a log the last one shows.
    void progress(const QString& words) const;
    /// One line of data on stdout: the object with --json, else the text. One that cannot be written is a failure, told
    /// once.
    void answer(const QString& text, const QJsonObject& object);

    /// True when work that goes on and on is to end: somebody asked for it from outside, or nobody can read the answers.
    bool endRequested() const;

private:
    bool hasPort(Access access);
    bool openTrace();
    void keepJournal();
    void endProgress() const;

    bool unreadable_ = false;            ///< stdout takes no more
    mutable bool progressShown_ = false; ///< of stderr: a progress line is not ended
    link::PortList::Enumerator enumerate_;
    link::Bench bench_;
    link::SystemClock clock_;
    std::unique_ptr<link::PortList> ports_;
    std::unique_ptr<link::MSComm> mscomm1_;
    line::Trace trace_;
    line::Health health_;
    std::unique_ptr<line::Journal> journal_;
    std::unique_ptr<link::Module1> module1_;
};

} // namespace quorvel::ctl
