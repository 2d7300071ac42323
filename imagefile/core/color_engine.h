// The lcms2 context of this layer.
#pragma once

#include <lcms2.h>
#include <memory>

namespace imagefile {

struct CloseProfile {
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
using ProfilePtr = std::unique_ptr<void, CloseProfile>;

/// Returns the context for all profiles and transforms. It has no mutexes, because lcms2 2.14 crashes if it can't
/// allocate one, so only one thread at a time may use a profile. Throws std::bad_alloc.
cmsContext ColorContext();

/// Opens a profile, whose bytes must outlive the result. Returns null if it is damaged. Throws std::bad_alloc.
ProfilePtr OpenProfile(const void *profile, std::size_t bytes);

} // namespace imagefile
