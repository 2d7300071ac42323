#include "color_engine.h"

#include "memory_check.h"

#include <lcms2_plugin.h>
#include <limits>

namespace imagefile {

namespace {

void *MakeNoMutex(cmsContext)
{
    static char any; // null would mean failure
    return &any;
}

cmsBool LockNothing(cmsContext, void *)
{
    return TRUE;
}

cmsContext MakeContext()
{
    static cmsPluginMutex noMutexes = {
        {cmsPluginMagicNumber, 2060, cmsPluginMutexSig, nullptr}, // plug-ins of this type have existed since lcms2 2.6
        MakeNoMutex,
        [](cmsContext, void *) {},
        LockNothing,
        [](cmsContext, void *) {}};
    const cmsContext context = cmsCreateContext(&noMutexes, nullptr);
    if (!context)
        throw std::bad_alloc();
    return context;
}

} // namespace

cmsContext ColorContext()
{
    static const cmsContext context = MakeContext(); // never deleted, because other static objects may own profiles
    return context;
}

ProfilePtr OpenProfile(const void *profile, std::size_t bytes)
{
    const cmsContext context = ColorContext();
    if (bytes > std::numeric_limits<cmsUInt32Number>::max())
        return nullptr;
    const MemoryCheck memory;
    ProfilePtr opened(cmsOpenProfileFromMemTHR(context, profile, static_cast<cmsUInt32Number>(bytes)));
    memory.Require();
    return opened;
}

} // namespace imagefile
