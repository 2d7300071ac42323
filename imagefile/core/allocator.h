// Memory that crosses the layer's interface: bitmaps and blocks, allocated by the callbacks given to gflLibraryInitEx.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace imagefile {

/// Allocates uninitialized memory, or returns null.
void *Allocate(std::size_t bytes);
/// Like realloc: returns null, with the old block untouched, when memory is short.
void *Reallocate(void *pointer, std::size_t bytes);
/// Frees a block; accepts null.
void Release(void *pointer);

/// Allocates @p count zeroed objects of a plain record type; throws std::bad_alloc. Never null, even if @p count is 0.
template <class T> T *NewZeroed(std::size_t count = 1);

/// Returns a zero-terminated copy; throws std::bad_alloc.
char *NewText(const std::string &text);
/// Returns a copy of bytes, null if there are none; throws std::bad_alloc.
std::uint8_t *NewBytes(const void *bytes, std::size_t count);

/// Owner of a record until it is returned, for functions that may throw while they build it.
template <class T> using Owned = std::unique_ptr<T, void (*)(T *)>;

void *NewZeroedBytes(std::size_t bytes);

template <class T> T *NewZeroed(std::size_t count)
{
    return static_cast<T *>(NewZeroedBytes(count * sizeof(T)));
}

} // namespace imagefile
