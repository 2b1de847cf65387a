#include "link/address.h"
#include "protocol/command.h"
#include "protocol/meaning.h"
#include "protocol/settings_file.h"
#include "protocol/snapshot.h"
#include "support/fuzz_input.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

/// Takes any bytes for a settings file, reads of which readout it is, makes the commands that restore it, and checks that
/// only frames of the right form go out.
namespace quorvel::protocol {
namespace {

using test::promised;

constexpr std::string_view kAddress = "05";

/// What the readout answers to the query when it has taken the frame: the fields are at the same places.
std::string answerTo(const link::Transaction& query, const link::Transaction& set)
{
    auto reply = set.frame;
    const auto digits = commandOf(query.frame)->digits;
    reply.replace(3, digits.size(), digits);
    return reply;
}

void holdFrame(const Setting& setting, const link::Transaction& set)
{
    const auto& frame = set.frame;
    const auto* row = commandOf(frame);
    promised(row && row->kind == link::Kind::Set, "a command that sets");
    promised(frame.starts_with(":05") && frame.ends_with("FF\r\n"), "a frame from mark to line end");
    promised(static_cast<int>(frame.size()) == set.reply.count, "a frame of its length");
    promised(std::all_of(frame.begin(), frame.end() - 2, [](char c) { return c >= ' ' && c <= '~'; }),
             "characters that the bus can carry");
    // read back and written again it is the same
    const auto held = setting.read(answerTo(setting.query(kAddress), set));
    const auto again = setting.write(kAddress, held);
    const auto* transaction = std::get_if<link::Transaction>(&again);
    promised(transaction && transaction->frame == frame, "what was restored is saved as it is");
}

void holdSettings(const QJsonObject& values)
{
    for (const auto type : {link::TypeA, link::TypeB, link::TypeC, link::TypeD}) {
        for (const auto& setting : settingsOf(type)) {
            const auto value = values.value(QLatin1String(setting.name));
            const auto words = inWords(value);
            promised(
                std::ranges::none_of(words, [](QChar c) { return c.category() == QChar::Other_Control; }),
                "a line without control characters");
            const auto command = setting.write(kAddress, value);
            if (const auto* set = std::get_if<link::Transaction>(&command)) holdFrame(setting, *set);
        }
    }
}

void holdReason(const QString& reason)
{
    promised(!reason.isEmpty(), "a reason");
    promised(std::ranges::none_of(reason, [](QChar c) { return c.category() == QChar::Other_Control; }),
             "a reason in one line");
}

/// What decides whether a readout may be set to a file.
void holdReadout(const SettingsFile& file)
{
    promised(file.address == 0 || link::isAddress(file.address), "an address of the bus, or none");
    promised(!file.settings.isEmpty(), "at least one setting");
    const auto type = file.type.value_or(link::TypeD);
    promised(ofAnother(file, file.address, type).isEmpty(), "a file fits the readout that it is of");
    promised(ofAnother(file, 250, type).isEmpty() == (file.address == 0), "another address is noticed");
    const auto otherType = type == link::TypeC ? link::TypeA : link::TypeC;
    promised(ofAnother(file, file.address, otherType).isEmpty() == !file.type, "another type is noticed");

    const auto again = settingsIn(textOf(file));
    const auto* same = std::get_if<SettingsFile>(&again);
    promised(same && same->address == file.address && same->type == file.type,
             "what was read is saved as it is");
}

} // namespace
} // namespace quorvel::protocol

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvel::protocol;
    const auto bytes = QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto read = settingsIn(bytes);
    if (const auto* file = std::get_if<SettingsFile>(&read)) {
        holdReadout(*file);
    } else {
        holdReason(std::get<QString>(read));
    }
    // also those of a file that is refused: what checks a setting does not count on the rest of the file
    holdSettings(QJsonDocument::fromJson(bytes).object().value("settings").toObject());
    return 0;
}
