#include "memory.h"

#include <cstdlib>

namespace primitives {

namespace {
constexpr std::int64_t kAlignment = 64; // a cache line, and the widest vector
}

void *Allocate(std::int64_t bytes)
{
    if (bytes < 1 || bytes > std::numeric_limits<std::int64_t>::max() - kAlignment)
        return nullptr;
    const std::int64_t rounded = (bytes + kAlignment - 1) / kAlignment * kAlignment;
    return std::aligned_alloc(kAlignment, static_cast<std::size_t>(rounded));
}

void *AllocateRows(std::int64_t rowBytes, int height, Step *step)
{
    std::int64_t bytes = 0;
    if (rowBytes < 1 || height < 1 || !step)
        return nullptr;
    *step = (rowBytes + kAlignment - 1) / kAlignment * kAlignment; // rowBytes < 2^36
    return __builtin_mul_overflow(*step, height, &bytes) ? nullptr : Allocate(bytes);
}

void Free(void *block)
{
    std::free(block);
}

} // namespace primitives
