// Bytes as hexadecimal text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace imagefile {

/// Returns the value of a hexadecimal digit of either case; -1 for other characters.
inline int HexDigit(char c)
{
    return c >= '0' && c <= '9' ? c - '0'
        : c >= 'a' && c <= 'f'  ? c - 'a' + 10
        : c >= 'A' && c <= 'F'  ? c - 'A' + 10
                                : -1;
}

/// Returns two lowercase digits per byte.
inline std::string Hexadecimal(const std::uint8_t *data, std::size_t length)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(length * 2);
    for (std::size_t i = 0; i < length; ++i) {
        text += kDigits[data[i] >> 4];
        text += kDigits[data[i] & 15];
    }
    return text;
}

} // namespace imagefile
