// Numbers as text, the same under every locale.
#pragma once

#include <charconv>
#include <string>

namespace imagefile {

/// @p value with up to nine significant digits and without needless zeros: "50", "3.6". Large and tiny ones come in
/// scientific form.
inline std::string Decimal(double value)
{
    constexpr int kDigits = 9;
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::general, kDigits);
    return std::string(text, result.ptr);
}

} // namespace imagefile
