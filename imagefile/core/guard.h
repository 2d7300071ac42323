// The edge of the layer: what runs inside returns a Status and may throw, what leaves is a number.
#pragma once

#include "status.h"

#include <exception>
#include <new>

namespace imagefile {

/// Runs @p work, a callable that returns a Status, and gives its error number; its text goes to gflLastErrorText.
template <class Work> int Guarded(Work work) noexcept
{
    try {
        return Report(work());
    } catch (const std::bad_alloc &) {
        return Report(Status::Fail(GFL_ERROR_NO_MEMORY, "no memory"));
    } catch (const std::exception &error) { // of a library that has no better way out
        return Report(Status::Fail(GFL_ERROR_FILE_READ, error.what()));
    }
}

/// Runs @p work, a callable that returns a pointer; null when it throws.
template <class Work> auto GuardedPointer(Work work) noexcept -> decltype(work())
{
    decltype(work()) result = nullptr;
    static_cast<void>(Guarded([&] {
        result = work();
        return Status::Ok();
    }));
    return result;
}

} // namespace imagefile
