// Error reporting inside the image-file layer: an error number of gfl.h with a readable text.
#pragma once

#include "gfl.h"

#include <string>
#include <utility>

namespace imagefile {

/// Success, or a GflError with a text: what was read, expected and found. The compiler warns if it is ignored.
class [[nodiscard]] Status {
public:
    static Status Ok() { return Status(GFL_NO_ERROR, std::string()); }
    static Status Fail(GflError error, std::string why) { return Status(error, std::move(why)); }

    explicit operator bool() const { return m_error == GFL_NO_ERROR; }
    GflError Error() const { return m_error; }
    const std::string &Why() const { return m_why; }

private:
    Status(GflError error, std::string why) : m_error(error), m_why(std::move(why)) { }

    GflError m_error;
    std::string m_why;
};

/// Formats like printf into a string.
std::string Text(const char *format, ...) __attribute__((format(printf, 1, 2)));

/// Stores a failure's text for this thread's gflLastErrorText and returns the error number. Success keeps the old text.
int Report(const Status &status) noexcept;
/// As above, without a Status. Allocates nothing, so it works even when memory is short.
int Report(GflError error, const char *why) noexcept;

/// Stores a text for gflLastWarningText of this thread, unless there is one already. Allocates nothing.
void Warn(const char *what) noexcept;

} // namespace imagefile
