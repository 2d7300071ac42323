// Numbers as text, independent of the locale.
#pragma once

#include <charconv>
#include <string>

namespace imagefile {

/// Formats @p value with up to nine significant digits and no trailing zeros: "50", "3.6". Large and tiny values use
/// scientific notation.
inline std::string Decimal(double value)
{
    constexpr int kDigits = 9;
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::general, kDigits);
    return std::string(text, result.ptr);
}

/// Like Decimal, but never in scientific notation; positive values below 0.5e-9 give "0". For values that other
/// programs parse as plain decimals.
inline std::string FixedDecimal(double value)
{
    const std::string general = Decimal(value);
    if (general.find('e') == std::string::npos)
        return general;
    constexpr int kDecimals = 9;
    char text[400]; // 1.8e308 has 309 digits
    const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, kDecimals);
    std::string fixed(text, result.ptr);
    fixed.resize(fixed.find_last_not_of('0') + 1);
    if (fixed.back() == '.')
        fixed.pop_back();
    return fixed;
}

} // namespace imagefile
