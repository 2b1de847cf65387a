#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "ctl/exchanges.h"
#include "link/address.h"
#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/meaning.h"
#include "text/number.h"

#include <algorithm>
#include <memory>
#include <string>

namespace quorvel::ctl {

namespace {

constexpr std::size_t kLongestRaw = 1000; ///< characters; the longest frame, a calibration table, has 187

CLI::Validator frameOnTheLine()
{
    return {[](std::string& text) {
                const bool printable = std::ranges::all_of(
                    text, [](char character) { return character > ' ' && character <= '~'; });
                if (text.empty() || text.size() > kLongestRaw || !printable)
                    return "\"" + protocol::printable(text) + "\" is not a frame such as :0572FF";
                if (text.front() != ':') text.insert(text.begin(), ':');
                return std::string();
            },
            "FRAME"};
}

/// A frame changes nothing when it is one that asks, with nothing behind its digits but the number of a record.
link::Kind kindOfRaw(const std::string& frame)
{
    const auto* command = protocol::commandOf(frame);
    if (!command) return link::Kind::Set;
    const auto parameter = protocol::parameterOf(frame);
    const bool plain = frame.ends_with("FF\r\n") && (command->id == protocol::CommandId::FetchRecord
                                                         ? parameter.size() == 4 && text::allDigits(parameter)
                                                         : parameter.empty());
    const bool asks = command->kind == link::Kind::Query || command->kind == link::Kind::Search;
    return asks && !plain ? link::Kind::Set : command->kind;
}

link::Transaction transactionOf(const std::string& typed)
{
    using Until = link::ReplyRule::Until;
    link::Transaction transaction{.frame = typed + "\r\n", .reply = {.until = Until::LineFeed}};
    transaction.kind = kindOfRaw(transaction.frame);
    // answers to a search come one after the other
    const auto* command = protocol::commandOf(transaction.frame);
    if (command && command->kind == link::Kind::Search) transaction.reply = command->reply;
    return transaction;
}

void sendRaw(Console& console, const std::string& typed)
{
    const auto transaction = transactionOf(typed);
    const auto meaning = link::shown(protocol::meaningOf(transaction.frame));
    const bool changes = transaction.kind == link::Kind::Set || transaction.kind == link::Kind::Delete;
    if (changes && !console.agrees(QStringLiteral("%1 may change a readout (%2). Send it?")
                                       .arg(QString::fromStdString(typed), meaning)))
        return console.fail(Failure::NeedsYes, QStringLiteral("Nothing was sent."));
    if (!console.openPort(changes ? Access::Writes : Access::Reads)) return;
    const auto exchange = ask(console, transaction);
    if (!exchange) return;
    if (exchange->reply.empty()) return failed(console, protocol::kCommError, *exchange);
    const auto line = exchange->reply.substr(0, exchange->reply.find_last_not_of("\r\n") + 1);
    const int address = protocol::addressOf(transaction.frame);
    console.answer(link::shown(protocol::printable(line)),
                   {{"address", link::isAddress(address) ? QJsonValue(address) : QJsonValue()},
                    {"frame", QString::fromStdString(typed)},
                    {"meaning", meaning},
                    {"reply", link::shown(line)},
                    {"outcome", link::shown(protocol::outcomeOf(*exchange))}});
}

} // namespace

void addRawCommand(CLI::App& app, Console& console)
{
    auto* command = addCommand(app, "raw",
                               "Send a frame as it is, and print what comes back up to the line end; asks "
                               "first for one that may change a readout",
                               "raw :0572FF");
    const auto frame = std::make_shared<std::string>();
    command
        ->add_option("FRAME", *frame,
                     "Colon, two hexadecimal digits of the address, command and end mark FF; the line end is "
                     "added")
        ->required()
        ->transform(frameOnTheLine());
    addYes(*command, console);
    command->callback([&console, frame] { sendRaw(console, *frame); });
}

} // namespace quorvel::ctl
