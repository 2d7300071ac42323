// The file that a fitted correction writes: its format and format options.
#pragma once

#include "KImage.h"

#include <functional>

/// A record's options "Format", "Quality" and "Compression".
struct ResultFile {
    enum class Format { Tiff, Jpeg, Png, Exr };
    enum class Compression { Deflate, None, Lzw, Zstd };

    Format format = Format::Tiff;
    int quality = 92;                               // JPEG, 1 to 100
    Compression compression = Compression::Deflate; // TIFF

    /// Returns the file suffix: "tiff", "jpg", "png" or "exr".
    QString Suffix() const;
    QString MimeType() const;
    /// @param sourceBits  of the picture: 8, 16 or 32.
    KImage::FileForm Form(int sourceBits) const;
    /// Returns the bits per channel to write for a picture of @p sourceBits. OpenEXR gets floats, stored as half for
    /// 8-bit pictures.
    int Bits(int sourceBits) const;
    bool HasAlpha() const { return format != Format::Jpeg; }
    bool HoldsLight() const { return format == Format::Exr; }
    bool HoldsFloats() const { return format == Format::Tiff || format == Format::Exr; }
};

/// Reads options from the texts that @p textOf returns. Missing and invalid ones get their defaults.
ResultFile ReadResultFile(const std::function<QString(const QString &name)> &textOf);
/// Calls @p write for each option that isn't the default.
void WriteResultFile(const ResultFile &file,
                     const std::function<void(const QString &name, const QString &text)> &write);
