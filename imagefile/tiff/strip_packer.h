// Compresses TIFF strips on several threads, in order, with a few strips in memory at a time.
#pragma once

#include "core/status.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace imagefile {

/// A packing job.
struct StripJob {
    int strips = 0;                // >= 1
    std::size_t maxStripBytes = 0; // unpacked
    int threads = 1;               // >= 1, including the calling one; the number doesn't change the packed bytes
    int level = 1;                 // of libdeflate, 1 to 12

    /// Makes the rows for strip @p strip in @p rows (maxStripBytes). Called once per strip in order, on the calling
    /// thread, while others pack. Optional; if absent, fill gets null rows.
    std::function<Status(int strip, std::uint8_t *rows)> make;
    /// Fills @p buffer (maxStripBytes) with strip @p strip and returns its bytes. Called on several threads at once;
    /// must not throw.
    std::function<std::size_t(int strip, const std::uint8_t *rows, std::uint8_t *buffer)> fill;
    /// Receives the packed strip. Called once per strip in order, on the calling thread.
    std::function<Status(int strip, const std::uint8_t *packed, std::size_t bytes)> write;
};

/// Packs all strips as zlib streams. Stops at the first failure of @c make or @c write. Throws std::bad_alloc.
Status PackStrips(const StripJob &job);

} // namespace imagefile
