#include "status.h"

#include <climits>
#include <cstdarg>
#include <cstdio>

namespace imagefile {

namespace {

// Plain characters rather than a string: nothing to destroy when a thread ends after the library was unloaded. Room for
// the longest path, which stands ahead of the reason, and for that.
thread_local char lastErrorText[PATH_MAX + 512] = "";

} // namespace

std::string Text(const char *format, ...)
{
    char text[sizeof lastErrorText];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

int Report(const Status &status)
{
    if (!status)
        std::snprintf(lastErrorText, sizeof lastErrorText, "%s", status.Why().c_str());
    return status.Error();
}

} // namespace imagefile

const char *gflLastErrorText()
{
    return imagefile::lastErrorText;
}
