// Compresses TIFF strips on several threads, in order, with a few strips in memory at a time.
#pragma once

#include "core/status.h"
#include "deflate.h"

#include <functional>

namespace imagefile {

/// Packing job. The packed bytes are the same for any number of threads.
struct StripJob {
    int strips = 0;                // >= 1
    std::size_t maxStripBytes = 0; // unpacked; the size of every strip but the last
    int threads = 1;               // >= 1, including the calling one
    DeflateBy compressor = DeflateBy::LibDeflate;

    /// Generates @p count strips, starting with @p first, in @p rows (count * maxStripBytes bytes). Optional: without
    /// it, @c fill gets null rows. If @c stripsAtOnce is 0, @c make is called once per strip in order, on the calling
    /// thread, while others pack. Otherwise it is called for @c stripsAtOnce strips at a time, fewer only at the end,
    /// on the thread that then packs them.
    std::function<Status(int first, int count, std::uint8_t *rows)> make;
    int stripsAtOnce = 0;
    /// Fills @p buffer (maxStripBytes bytes) with strip @p strip and returns its size in bytes. Called on several
    /// threads at once; must not throw.
    std::function<std::size_t(int strip, const std::uint8_t *rows, std::uint8_t *buffer)> fill;
    /// Receives a packed strip. Called once per strip in order, on the calling thread.
    std::function<Status(int strip, const std::uint8_t *packed, std::size_t bytes)> write;
};

/// Packs all strips as zlib streams. Stops at the first failure of @c make or @c write. Throws std::bad_alloc.
Status PackStrips(const StripJob &job);

} // namespace imagefile
