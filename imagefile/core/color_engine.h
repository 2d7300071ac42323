// lcms2 as this layer uses it.
#pragma once

#include <lcms2.h>
#include <memory>

namespace imagefile {

struct CloseProfile {
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
using ProfilePtr = std::unique_ptr<void, CloseProfile>;

/// Returns the context for all profiles and transforms. It has no mutexes, so a profile belongs to one thread: without
/// memory for its mutex, lcms2 2.14 crashes. Throws std::bad_alloc.
cmsContext ColorContext();

/// Opens a profile, which must outlive the result. Returns null if it is damaged. Throws std::bad_alloc.
ProfilePtr OpenProfile(const void *profile, std::size_t bytes);

} // namespace imagefile
