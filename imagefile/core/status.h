// How the inside of the image-file layer reports: an error number of gfl.h with a text that people understand.
#pragma once

#include "gfl.h"

#include <string>
#include <utility>

namespace imagefile {

/// Success, or a GflError and what was read, expected, found. The compiler insists that it is looked at.
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

/// printf into a string.
std::string Text(const char *format, ...) __attribute__((format(printf, 1, 2)));

/// Keeps the text of a failure for gflLastErrorText of this thread, and returns its number. Success keeps the old text.
int Report(const Status &status) noexcept;
/// The same without a Status. Allocates nothing, so that it also works when memory is short.
int Report(GflError error, const char *why) noexcept;

/// Keeps a text for gflLastWarningText of this thread, unless there is one already. Allocates nothing.
void Warn(const char *what) noexcept;

} // namespace imagefile
