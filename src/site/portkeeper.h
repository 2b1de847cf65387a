#pragma once

#include "link/module1.h"
#include "link/portlist.h"

#include <QDateTime>
#include <QString>

#include <functional>

namespace quorvel::site {

/// Keeps a port open for as long as a program runs: an adapter may be pulled and come back, under another name too, and a
/// device server may be restarted.
class PortKeeper {
public:
    using Tell = std::function<void(const QString& words)>;

    /// @param ports   the list that the port of `module1` counts by.
    /// @param device  device path, COM name or tcp:host:port; empty: the first of the list whenever it is opened.
    /// @param tell    what happened, once each time.
    PortKeeper(link::Module1& module1, link::PortList& ports, QString device, Tell tell);

    /// Tries to open the port now. An adapter that has a serial number and was open before is looked for by it, and
    /// another adapter in its place is left alone.
    /// @return empty on success, otherwise the reason in words.
    QString open();

    /// Opens a port that is closed once more, when the pause since the last attempt is over. Pauses grow from 1 s to
    /// kLongestPause.
    void keepOpen();
    static constexpr int kLongestPause = 60; // s

    /// The port is another one from now on, when the name differs.
    void change(const QString& device);

    bool isOpen() const { return module1_.port().PortOpen(); }

private:
    const link::PortEntry* entry();
    bool pauseIsOver();

    link::Module1& module1_;
    link::PortList& ports_;
    QString device_;
    Tell tell_;
    QString serialNumber_; ///< of the adapter that was open last
    QDateTime tried_;
    int pause_ = 0; ///< s
    bool told_ = false;
};

} // namespace quorvel::site
