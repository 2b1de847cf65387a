#include "sim/control.h"
#include "sim/state.h"
#include "sim/test_bus.h"
#include "support/fuzz_input.h"

#include <QJsonDocument>
#include <QJsonObject>

/// Reads any lines as control lines; one that begins with ":" goes to the bus as a frame, and a second passes after each.
/// Each control line must be answered by one line of JSON, and one that is refused must change nothing.
namespace quorvelsim {
namespace {

using quorvel::test::FuzzInput;
using quorvel::test::promised;

std::string statesOf(Bus& bus, double now)
{
    std::string all;
    for (const auto& [address, readout] : bus.readouts())
        all += stateOf(*bus.find(address), now);
    return all;
}

void handle(TestBus& test, Control& control, const std::string& line)
{
    for (const auto& [address, readout] : test.bus.readouts())
        test.bus.find(address)->catchUp(test.now);
    const auto before = statesOf(test.bus, test.now);
    const auto answer = control.handle(line, test.now);
    promised(answer.find('\n') == std::string::npos, "an answer is one line");
    const auto json = QJsonDocument::fromJson(QByteArray::fromStdString(answer));
    promised(json.isObject() && !json.object().isEmpty(), "an answer is an object");
    if (!json.object().contains("error")) return;
    promised(json.object().size() == 1 && !json["error"].toString().isEmpty(), "a refusal has a reason");
    promised(statesOf(test.bus, test.now) == before, "what is refused changes nothing");
}

void run(FuzzInput& input)
{
    TestBus test;
    std::string name = "tcp:127.0.0.1:4001";
    Control control(test.bus, {[&] { return name; }, [&] { name.clear(); },
                               [&] {
                                   name = "tcp:127.0.0.1:4001";
                                   return std::string();
                               }});
    for (int lines = 0; !input.empty() && lines < 50; ++lines) {
        const auto line = input.line();
        test.now += 1;
        if (line.starts_with(':')) {
            test.talk(line);
        } else {
            handle(test, control, line);
        }
        if (test.bus.takeHangUp()) test.bus.forget();
    }
}

} // namespace
} // namespace quorvelsim

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quorvel::test::FuzzInput input(data, size);
    quorvelsim::run(input);
    return 0;
}
