/// Turns errors of libjpeg into exceptions; by default they end the program.
#pragma once

#include <cstdio>
#include <stdexcept>

#include <jpeglib.h>

namespace Samples {

/// Returns @p errors for jpeg_common_struct::err, set up to throw std::runtime_error.
inline jpeg_error_mgr *ThrowJpegErrors(jpeg_error_mgr *errors)
{
    jpeg_std_error(errors)->error_exit = [](j_common_ptr info) {
        char text[JMSG_LENGTH_MAX];
        info->err->format_message(info, text);
        throw std::runtime_error(text);
    };
    return errors;
}

} // namespace Samples
