#include "allocator.h"

#include "gfl.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

namespace imagefile {

namespace {

struct Allocator {
    GFL_ALLOC_CALLBACK alloc;
    GFL_REALLOC_CALLBACK realloc;
    GFL_FREE_CALLBACK free;
    void *userData;
};

const Allocator kPlain = {[](unsigned long size, void *) { return std::malloc(size); },
                          [](void *pointer, unsigned long size, void *) { return std::realloc(pointer, size); },
                          [](void *pointer, void *) { std::free(pointer); }, nullptr};

std::mutex startMutex; // guards the next two variables
int starts = 0;
Allocator hostAllocator;

std::atomic<const Allocator *> current{&kPlain};

} // namespace

void *Allocate(std::size_t bytes)
{
    const Allocator &allocator = *current.load(std::memory_order_acquire);
    return allocator.alloc(bytes, allocator.userData);
}

void *Reallocate(void *pointer, std::size_t bytes)
{
    const Allocator &allocator = *current.load(std::memory_order_acquire);
    return allocator.realloc(pointer, bytes, allocator.userData);
}

void Release(void *pointer)
{
    if (!pointer)
        return;
    const Allocator &allocator = *current.load(std::memory_order_acquire);
    allocator.free(pointer, allocator.userData);
}

void *NewZeroedBytes(std::size_t bytes)
{
    void *block = Allocate(bytes > 0 ? bytes : 1);
    if (!block)
        throw std::bad_alloc();
    return std::memset(block, 0, bytes);
}

char *NewText(const std::string &text)
{
    char *copy = NewZeroed<char>(text.size() + 1);
    text.copy(copy, text.size()); // the terminating zero is already there
    return copy;
}

std::uint8_t *NewBytes(const void *bytes, std::size_t count)
{
    if (count == 0)
        return nullptr;
    auto *copy = NewZeroed<std::uint8_t>(count);
    std::memcpy(copy, bytes, count);
    return copy;
}

} // namespace imagefile

int gflLibraryInitEx(GFL_ALLOC_CALLBACK alloc, GFL_REALLOC_CALLBACK realloc, GFL_FREE_CALLBACK free, void *userData)
{
    using namespace imagefile;
    const std::lock_guard<std::mutex> lock(startMutex);
    if (starts++ > 0)
        return GFL_NO_ERROR;
    hostAllocator = alloc && realloc && free ? Allocator{alloc, realloc, free, userData} : kPlain;
    current.store(&hostAllocator, std::memory_order_release);
    return GFL_NO_ERROR;
}

void gflLibraryExit()
{
    using namespace imagefile;
    const std::lock_guard<std::mutex> lock(startMutex);
    if (starts > 0 && --starts == 0)
        current.store(&kPlain, std::memory_order_release);
}

void *gflMemoryAlloc(std::uint32_t size)
{
    return imagefile::Allocate(size);
}
