#include "link/values.h"

#include "text/reply.h"

namespace quorvel::link {

namespace {

constexpr int kFirstPosition = 8;
constexpr int kSecondPosition = 16;
constexpr int kValueLength = 8;

} // namespace

std::string valuesFrame(std::string_view addressDigits, std::string_view command)
{
    return text::withLineEnd(":" + std::string(addressDigits) + std::string(command));
}

bool isValuesReply(std::string_view reply) { return reply.size() == kValuesReplyLength; }

std::string firstValue(std::string_view reply)
{
    return std::string(text::mid(reply, kFirstPosition, kValueLength));
}

std::string secondValue(std::string_view reply)
{
    return std::string(text::mid(reply, kSecondPosition, kValueLength));
}

std::string xyText(std::string_view reply)
{
    if (!isValuesReply(reply)) return std::string(kReadingFailed);
    return "  X: " + firstValue(reply) + "  Y: " + secondValue(reply) + "  ";
}

std::string zText(std::string_view reply, bool userEdition)
{
    if (userEdition) return "Z: " + firstValue(reply);
    return "Z1: " + firstValue(reply) + "  Z2: " + secondValue(reply) + "  ";
}

} // namespace quorvel::link
