#pragma once

#include "ctl/failure.h"
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
#include <optional>
#include <string>
#include <vector>

namespace quorvel::ctl {

/// The options that all subcommands share. They may come before or after the subcommand.
struct CommonOptions {
    std::string port;    ///< device path or tcp:host:port; empty: the first of the port list
    std::string address; ///< 1..249, decimal
    std::string type;    ///< A, B, C or D; empty: A, unless the command finds it out
    bool json = false;
    bool journal = true;   ///< what is set and deleted is booked
    bool yes = false;      ///< of commands that ask first
    bool force = false;    ///< of commands that write a file: an existing one is overwritten
    bool quiet = false;    ///< says nothing but answers and failures
    bool progress = false; ///< is shown although stderr is not a terminal
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
    /// Of the program, so far. The first failure decides: what follows from it is told, too.
    ExitStatus status() const { return status_; }

    link::Bench& bench() { return bench_; }
    /// The --type, A without it.
    link::InstrumentType instrumentType() const;
    link::Module1& module1() { return *module1_; }
    /// The port list, that of --port first.
    link::PortList& ports();

    /// Takes the options over and opens the port.
    /// @return false when that failed and was reported; the command ends.
    bool openPort(Access access);
    /// The halves of openPort(), for a command that goes on without a port: the link, false when that failed and was
    /// reported; then its port. @return empty on success, otherwise the reason in words.
    bool makeLink(Access access);
    QString openDevice();
    /// Whether --address was given. What a command needs of the command line is checked first, before a file or a port is
    /// touched.
    /// @return false when it was not, which was reported; the command ends.
    bool checkReadout();
    /// checkReadout() and openPort().
    bool openReadout(Access access);
    /// The --address, which must have been given.
    int address() const;
    /// The letter of the instrument type that the bench has.
    QString typeName() const;

    /// Ends the work: prints the health of the line if it was asked for.
    void finish() const;

    /// A remark for the user, on stderr; not with --quiet.
    void tell(const QString& words) const;
    /// Asks the user, unless --yes was given, or --read-only refuses what follows. Nobody who could answer is a no.
    /// @param ifYes  what follows does to readouts.
    bool agrees(const QString& question, Access ifYes = Access::Writes) const;
    /// Whether a file may be made under this name: there is none yet, or --force was given.
    /// @return false when not, which was reported; the command ends.
    bool mayMake(const QString& path);
    /// Reports a failure: words on stderr, with --json also {"error":{"kind":...,"message":...}} on stdout, and the exit
    /// status.
    void fail(Failure failure, const QString& words);
    /// Reports that a search found nothing, or that it was broken off before it could.
    /// @param latest  how its latest question failed.
    void failSearch(Failure latest);
    /// The exit status of a failure that the answers tell by themselves.
    void note(Failure failure);
    /// Why the latest exchange was not what was needed; nothing while it was, or there was none.
    std::optional<Failure> failureOfLine() const;
    /// A line on stderr that the next one overwrites, until anything else is said; on a terminal, or
    /// with --progress.
    void progress(const QString& words) const;
    /// The next step after a readout did not answer well; on a terminal, or with --progress.
    void adviseTest() const;
    /// One line of data on stdout: the object with --json, else the text. One that cannot be written is a failure, told
    /// once.
    /// @param more  others follow at once: this one may wait for them.
    void answer(const QString& text, const QJsonObject& object, bool more = false);
    /// Writes answers that wait.
    void flush();
    /// Whole lines of data on stdout as they are; otherwise as answer().
    void print(const QByteArray& lines, bool more = false);

    /// True when work that goes on and on is to end: somebody asked for it from outside, or nobody can read the answers.
    bool endRequested() const;

private:
    bool isWatched() const; ///< by a person, who is shown more than scripts need
    /// Keeps the latest exchange.
    struct Latest final : link::ExchangeObserver {
        void sending(const link::Exchange& /*exchange*/) override {}
        void ended(const link::Exchange& exchange) override { failure = failureIn(exchange); }
        static std::optional<Failure> failureIn(const link::Exchange& exchange)
        {
            return isWell(exchange) ? std::nullopt : std::optional(failureOf(exchange));
        }
        std::optional<Failure> failure;
    };

    void reportUnwritten();
    void say(const QString& words) const;
    bool hasPort(Access access);
    bool openTrace();
    void keepJournal();
    void endProgress() const;

    ExitStatus status_ = ExitStatus::Done;
    bool unreadable_ = false;            ///< stdout takes no more
    mutable bool progressShown_ = false; ///< of stderr: a progress line is not ended
    link::PortList::Enumerator enumerate_;
    link::Bench bench_;
    link::SystemClock clock_;
    std::unique_ptr<link::PortList> ports_;
    std::unique_ptr<link::MSComm> mscomm1_;
    line::Trace trace_;
    line::Health health_;
    Latest latest_;
    std::unique_ptr<line::Journal> journal_;
    std::unique_ptr<link::Module1> module1_;
};

} // namespace quorvel::ctl
