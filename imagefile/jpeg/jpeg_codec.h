// Declarations shared by the JPEG codec's source files, and the handling of libjpeg's errors.
#pragma once

#include "core/codec.h"

#include <csetjmp>
#include <cstdio> // before jpeglib.h, which needs FILE
#include <jpeglib.h>

namespace imagefile {

Status ReadJpegInfo(const Source &source, GFL_FILE_INFORMATION *info);

/// Reads pixels. If @p box isn't null, decodes the smallest scaled version that is at least as large as the picture
/// fitted into it.
Status ReadJpegPixels(const Source &source, const Box *box, RowSink *rows);

/// Reads the thumbnail in a JPEG's EXIF; fails if there is none, if it is too small for @p box, or if its proportions
/// differ from the picture's (CanReplace).
Status ReadExifThumbnail(const Source &source, const Box &box, RowSink *rows);

Status WriteJpeg(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink);

/// libjpeg's error record, with the jump target. Each function that calls libjpeg sets @c out itself. No object with a
/// destructor may be alive in a scope that a jump leaves.
struct JpegError {
    jpeg_error_mgr base; // must be first: libjpeg points to it
    std::jmp_buf out;
    int code = 0;
    char text[JMSG_LENGTH_MAX] = "";
};

/// Fills the record so that errors jump to @c out and nothing is printed.
jpeg_error_mgr *StartJpegError(JpegError *error);

/// libjpeg's error_exit: stores code and text, and jumps.
[[noreturn]] void FailJpeg(j_common_ptr cinfo);

const Codec &JpegCodec();

} // namespace imagefile
