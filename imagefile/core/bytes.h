// A block of bytes in memory.
#pragma once

#include <cstdint>
#include <vector>

namespace imagefile {

using Bytes = std::vector<std::uint8_t>;

} // namespace imagefile
