// The edge of the layer: what runs inside returns a Status and may throw, what leaves is a number.
#pragma once

#include "status.h"

#include <exception>
#include <new>

namespace imagefile {

/// Runs @p work, a callable that returns a Status, and returns its error number; its text goes to gflLastErrorText.
/// Allocates nothing itself, because memory may be what is missing.
template <class Work> int Guarded(Work work) noexcept
{
    try {
        return Report(work());
    } catch (const std::bad_alloc &) {
        return Report(GFL_ERROR_NO_MEMORY, "not enough memory");
    } catch (const std::exception &error) { // of a library that has no better way out
        return Report(GFL_ERROR_FILE_READ, error.what());
    } catch (...) { // of a library, or of a callback of the host, that throws numbers or types of its own
        return Report(GFL_ERROR_FILE_READ, "an unknown exception");
    }
}

/// Runs @p work, a callable that returns a pointer or a bool; null or false when it throws.
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
