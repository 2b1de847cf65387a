#include "sim/state.h"
#include "sim/test_bus.h"
#include "support/fuzz_input.h"

#include <QJsonDocument>

/// Writes any characters to a bus of four readouts, in any portions at any times, and checks what comes out.
///
/// First byte: 0 a bus at the pace of 9600 baud, otherwise one without pace. Then portions: a byte of time that passes
/// before it, in units of 10 ms, a byte of length, and the characters.
namespace quorvelsim {
namespace {

using quorvel::test::FuzzInput;
using quorvel::test::promised;

void holdFrames(Bus& bus, std::size_t& answered)
{
    for (const auto& logged : bus.takeFrames()) {
        const auto& text = logged.frame.text;
        promised(text.starts_with(':') && text.ends_with("\r\n"), "a frame is from mark to line end");
        promised(text.find_first_of(":\n", 1) == text.size() - 1, "a frame is one frame");
        promised(text.size() <= FrameReader::kLongest, "a frame is no longer than it may be");
        promised(logged.frame.first <= logged.frame.last, "a frame ends after it began");
        answered += logged.answerLength;
    }
}

void holdReadouts(Bus& bus, double now)
{
    for (const auto& [address, readout] : bus.readouts()) {
        promised(readout.address == address && address >= 1 && address <= 249, "a readout is at its address");
        const auto state = QJsonDocument::fromJson(QByteArray::fromStdString(stateOf(readout, now)));
        promised(state.isObject(), "a state is an object");
        promised(readout.ring.stored() >= 0 && readout.ring.stored() <= readout.ring.capacity(),
                 "a ring is no fuller");
    }
}

void run(FuzzInput& input)
{
    TestBus test(input.byte() == 0 ? kPaced : kFast);
    std::size_t written = 0;
    std::size_t answered = 0;
    std::size_t said = 0;
    while (!input.empty()) {
        test.now += input.byte() * 0.01;
        const auto portion = input.text(input.byte());
        written += portion.size();
        test.bus.receive(portion, test.now);
        said += test.bus.due(test.now).size();
        holdFrames(test.bus, answered);
    }
    test.now += 1e6;
    said += test.bus.due(test.now).size();
    promised(said == answered, "what is said is what frames were answered with");
    promised(test.bus.droppedCharacters() <= written, "no more is dropped than came");
    promised(!test.bus.nextDue(), "in the end all is quiet");
    holdReadouts(test.bus, test.now);
}

} // namespace
} // namespace quorvelsim

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quorvel::test::FuzzInput input(data, size);
    quorvelsim::run(input);
    return 0;
}
