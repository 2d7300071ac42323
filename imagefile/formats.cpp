#include "formats.h"

#include "exr/exr_codec.h"
#include "hdr/hdr_codec.h"
#include "heif/heif_codec.h"
#include "jp2/jp2_codec.h"
#include "jpeg/jpeg_codec.h"
#include "jxl/jxl_codec.h"
#include "metadata/metadata.h"
#include "png/png_codec.h"
#include "psd/psd_codec.h"
#include "raw/raw_codec.h"
#include "tiff/tiff_codec.h"
#include "webp/webp_codec.h"

#include <cstring>

namespace imagefile {

namespace {

struct Row {
    GFL_FORMAT format; // MIME types: as shared-mime-info names them
    const Codec &(*codec)();
};

// In the order of the format indexes, which are valid only within one process. To add a format, add its row here;
// camera raw comes first because some raw files begin like a TIFF.
constexpr Row kRows[] = {
    {{"raw", "Camera raw",
      ".3fr .arw .bay .cap .cr2 .cr3 .crw .dcr .dcs .dng .erf .fff .iiq .k25 .kdc .mef .mos .mrw .nef .nrw .orf .pef "
      ".ptx .raf .raw .rw2 .rwl .sr2 .srf .srw .x3f",
      "image/x-adobe-dng image/x-canon-cr2 image/x-canon-cr3 image/x-canon-crw image/x-fuji-raf image/x-kodak-dcr "
      "image/x-kodak-k25 image/x-kodak-kdc image/x-minolta-mrw image/x-nikon-nef image/x-nikon-nrw image/x-olympus-orf "
      "image/x-panasonic-rw image/x-panasonic-rw2 image/x-pentax-pef image/x-sigma-x3f image/x-sony-arw "
      "image/x-sony-sr2 image/x-sony-srf",
      false},
     RawCodec},
    {{"tiff", "TIFF", ".tif .tiff", "image/tiff", true}, TiffCodec},
    {{"jpeg", "JPEG", ".jpg .jpeg .jpe .jfif", "image/jpeg", true}, JpegCodec},
    {{"png", "PNG", ".png", "image/png", true}, PngCodec},
    {{"hdri", "Radiance HDR", ".hdr .rgbe", "image/vnd.radiance", true}, HdrCodec},
    {{"psd", "Photoshop", ".psd .psb", "image/vnd.adobe.photoshop", true}, PsdCodec},
    {{"exr", "OpenEXR", ".exr", "image/x-exr", true}, ExrCodec},
    {{"webp", "WebP", ".webp", "image/webp", false}, WebpCodec},
    {{"avif", "AVIF", ".avif", "image/avif", false}, AvifCodec}, // before HEIF, whose brands it shares
    {{"heif", "HEIC, HEIF", ".heic .heif .hif", "image/heif", false}, HeifCodec},
    {{"jxl", "JPEG XL", ".jxl", "image/jxl", false}, JxlCodec},
    {{"jp2", "JPEG 2000", ".jp2 .j2k .j2c .jpc", "image/jp2 image/x-jp2-codestream", false}, Jp2Codec},
};

const Row *RowAt(std::int32_t index)
{
    return index >= 0 && index < static_cast<std::int32_t>(std::size(kRows)) ? &kRows[index] : nullptr;
}

// Returns the names of all formats: "tiff, jpeg" and so on.
std::string KnownFormats()
{
    std::string names;
    for (const Row &row : kRows)
        names += (names.empty() ? "" : ", ") + std::string(row.format.Name);
    return names;
}

} // namespace

const GFL_FORMAT *FormatAt(std::int32_t index)
{
    const Row *row = RowAt(index);
    return row ? &row->format : nullptr;
}

const Codec *CodecAt(std::int32_t index)
{
    const Row *row = RowAt(index);
    return row ? &row->codec() : nullptr;
}

bool HasSuffix(const GFL_FORMAT &format, const std::string &suffix)
{
    const std::size_t length = suffix.size();
    for (const char *at = format.Suffixes; length > 1 && (at = std::strchr(at, '.')) != nullptr; ++at)
        if (std::strncmp(at, suffix.c_str(), length) == 0 && (at[length] == ' ' || at[length] == '\0'))
            return true;
    return false;
}

Status FindCodec(const Source &source, const Codec **codec, std::int32_t *index)
{
    std::uint8_t head[16] = {};
    const std::size_t count = source.ReadAt(0, head, sizeof head);
    if (Status status = source.Check(); !status)
        return status;
    if (count == 0)
        return Status::Fail(GFL_ERROR_FILE_READ, source.Path() + " is empty");
    NameHint name = {LowerCaseSuffix(source.Path()), false};
    for (*index = 0; const Row *row = RowAt(*index); ++*index) {
        *codec = &row->codec();
        name.isOwnSuffix = HasSuffix(row->format, name.suffix);
        if ((*codec)->Probe(head, name) && (*codec)->Recognizes(source, name))
            return Status::Ok();
    }
    return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT,
                        source.Path() + " has an unknown format; known formats: " + KnownFormats());
}

Status ReadMetadata(const Source &source, Metadata *metadata)
{
    const Codec *codec = nullptr;
    std::int32_t index = 0;
    Status status = FindCodec(source, &codec, &index);
    if (status)
        return codec->ReadMetadata(source, metadata);
    return status.Error() == GFL_ERROR_UNKNOWN_FORMAT ? ReadExiv2Metadata(source, metadata) : status;
}

} // namespace imagefile
