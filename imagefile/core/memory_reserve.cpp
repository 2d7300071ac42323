#include "memory_reserve.h"

#include <cstddef>
#include <new>

#include <sys/mman.h>

namespace imagefile {

namespace {

constexpr std::size_t kReserveBytes = std::size_t(4) << 20; // enough for a large XMP packet and its tree

thread_local MemoryReserve *current = nullptr;
std::new_handler previous = nullptr;

void FreeReserve()
{
    if (MemoryReserve::Free())
        return;
    if (!previous)
        throw std::bad_alloc();
    previous();
}

[[gnu::constructor]] void Install()
{
    previous = std::set_new_handler(FreeReserve);
}

[[gnu::destructor]] void Remove() // the library may be unloaded
{
    if (std::get_new_handler() == FreeReserve)
        std::set_new_handler(previous);
}

} // namespace

// Uses mmap(), because freeing a block of this size from malloc() would make malloc() map fewer blocks from then on.
MemoryReserve::MemoryReserve()
    : m_memory(mmap(nullptr, kReserveBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))
{
    if (m_memory == MAP_FAILED)
        throw std::bad_alloc();
    current = this;
}

MemoryReserve::~MemoryReserve()
{
    Free();
    current = nullptr;
}

bool MemoryReserve::Free()
{
    if (!current || !current->m_memory)
        return false;
    munmap(current->m_memory, kReserveBytes);
    current->m_memory = nullptr;
    return true;
}

} // namespace imagefile
