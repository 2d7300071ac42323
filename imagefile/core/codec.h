// The interface that every file format implements.
#pragma once

#include "image_limits.h"
#include "pixel_form.h"
#include "row_sink.h"
#include "sink.h"
#include "source.h"
#include "status.h"

#include <string>

namespace imagefile {

struct Metadata;

/// Source of the rows of a picture that is generated while it is written.
struct RowMaker {
    GFL_ROWS_CALLBACK callback;
    void *userData;

    Status Make(int firstRow, int rows, std::uint8_t *data, std::uint32_t bytesPerLine) const;
};

/// Parameters of a save. @c metadata is null if there is none; its ICC profile is empty unless it should be written.
/// If @c rows is set, the bitmap has no pixels: the rows are generated, as documented for gflSaveRowsUTF8.
struct SaveOptions {
    std::uint16_t compression = GFL_COMPRESSION_DEFAULT;
    std::uint16_t quality = 0;
    const Metadata *metadata = nullptr;
    const RowMaker *rows = nullptr;
    int threads = 1;
    bool lzwAllowed = false;
    bool thumbnail = false;  // GFL_SAVE_THUMBNAIL
    bool halfFloats = false; // GFL_SAVE_HALF_FLOATS
    bool fast = false;       // GFL_SAVE_FAST
    std::uint64_t bigTiffFromBytes = kBigTiffFromBytes;
};

/// The suffix of a file's name, as a hint at the file's format.
struct NameHint {
    std::string suffix; // lowercase, with the dot; empty for memory or if there is none
    bool isOwnSuffix;   // `suffix` belongs to the format being tested
};

/// A file format. Stateless: one object serves all threads. No longjmp by the format's library leaves these functions,
/// but exceptions may: callers catch them with Guarded.
class Codec {
public:
    virtual ~Codec() = default;

    /// Returns whether a file that begins with @p head (16 bytes; zeros follow the end of a shorter file) is
    /// of this format.
    virtual bool Probe(const std::uint8_t *head, const NameHint &name) const = 0;
    /// Returns whether a file that Probe accepted is of this format, for formats that share their first bytes with
    /// others.
    virtual bool Recognizes(const Source &source, const NameHint &name) const;

    /// Fills all of @p info except FormatName and FormatIndex. Never decodes pixels, but rejects the file if its
    /// headers reveal any reason to.
    virtual Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const = 0;
    /// Passes all rows to @p rows from the top down. A file that ends early or is damaged gives GFL_ERROR_FILE_READ.
    virtual Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &params, RowSink *rows) const = 0;
    /// Returns whether ReadPixels passes on final rows long before it returns, and gives no warnings unless the file is
    /// CMYK.
    virtual bool StreamsRows() const { return false; }
    /// Delivers the version of the picture that is cheapest to read and at least as large as the picture fitted into
    /// @p box, or the whole picture if there is no such version.
    virtual Status ReadThumbnail(const Source &source, const GFL_LOAD_PARAMS &params, const Box &box,
                                 RowSink *rows) const;

    /// Adds the metadata of a file. Damaged metadata is left out with a warning (gflLastWarningText); only a source
    /// that can't be read is a failure.
    virtual Status ReadMetadata(const Source &source, Metadata *metadata) const = 0;

    /// Returns whether Write accepts rows that are generated during the write.
    virtual bool WritesGeneratedRows() const { return false; }
    /// Writes a valid bitmap: GFL_GREY, GFL_RGB or GFL_RGBA at 8, 16 or 32 bits.
    virtual Status Write(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink) const = 0;
};

inline bool Codec::Recognizes(const Source &, const NameHint &) const
{
    return true;
}

inline Status Codec::ReadThumbnail(const Source &source, const GFL_LOAD_PARAMS &params, const Box &,
                                   RowSink *rows) const
{
    return ReadPixels(source, params, rows);
}

/// Returns a path's suffix in lowercase: ".jpg" for "a/B.JPG"; empty if there is none.
std::string LowerCaseSuffix(const std::string &path);

} // namespace imagefile
