// PackBits, the compression of Photoshop's rows.
#pragma once

#include <cstdint>
#include <vector>

namespace imagefile {

/// Unpacks exactly @p size bytes. Returns false if the data is too short for that, or if a run exceeds the size.
bool UnpackBits(const std::uint8_t *packed, std::size_t packedSize, std::uint8_t *out, std::size_t size);

/// Appends the packed form of a row to @p out. It is at most 1/128 plus one byte longer than the row.
void PackBits(const std::uint8_t *row, std::size_t size, std::vector<std::uint8_t> *out);

} // namespace imagefile
