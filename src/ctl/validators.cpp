#include "ctl/validators.h"

#include "link/address.h"
#include "link/device.h"
#include "text/number.h"

#include <cmath>

namespace quorvel::ctl {

CLI::Validator number()
{
    return {[](std::string& text) {
                return text::isNumber(text) && std::abs(text::Val(text)) < 1000
                           ? std::string()
                           : "\"" + text + "\" is not a number between -1000 and 1000";
            },
            "NUMBER"};
}

CLI::Validator busAddress()
{
    return {[](std::string& text) {
                return text::allDigits(text) && link::isAddress(text::integerOf(text))
                           ? std::string()
                           : "\"" + text + "\" is not an address from 1 to 249";
            },
            "ADDRESS"};
}

CLI::Validator deviceName()
{
    return {[](std::string& text) {
                const auto name = QString::fromLocal8Bit(text.c_str());
                return link::deviceNameError(name).toLocal8Bit().toStdString();
            },
            "PORT"};
}

} // namespace quorvel::ctl
