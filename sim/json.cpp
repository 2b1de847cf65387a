#include "sim/json.h"

#include "sim/text.h"

#include <cstdio>

namespace quorvelsim::json {

std::string text(std::string_view value)
{
    std::string out = "\"";
    for (const char character : value) {
        if (character == '\r') {
            out += "\\r";
        } else if (character == '\n') {
            out += "\\n";
        } else if (character == '"' || character == '\\') {
            (out += '\\') += character;
        } else if (character < ' ' || character > '~') {
            (out += "\\u00") += twoHex(character);
        } else {
            out += character;
        }
    }
    return out + "\"";
}

std::string number(double value, int decimals)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    return buffer;
}

std::string number(std::size_t value) { return std::to_string(value); }

std::string number(int value) { return std::to_string(value); }

std::string boolean(bool value) { return value ? "true" : "false"; }

std::string array(const std::vector<std::string>& elements)
{
    std::string out;
    for (const auto& element : elements)
        out += (out.empty() ? "" : ",") + element;
    return "[" + out + "]";
}

Object& Object::add(std::string_view name, std::string_view value)
{
    if (!members_.empty()) members_ += ',';
    ((members_ += text(name)) += ':') += value;
    return *this;
}

} // namespace quorvelsim::json
