// Compressors that pack a block as a zlib stream.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace imagefile {

enum class DeflateBy {
    LibDeflate, // level 1
    IsaL,       // level 1: a third of the time, files about as large
};

/// A compressor; one thread at a time.
class Deflate {
public:
    virtual ~Deflate() = default;
    /// Returns the most bytes that @p bytes can take.
    virtual std::size_t Bound(std::size_t bytes) const = 0;
    /// Packs a block into @p packed, which holds Bound(@p bytes), and returns the bytes written.
    virtual std::size_t Pack(const std::uint8_t *data, std::size_t bytes, std::uint8_t *packed) = 0;
};

/// Throws std::bad_alloc.
std::unique_ptr<Deflate> MakeDeflate(DeflateBy by);

} // namespace imagefile
