// The memory that crosses the face of the layer: bitmaps and blocks, by the callbacks given to gflLibraryInitEx.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace imagefile {

/// Uninitialised memory, or null.
void *Allocate(std::size_t bytes);
/// As realloc: null and the old block untouched when memory is short.
void *Reallocate(void *pointer, std::size_t bytes);
/// Null is allowed.
void Release(void *pointer);

/// @p count zeroed objects of a plain record type; throws std::bad_alloc. Zero objects still give a block.
template <class T> T *NewZeroed(std::size_t count = 1);

/// A zero-terminated copy; throws std::bad_alloc.
char *NewText(const std::string &text);
/// A copy of bytes, null for none; throws std::bad_alloc.
std::uint8_t *NewBytes(const void *bytes, std::size_t count);

/// Owns a record until it is handed out, for builders that may throw half-way.
template <class T> using Owned = std::unique_ptr<T, void (*)(T *)>;

void *NewZeroedBytes(std::size_t bytes);

template <class T> T *NewZeroed(std::size_t count)
{
    return static_cast<T *>(NewZeroedBytes(count * sizeof(T)));
}

} // namespace imagefile
