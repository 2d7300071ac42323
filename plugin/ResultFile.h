// Format and options of the file that a fitted correction writes.
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
    /// Returns how to write a picture with @p sourceBits (8, 16 or 32) bits per channel.
    KImage::FileForm Form(int sourceBits) const;
    /// Returns the bits per channel to write for a picture with @p sourceBits bits per channel. OpenEXR gets floats,
    /// stored as half for 8-bit pictures.
    int Bits(int sourceBits) const;
    bool HasAlpha() const { return format != Format::Jpeg; }
    /// Returns whether the values in the file are linear light.
    bool HoldsLight() const { return format == Format::Exr; }
    bool HoldsFloats() const { return format == Format::Tiff || format == Format::Exr; }
};

/// Reads options from the texts that @p textOf returns. Missing or invalid options get their defaults.
ResultFile ReadResultFile(const std::function<QString(const QString &name)> &textOf);
/// Calls @p write for each option whose value isn't the default.
void WriteResultFile(const ResultFile &file,
                     const std::function<void(const QString &name, const QString &text)> &write);
