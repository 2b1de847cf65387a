#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Just enough JSON for answers of one line. Characters above 126 and control characters are written as
/// \u00XX, one for each byte.
namespace quorvelsim::json {

std::string text(std::string_view value);
std::string number(double value, int decimals);
std::string number(std::size_t value);
std::string number(int value);
std::string boolean(bool value);

/// Elements are JSON already.
std::string array(const std::vector<std::string>& elements);

/// An object, member by member, in the order given; values are JSON already.
class Object {
public:
    Object& add(std::string_view name, std::string_view value);
    [[nodiscard]] std::string str() const { return "{" + members_ + "}"; }

private:
    std::string members_;
};

} // namespace quorvelsim::json
