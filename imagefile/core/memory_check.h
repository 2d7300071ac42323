// Detects failed allocations that a library reports as something else, such as damage, or not at all.
#pragma once

#include <cerrno>
#include <new>
#include <string>

namespace imagefile {

/// Check for failed allocations on this thread since construction, by errno, which malloc() sets to ENOMEM.
class MemoryCheck {
public:
    MemoryCheck() { errno = 0; }

    /// Throws std::bad_alloc if memory has run out, unless a later call has overwritten errno.
    void Require() const
    {
        if (errno == ENOMEM)
            throw std::bad_alloc();
    }
};

/// Returns the text of an Exiv2 value. Exiv2 writes it to a stream, which silently truncates it if memory runs out.
template <class Value> std::string WholeText(const Value &value)
{
    const MemoryCheck memory;
    std::string text = value.toString();
    memory.Require();
    return text;
}

} // namespace imagefile
