#include "status.h"

#include "english_thread.h"

#include <climits>
#include <cstdarg>
#include <cstdio>

namespace imagefile {

namespace {

// A character array rather than a string, because a thread may end after the library was unloaded, when no destructor
// can run. Large enough for the longest path plus the reason after it.
thread_local char lastErrorText[PATH_MAX + 512] = "";
thread_local char lastWarningText[512] = "";

} // namespace

std::string Text(const char *format, ...)
{
    char text[sizeof lastErrorText];
    va_list arguments;
    va_start(arguments, format);
    const EnglishThread english;
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

int Report(const Status &status) noexcept
{
    return status ? GFL_NO_ERROR : Report(status.Error(), status.Why().c_str());
}

int Report(GflError error, const char *why) noexcept
{
    std::snprintf(lastErrorText, sizeof lastErrorText, "%s", why);
    return error;
}

void Warn(const char *what) noexcept
{
    if (lastWarningText[0] == '\0')
        std::snprintf(lastWarningText, sizeof lastWarningText, "%s", what);
}

} // namespace imagefile

const char *gflLastErrorText()
{
    return imagefile::lastErrorText;
}

const char *gflLastWarningText()
{
    return imagefile::lastWarningText;
}

void gflClearWarningText()
{
    imagefile::lastWarningText[0] = '\0';
}
