#pragma once

#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QTextStream>
#include <QTimer>
#include <QWidget>

#include <cstdio>

namespace quorvel::bench {

/// Ends the program after a window has been painted for the first time, and prints the peak of its resident memory
/// in kB.
class FirstPaint final : public QObject {
protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (event->type() == QEvent::Paint && widget && !done_) {
            done_ = true;
            QTimer::singleShot(0, qApp, [] {
                std::printf("%s\n", qPrintable(peakMemory()));
                QCoreApplication::quit();
            });
        }
        return false;
    }

private:
    static QString peakMemory()
    {
        QFile status(QStringLiteral("/proc/self/status"));
        if (!status.open(QIODevice::ReadOnly)) return QStringLiteral("0");
        for (const auto& line : status.readAll().split('\n')) {
            if (line.startsWith("VmHWM:"))
                return QString::fromLatin1(line.mid(6)).simplified().section(u' ', 0, 0);
        }
        return QStringLiteral("0");
    }

    bool done_ = false;
};

} // namespace quorvel::bench
