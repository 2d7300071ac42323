// Declarations shared by the JPEG XL codec's source files.
#pragma once

#include "core/bytes.h"
#include "core/codec.h"
#include "jxl_functions.h"

#include <memory>

namespace imagefile {

struct JxlDecoderDeleter {
    void operator()(JxlDecoder *decoder) const { JxlDecoderDestroy(decoder); }
};

/// Decoder for one file. Pixels are not rotated: the header's orientation is reported as the EXIF orientation and
/// overrides the one in the file's EXIF, which is only informative according to ISO/IEC 18181-2.
class JxlFile {
public:
    JxlFile() = default;
    JxlFile(const JxlFile &) = delete;
    JxlFile &operator=(const JxlFile &) = delete;

    /// Reads the header and checks sizes. @p source must outlive the object.
    Status Open(const Source &source);
    void Describe(GFL_FILE_INFORMATION *info) const;
    /// Decodes the first frame into @p rows.
    Status ReadPixels(RowSink *rows);
    /// Reads the metadata; from a truncated file, whatever it still contains.
    void ReadMetadata(Metadata *metadata);

private:
    JxlDecoderStatus Next();
    bool Refill();
    Status TakeInfo();
    Status Failure(JxlDecoderStatus status) const;
    JxlPixelFormat Format() const;
    void ChooseColors();
    void TakeColors(Metadata *metadata) const;

    const Source *m_source = nullptr;
    std::uint64_t m_at = 0; // file offset after m_piece
    Bytes m_piece;          // input of the decoder
    std::unique_ptr<JxlDecoder, JxlDecoderDeleter> m_decoder;
    JxlBasicInfo m_info = {};
    PixelForm m_form;
};

const Codec &JxlCodec();

} // namespace imagefile
