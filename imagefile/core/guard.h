// The boundary of the layer: internal functions return a Status and may throw; public ones return an error number.
#pragma once

#include "status.h"

#include <exception>
#include <new>

namespace imagefile {

/// Runs @p work, a callable that returns a Status, and returns its error number; gflLastErrorText then returns its
/// text. Allocates nothing itself, because memory may be short.
template <class Work> int Guarded(Work work) noexcept
{
    try {
        return Report(work());
    } catch (const std::bad_alloc &) {
        return Report(GFL_ERROR_NO_MEMORY, "not enough memory");
    } catch (const std::exception &error) { // from a library that reports errors this way
        return Report(GFL_ERROR_FILE_READ, error.what());
    } catch (...) { // from a library or host callback that throws numbers or its own types
        return Report(GFL_ERROR_FILE_READ, "an unknown exception");
    }
}

/// Runs @p work, a callable that returns a pointer or a bool; returns null or false if it throws.
template <class Work> auto GuardedValue(Work work) noexcept -> decltype(work())
{
    decltype(work()) result = {};
    static_cast<void>(Guarded([&] {
        result = work();
        return Status::Ok();
    }));
    return result;
}

} // namespace imagefile
