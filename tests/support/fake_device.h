#pragma once

#include <QIODevice>

#include <cstring>
#include <functional>
#include <string>

namespace quorvel::test {

/// A device without hardware: keeps what is written, and gives what receive() put in.
class FakeDevice final : public QIODevice {
public:
    FakeDevice() { open(QIODevice::ReadWrite | QIODevice::Unbuffered); }

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return static_cast<qint64>(waiting.size()); }
    bool waitForReadyRead(int) override
    {
        if (onTheLine.empty()) return false;
        receive(onTheLine.substr(0, 1));
        onTheLine.erase(0, 1);
        return true;
    }

    /// Characters arrive from the bus.
    void receive(const std::string& characters)
    {
        waiting += characters;
        if (!characters.empty()) Q_EMIT readyRead();
    }
    /// The adapter is pulled.
    void vanish()
    {
        setErrorString(QStringLiteral("pulled"));
        Q_EMIT readChannelFinished();
    }

    std::string written;
    std::string waiting;
    std::string onTheLine;                 ///< arrives one by one, whenever the device is asked to look
    std::function<void(char)> onCharacter; ///< called for each character written

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        const auto count = std::min<std::size_t>(static_cast<std::size_t>(maxSize), waiting.size());
        std::memcpy(data, waiting.data(), count);
        waiting.erase(0, count);
        return static_cast<qint64>(count);
    }
    qint64 writeData(const char* data, qint64 maxSize) override
    {
        for (qint64 i = 0; i < maxSize; ++i) {
            written += data[i];
            if (onCharacter) onCharacter(data[i]);
        }
        return maxSize;
    }
};

} // namespace quorvel::test
