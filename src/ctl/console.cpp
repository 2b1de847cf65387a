#include "ctl/console.h"

#include "files/name.h"
#include "link/bytes.h"
#include "link/interrupt.h"
#include "link/terminal.h"
#include "protocol/direction.h"
#include "protocol/search.h"
#include "text/number.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>
#include <utility>

namespace quorvel::ctl {

namespace {

constexpr auto kNoPort = "There is no serial port. Plug the adapter in, or name a device with --port.";
constexpr auto kBrokenOff = "The search was broken off.";

} // namespace

Console::Console(const QString& edition, link::PortList::Enumerator enumerate)
    : enumerate_(std::move(enumerate))
{
    bench_.edition = edition;
}

link::PortList& Console::ports()
{
    if (!ports_) {
        const auto port = QString::fromLocal8Bit(options.port.c_str());
        ports_ =
            std::make_unique<link::PortList>(port.isEmpty() ? QStringList() : QStringList(port), enumerate_);
    }
    return *ports_;
}

bool Console::hasPort(Access access)
{
    const auto& all = ports().entries();
    if (all.empty()) {
        fail(Failure::NoPort, kNoPort);
        return false;
    }
    if (access == Access::Reads || all.size() == 1 || !options.port.empty()) return true;
    QStringList devices;
    for (const auto& entry : all) {
        devices << entry.device;
    }
    fail(Failure::Usage,
         QStringLiteral("There are several serial ports: %1. Name the one to write to with --port.")
             .arg(devices.join(QStringLiteral(", "))));
    return false;
}

bool Console::openPort(Access access)
{
    if (!hasPort(access) || !makeLink(access)) return false;
    const auto reason = openDevice();
    if (!reason.isEmpty()) fail(Failure::PortNotOpened, reason);
    return reason.isEmpty();
}

bool Console::makeLink(Access access)
{
    bench_.instrumentType = instrumentType();
    bench_.currentAddress = QString::fromStdString(options.address);
    mscomm1_ = std::make_unique<link::MSComm>(ports());
    module1_ = std::make_unique<link::Module1>(*mscomm1_, clock_);
    module1_->setReadOnly(options.readOnly || access == Access::Reads);
    module1_->addObserver(latest_);
    module1_->addObserver(health_);
    if (!openTrace()) return false;
    if (options.journal) keepJournal();
    QObject::connect(mscomm1_.get(), &link::MSComm::lost, mscomm1_.get(),
                     [this](const QString& reason) { fail(Failure::PortLost, reason); });
    return true;
}

QString Console::openDevice()
{
    if (ports().entries().empty()) return kNoPort;
    mscomm1_->setCommPort(ports().entries().front().number);
    return mscomm1_->setPortOpen(true);
}

bool Console::openTrace()
{
    if (options.trace.empty()) return true;
    const auto reason = trace_.open(QString::fromLocal8Bit(options.trace.c_str()));
    if (!reason.isEmpty()) {
        fail(Failure::File, reason);
        return false;
    }
    QObject::connect(&trace_, &line::Trace::failed, mscomm1_.get(),
                     [this](const QString& words) { tell(words); });
    module1_->addObserver(trace_);
    return true;
}

void Console::keepJournal()
{
    const auto program =
        bench_.isUserEdition() ? QStringLiteral("quorvelctl") : QStringLiteral("quorvelctl-factory");
    journal_ = std::make_unique<line::Journal>(
        line::journalFile(),
        line::JournalWriter{program, line::userName(), [this] { return mscomm1_->deviceName(); }});
    module1_->addObserver(*journal_);
    QObject::connect(journal_.get(), &line::Journal::failed, mscomm1_.get(),
                     [this](const QString& words) { tell(words); });
}

void Console::finish() const
{
    if (!options.stats) return;
    endProgress();
    std::fputs(health_.csv().toUtf8().constData(), stderr);
}

bool Console::checkReadout()
{
    if (!options.address.empty()) return true;
    fail(Failure::Usage, QStringLiteral("Give the readout's address with --address, 1 to 249."));
    return false;
}

bool Console::openReadout(Access access) { return checkReadout() && openPort(access); }

link::InstrumentType Console::instrumentType() const
{
    return protocol::typeNamed(options.type).value_or(link::TypeA);
}

int Console::address() const { return text::integerOf(options.address); }

QString Console::typeName() const
{
    return link::shown(std::string(protocol::nameOf(bench_.instrumentType)));
}

void Console::say(const QString& words) const
{
    endProgress();
    std::fprintf(stderr, "%s\n", qPrintable(words));
}

void Console::tell(const QString& words) const
{
    if (!options.quiet) say(words);
}

bool Console::agrees(const QString& question, Access ifYes) const
{
    if (options.yes || (options.readOnly && ifYes == Access::Writes)) return true;
    say(question + QStringLiteral(" [y/N]"));
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

bool Console::mayMake(const QString& path)
{
    if (options.force || !files::isThere(QFileInfo(path).filesystemFilePath())) return true;
    fail(Failure::Exists, QStringLiteral("%1 exists. Add --force to overwrite it.").arg(path));
    return false;
}

void Console::fail(Failure failure, const QString& words)
{
    note(failure);
    say(words);
    if (!options.json || unreadable_) return;
    const auto kind = rowOf(failure).kind;
    const QJsonObject error{{"kind", QLatin1String(kind.data(), static_cast<qsizetype>(kind.size()))},
                            {"message", words}};
    print(QJsonDocument(QJsonObject{{"error", error}}).toJson(QJsonDocument::Compact) + '\n');
}

void Console::failSearch(Failure latest)
{
    if (endRequested()) return fail(Failure::Ended, kBrokenOff);
    if (!module1_->port().PortOpen()) return fail(Failure::PortLost, kBrokenOff);
    fail(latest, protocol::kNothingFound);
}

void Console::note(Failure failure)
{
    if (status_ == ExitStatus::Done) status_ = rowOf(failure).status;
}

std::optional<Failure> Console::failureOfLine() const { return latest_.failure; }

bool Console::isWatched() const
{
    return !options.quiet && (options.progress || link::errorsReachATerminal());
}

void Console::adviseTest() const
{
    if (!isWatched() || (status_ != ExitStatus::NoAnswer && status_ != ExitStatus::BadAnswer)) return;
    const auto address =
        options.address.empty() ? QString() : QStringLiteral("--address %1 ").arg(this->address());
    say(QStringLiteral("Next step: quorvelctl %1diagnose tests step by step why.").arg(address));
}

void Console::progress(const QString& words) const
{
    if (!isWatched()) return;
    std::fprintf(stderr, "\r%s", qPrintable(words));
    std::fflush(stderr);
    progressShown_ = true;
}

void Console::endProgress() const
{
    if (std::exchange(progressShown_, false)) std::fputc('\n', stderr);
}

void Console::answer(const QString& text, const QJsonObject& object, bool more)
{
    print((options.json ? QJsonDocument(object).toJson(QJsonDocument::Compact) : text.toUtf8()) + '\n', more);
}

void Console::print(const QByteArray& lines, bool more)
{
    endProgress();
    const auto size = static_cast<std::size_t>(lines.size());
    errno = 0;
    if (std::fwrite(lines.constData(), 1, size, stdout) != size || (!more && std::fflush(stdout) != 0))
        reportUnwritten();
}

void Console::flush()
{
    errno = 0;
    if (std::fflush(stdout) != 0) reportUnwritten();
}

void Console::reportUnwritten()
{
    if (std::exchange(unreadable_, true)) return;
    fail(Failure::Output, QStringLiteral("The answer cannot be written: %1.")
                              .arg(QString::fromLocal8Bit(std::strerror(errno))));
}

bool Console::endRequested() const { return unreadable_ || link::interruptSignal() != 0; }

} // namespace quorvel::ctl
