#include "core/iso_boxes.h"
#include "jxl_codec.h"
#include "metadata/metadata.h"

#include <brotli/decode.h>
#include <cstring>
#include <new>

namespace imagefile {

namespace {

// Decompresses the contents of a "brob" box; empty if they are damaged or exceed the limit for metadata blocks.
Bytes DecompressBrotli(const std::uint8_t *data, std::size_t size)
{
    Bytes out;
    const std::unique_ptr<BrotliDecoderState, decltype(&BrotliDecoderDestroyInstance)> state(
        BrotliDecoderCreateInstance(nullptr, nullptr, nullptr), BrotliDecoderDestroyInstance);
    if (!state)
        throw std::bad_alloc();
    std::uint8_t piece[16384];
    BrotliDecoderResult result = BROTLI_DECODER_RESULT_NEEDS_MORE_OUTPUT;
    while (result == BROTLI_DECODER_RESULT_NEEDS_MORE_OUTPUT && out.size() < kMaxMetadataBytes) {
        std::size_t room = sizeof piece;
        std::uint8_t *next = piece;
        result = BrotliDecoderDecompressStream(state.get(), &size, &data, &room, &next, nullptr);
        out.insert(out.end(), piece, next);
    }
    return result == BROTLI_DECODER_RESULT_SUCCESS ? out : Bytes();
}

// Returns the contents of the first box with the given name, plain or compressed (ISO/IEC 18181-2, 9.7).
Bytes BoxContents(const Source &source, const std::vector<IsoBox> &boxes, const char *name)
{
    constexpr std::size_t kNameBytes = 4;
    for (const IsoBox &box : boxes) {
        char packedName[kNameBytes + 1] = "";
        const bool isPacked = box.Is("brob") && source.ReadAt(box.begin, packedName, kNameBytes) == kNameBytes;
        if (!(isPacked ? std::strcmp(packedName, name) == 0 : box.Is(name)))
            continue;
        Bytes block = box.isComplete ? ReadMetadataBlock(source, box.begin, box.end - box.begin) : Bytes();
        if (isPacked && block.size() > kNameBytes)
            block = DecompressBrotli(block.data() + kNameBytes, block.size() - kNameBytes);
        if (block.empty())
            Warn("damaged metadata is left out: a box is empty, damaged or incomplete");
        return block;
    }
    return Bytes();
}

void ReadBoxes(const Source &source, Metadata *metadata)
{
    const std::vector<IsoBox> boxes = IsoBoxesIn(source, 0, source.Size());
    metadata->xmp = BoxContents(source, boxes, "xml ");
    DecodeBoxedExif(BoxContents(source, boxes, "Exif"), &metadata->exif);
}

bool IsSrgb(const JxlColorEncoding &colors)
{
    return colors.white_point == JXL_WHITE_POINT_D65 && colors.transfer_function == JXL_TRANSFER_FUNCTION_SRGB
        && (colors.color_space == JXL_COLOR_SPACE_GRAY || colors.primaries == JXL_PRIMARIES_SRGB);
}

} // namespace

// Requests sRGB for lossy pictures with an ICC profile, for both metadata and pixels: libjxl can't convert the format's
// internal color space to that of an ICC profile, and would choose linear sRGB by default.
void JxlFile::ChooseColors()
{
    JxlColorEncoding colors;
    const bool isNamed =
        JxlDecoderGetColorAsEncodedProfile(m_decoder.get(), nullptr, JXL_COLOR_PROFILE_TARGET_ORIGINAL, &colors)
        == JXL_DEC_SUCCESS;
    if (m_info.uses_original_profile || isNamed)
        return;
    colors = {};
    colors.color_space = m_info.num_color_channels == 1 ? JXL_COLOR_SPACE_GRAY : JXL_COLOR_SPACE_RGB;
    colors.white_point = JXL_WHITE_POINT_D65;
    colors.primaries = JXL_PRIMARIES_SRGB;
    colors.transfer_function = JXL_TRANSFER_FUNCTION_SRGB;
    colors.rendering_intent = JXL_RENDERING_INTENT_RELATIVE;
    JxlDecoderSetPreferredColorProfile(m_decoder.get(), &colors);
}

// Sets the ICC profile of the decoded pixels: the file's, or one that libjxl makes; none for sRGB.
void JxlFile::TakeColors(Metadata *metadata) const
{
    constexpr JxlColorProfileTarget kPixels = JXL_COLOR_PROFILE_TARGET_DATA;
    JxlColorEncoding colors;
    if (JxlDecoderGetColorAsEncodedProfile(m_decoder.get(), nullptr, kPixels, &colors) == JXL_DEC_SUCCESS
        && IsSrgb(colors))
        return;
    std::size_t size = 0;
    const bool hasSize = JxlDecoderGetICCProfileSize(m_decoder.get(), nullptr, kPixels, &size) == JXL_DEC_SUCCESS;
    Bytes profile(hasSize && size <= kMaxMetadataBytes ? size : 0);
    if (profile.empty()
        || JxlDecoderGetColorAsICCProfile(m_decoder.get(), nullptr, kPixels, profile.data(), size) != JXL_DEC_SUCCESS)
        return Warn("colors are treated as sRGB, but the file specifies others, for which libjxl can't make a profile");
    metadata->icc = std::move(profile);
}

void JxlFile::ReadMetadata(Metadata *metadata)
{
    if (Next() == JXL_DEC_COLOR_ENCODING) {
        ChooseColors();
        TakeColors(metadata);
    }
    if (m_info.have_container)
        ReadBoxes(*m_source, metadata);
    if (!metadata->exif.empty() || m_info.orientation != JXL_ORIENT_IDENTITY)
        metadata->exif["Exif.Image.Orientation"] = static_cast<std::uint16_t>(m_info.orientation);
}

} // namespace imagefile
