// Blocks for temporary images: rows aligned for vector loads, null on failure.
#pragma once

#include "types.h"

namespace primitives {

/// Allocate @p bytes bytes, or @p height rows of at least @p rowBytes bytes; @p step receives the number of bytes from
/// one row to the next. Blocks and rows are aligned to 64 bytes. Return null if a size is below 1 or the memory is not
/// available. Release the block with Free.
void *Allocate(std::int64_t bytes);
void *AllocateRows(std::int64_t rowBytes, int height, Step *step);
/// Frees a block; accepts null.
void Free(void *block);

/// Allocates an image of @p width by @p height pixels of @p C channels; the pixels are undefined.
template <typename T, int C> T *AllocateImage(int width, int height, Step *step)
{
    return static_cast<T *>(AllocateRows(std::int64_t(width) * C * std::int64_t(sizeof(T)), height, step));
}

} // namespace primitives
