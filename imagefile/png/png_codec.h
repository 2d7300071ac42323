// Declarations shared by the PNG codec's source files, and the handling of libpng's errors.
#pragma once

#include "core/codec.h"

#include <csetjmp>
#include <png.h>

namespace imagefile {

Status ReadPngInfo(const Source &source, GFL_FILE_INFORMATION *info);
Status ReadPngPixels(const Source &source, RowSink *rows);
Status WritePng(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink);

/// Context for libpng's callbacks. Each function that calls libpng first passes @c out to setjmp. The jump must not
/// leave the scope of an object with a destructor.
struct PngError {
    std::jmp_buf out;
    GflError error = GFL_ERROR_FILE_READ; // unless a more specific error is set
    char text[256] = "";
};

/// libpng's error function, whose error pointer is a PngError. Stores the text and jumps to PngError::out.
[[noreturn]] void FailPng(png_structp png, png_const_charp text);
/// libpng's warning function: prints nothing.
void IgnorePngWarning(png_structp png, png_const_charp text);

const Codec &PngCodec();

} // namespace imagefile
