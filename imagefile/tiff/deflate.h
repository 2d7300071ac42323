// Compressors that produce zlib streams.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace imagefile {

enum class DeflateBy {
    LibDeflate, // level 1
    IsaL,       // level 1: takes a third of LibDeflate's time for files of about the same size
};

/// Compressor for use by one thread at a time.
class Deflate {
public:
    virtual ~Deflate() = default;
    /// Returns the maximum packed size of a block of @p bytes bytes.
    virtual std::size_t Bound(std::size_t bytes) const = 0;
    /// Packs a block into @p packed, which has room for Bound(@p bytes), and returns the packed size.
    virtual std::size_t Pack(const std::uint8_t *data, std::size_t bytes, std::uint8_t *packed) = 0;
};

/// Creates a compressor. Throws std::bad_alloc.
std::unique_ptr<Deflate> MakeDeflate(DeflateBy by);

} // namespace imagefile
