// What reading and writing of PNG share: the way out of libpng's errors.
#pragma once

#include "core/codec.h"

#include <csetjmp>
#include <png.h>

namespace imagefile {

Status ReadPngInfo(const Source &source, GFL_FILE_INFORMATION *info);
Status ReadPngPixels(const Source &source, RowSink *rows);
Status WritePng(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink);

/// What libpng's callbacks are given. Each function that calls libpng sets @c out on its own, and has nothing to
/// destroy in the part that a jump leaves.
struct PngError {
    std::jmp_buf out;
    GflError error = GFL_ERROR_FILE_READ; // unless the cause is known better
    char text[256] = "";
};

/// libpng's error function; the error pointer is a PngError. Keeps the text, and jumps.
[[noreturn]] void FailPng(png_structp png, png_const_charp text);
/// libpng's warning function: prints nothing.
void IgnorePngWarning(png_structp png, png_const_charp text);

const Codec &PngCodec();

} // namespace imagefile
