// The file that a fitted correction writes: its format, and what the format leaves open.
#pragma once

#include "KImage.h"

#include <functional>

/// Options of a record, as the attributes "Format", "Quality" and "Compression".
struct ResultFile {
    enum class Format { Tiff, Jpeg, Png, Exr };
    enum class Compression { Deflate, None, Lzw, Zstd };

    Format format = Format::Tiff;
    int quality = 92;                               // JPEG, 1 to 100
    Compression compression = Compression::Deflate; // TIFF

    /// Returns the suffix of the file's name: "tiff", "jpg", "png" or "exr".
    QString Suffix() const;
    QString MimeType() const;
    /// @param sourceBits  of the picture: 8, 16 or 32.
    KImage::FileForm Form(int sourceBits) const;
    /// Returns the bits of the rows to write for a picture of @p sourceBits. OpenEXR gets floats, which become half for
    /// pictures of 8 bits.
    int Bits(int sourceBits) const;
    bool HasAlpha() const { return format != Format::Jpeg; }
    bool HoldsLight() const { return format == Format::Exr; }
    bool HoldsFloats() const { return format == Format::Tiff || format == Format::Exr; }
};

/// Reads options from the texts that @p textOf returns. A missing or invalid one has its default.
ResultFile ReadResultFile(const std::function<QString(const QString &name)> &textOf);
/// Calls @p write for each option that isn't the default.
void WriteResultFile(const ResultFile &file,
                     const std::function<void(const QString &name, const QString &text)> &write);
