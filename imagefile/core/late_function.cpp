#include "late_function.h"

#include <dlfcn.h>
#include <mutex>
#include <stdexcept>
#include <string>

namespace imagefile {

namespace {

/// Returns the path of a file next to this library. For a name without a path, a sanitizer's dlopen would search
/// other folders.
std::string PathOfNeighbor(const char *file)
{
    Dl_info self = {};
    dladdr(reinterpret_cast<const void *>(&PathOfNeighbor), &self);
    const std::string path = self.dli_fname ? self.dli_fname : "";
    return path.substr(0, path.rfind('/') + 1) + file;
}

/// Loads the module that depends on the libraries. It is never unloaded.
void *LoadLibraries()
{
    static std::mutex mutex;
    static void *module = nullptr;
    const std::lock_guard<std::mutex> lock(mutex);
    if (!module)
        module = dlopen(PathOfNeighbor(VITRELUX_LATE_MODULE).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module)
        throw std::runtime_error(std::string("libheif and libjxl can't be loaded: ") + dlerror());
    return module;
}

} // namespace

void *FindLate(const char *name)
{
    void *address = dlsym(RTLD_DEFAULT, name); // found if the program is linked with the library
    if (!address)
        address = dlsym(LoadLibraries(), name);
    if (!address)
        throw std::runtime_error(std::string("there is no function ") + name);
    return address;
}

} // namespace imagefile
