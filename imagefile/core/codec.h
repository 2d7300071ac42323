// The one interface behind which a file format stands.
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

/// Where the rows of a picture come from that is made while it is written.
struct RowMaker {
    GFL_ROWS_CALLBACK callback;
    void *userData;

    /// As the callback.
    Status Make(int firstRow, int rows, std::uint8_t *data, std::uint32_t bytesPerLine) const;
};

/// What a save is asked for. @c metadata is null when there is none; its ICC profile is empty unless it is to be
/// written. With @c rows the bitmap has no pixels: they are made, from the top down.
struct SaveOptions {
    std::uint16_t compression = GFL_COMPRESSION_DEFAULT;
    std::uint16_t quality = 0;
    const Metadata *metadata = nullptr;
    const RowMaker *rows = nullptr;
    int threads = 1;
    bool lzwAllowed = false;
    std::uint64_t bigTiffFromBytes = kBigTiffFromBytes;
};

/// What a file's name says of its format.
struct NameHint {
    std::string suffix; // in lower case with its dot; empty without one and for memory
    bool isOwnSuffix;   // of the format that is asked
};

/// A file format. Stateless: one object serves all threads. Exceptions other than std::bad_alloc and longjmps of the
/// format's library end inside.
class Codec {
public:
    virtual ~Codec() = default;

    /// Whether a file that begins with @p head (16 bytes, zeroes behind the end of a shorter file) is of this format.
    virtual bool Probe(const std::uint8_t *head, const NameHint &name) const = 0;
    /// A closer look at a file that Probe takes, for formats that begin as another does.
    virtual bool Recognises(const Source &source, const NameHint &name) const;

    /// Fills all of @p info but FormatName and FormatIndex. Never decodes pixels, but finds every reason to refuse the
    /// file that its headers show.
    virtual Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const = 0;
    /// Hands all rows to @p rows from the top down. A file that ends early or is damaged is GFL_ERROR_FILE_READ.
    virtual Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &params, RowSink *rows) const = 0;
    /// Hands over the cheapest version that is at least as large as the picture fitted into @p box, or the picture.
    virtual Status ReadThumbnail(const Source &source, const GFL_LOAD_PARAMS &params, const Box &box,
                                 RowSink *rows) const;

    /// Adds the metadata of a file. Damaged metadata is left out with a warning (gflLastWarningText); only a source
    /// that can't be read is a failure. Throws std::bad_alloc only.
    virtual Status ReadMetadata(const Source &source, Metadata *metadata) const = 0;

    /// Whether Write takes rows that are made meanwhile.
    virtual bool WritesMadeRows() const { return false; }
    /// @p bitmap is valid: GFL_GREY, GFL_RGB or GFL_RGBA at 8, 16 or 32 bits.
    virtual Status Write(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink) const = 0;
};

inline bool Codec::Recognises(const Source &, const NameHint &) const
{
    return true;
}

inline Status Codec::ReadThumbnail(const Source &source, const GFL_LOAD_PARAMS &params, const Box &,
                                   RowSink *rows) const
{
    return ReadPixels(source, params, rows);
}

/// ".jpg" of "a/B.JPG"; empty without one.
std::string LowerCaseSuffix(const std::string &path);

} // namespace imagefile
