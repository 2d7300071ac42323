// Memory for libraries that hang or crash if an allocation fails.
#pragma once

namespace imagefile {

/// Reserved memory of a thread: while an instance exists, the first operator new that fails frees this memory and
/// tries again. The memory is never accessed, so it takes only address space. At most one instance per thread.
class MemoryReserve {
public:
    /// Throws std::bad_alloc.
    MemoryReserve();
    ~MemoryReserve();
    MemoryReserve(const MemoryReserve &) = delete;
    MemoryReserve &operator=(const MemoryReserve &) = delete;

    /// Frees the reserve of this thread. @return false if it has none.
    static bool Free();

private:
    void *m_memory;
};

} // namespace imagefile
