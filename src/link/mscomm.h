#pragma once

#include "link/device.h"
#include "link/portlist.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace quorvel::link {

/// The serial control, on a device that `Opener` opens from a name. Only Module1 sends through it.
class MSComm final : public QObject {
    Q_OBJECT
public:
    using Opener = std::function<OpenedDevice(const QString& name, const LineSettings& line)>;

    /// @param ports  names the device behind each port number; must outlive the control.
    explicit MSComm(const PortList& ports, Opener opener = openDevice, QObject* parent = nullptr);
    ~MSComm() override;

    /// The number of the port that the next opening takes, as the port list counts.
    void setCommPort(int number) { commPort_ = number; }
    /// Line settings such as "9600,n,8,1", taken at the next opening.
    void setSettings(const std::string& settings) { settings_ = settings; }
    /// Modem lines to switch on at the next opening, where the device has them.
    void setRTSEnable(bool on) { rts_ = on; }
    void setDTREnable(bool on) { dtr_ = on; }

    bool PortOpen() const { return device_ != nullptr; }
    /// Opens (true) or closes (false) the port.
    /// @return empty on success, otherwise the reason in words; the port is closed then.
    QString setPortOpen(bool open);
    /// The name of the open device; empty while closed.
    QString deviceName() const { return PortOpen() ? name_ : QString(); }
    /// The reason that lost() gave when the device vanished, kept until setPortOpen() is called; otherwise empty.
    const QString& lostReason() const { return lostReason_; }

    /// Writes the characters at once. Dropped while the port is closed.
    void Output(std::string_view characters);
    /// Takes `InputLen` characters out of the input buffer, all that wait when it is 0 (as at start).
    std::string Input();
    void setInputLen(int length) { inputLength_ = length; }
    /// Characters that wait in the input buffer, up to kInputBuffer; 0 while closed, but for those that came together with
    /// the loss of the device.
    int InBufferCount();
    /// Moves what the device holds into the input buffer without an event loop.
    void fetch();
    /// How many characters the input buffer holds: more than the longest reply. Those that come while it is full are
    /// lost.
    static constexpr std::size_t kInputBuffer = 262'144;
    /// Characters that were lost since the last call.
    std::uint64_t takeLostCharacters() { return std::exchange(lostCharacters_, 0); }

Q_SIGNALS:
    /// Characters have come into the input buffer.
    void arrived();
    /// The open device vanished; the port is closed already.
    /// @param reason  what happened and what to do, in words.
    void lost(const QString& reason);

private:
    void drop();
    void gather();

    const PortList& ports_;
    Opener opener_;
    std::unique_ptr<QIODevice> device_;
    QString name_;
    std::deque<char> input_;
    std::uint64_t lostCharacters_ = 0;
    QString lostReason_;
    int commPort_ = 1;
    std::string settings_ = "9600,n,8,1";
    bool rts_ = false;
    bool dtr_ = false;
    int inputLength_ = 0;
};

} // namespace quorvel::link
