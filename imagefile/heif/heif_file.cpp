#include "heif_codec.h"
#include "metadata/metadata.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

/// Returns the ICC profile; empty if there is none, or, with a warning, if it can't be read.
Bytes ProfileOf(const heif_image_handle *picture)
{
    const std::size_t size = heif_image_handle_get_raw_color_profile_size(picture);
    if (size == 0)
        return {};
    Bytes profile(size <= kMaxMetadataBytes ? size : 0);
    if (profile.empty() || heif_image_handle_get_raw_color_profile(picture, profile.data()).code != heif_error_Ok) {
        Warn("damaged metadata is left out: the ICC profile is too large or can't be read");
        return {};
    }
    return profile;
}

} // namespace

Status HeifStatus(const heif_error &error)
{
    if (error.code == heif_error_Ok)
        return Status::Ok();
    const bool isMemory =
        error.code == heif_error_Memory_allocation_error && error.subcode != heif_suberror_Security_limit_exceeded;
    return Status::Fail(isMemory ? GFL_ERROR_NO_MEMORY : GFL_ERROR_FILE_READ, Text("HEIF: %s", error.message));
}

// The callbacks return 0 for success. Reads never report a failure, because an assertion in libheif would then abort
// the program. Missing bytes read as zeros instead, and Source::Check reports the failure.
const heif_reader &HeifFile::Reader()
{
    static const heif_reader reader = {
        1,
        [](void *data) { return static_cast<std::int64_t>(static_cast<Stream *>(data)->at); },
        [](void *buffer, std::size_t size, void *data) {
            auto *stream = static_cast<Stream *>(data);
            const std::size_t count = stream->source->ReadAt(stream->at, buffer, size);
            if (count < size) // the buffer of an empty read may be null
                std::memset(static_cast<char *>(buffer) + count, 0, size - count);
            stream->at += size;
            return 0;
        },
        [](std::int64_t position, void *data) {
            static_cast<Stream *>(data)->at = static_cast<std::uint64_t>(position);
            return position < 0 ? 1 : 0;
        },
        [](std::int64_t size, void *data) {
            return size < 0 || static_cast<std::uint64_t>(size) > static_cast<Stream *>(data)->source->Size()
                ? heif_reader_grow_status_size_beyond_eof
                : heif_reader_grow_status_size_reached;
        },
    };
    return reader;
}

Status HeifFile::Open(const Source &source)
{
    m_stream = {&source, 0};
    m_context.reset(heif_context_alloc());
    if (!m_context)
        return Status::Fail(GFL_ERROR_NO_MEMORY, "HEIF: not enough memory");
    if (Status status = HeifStatus(heif_context_read_from_reader(m_context.get(), &Reader(), &m_stream, nullptr));
        !status)
        return status;
    heif_image_handle *handle = nullptr;
    if (Status status = HeifStatus(heif_context_get_primary_image_handle(m_context.get(), &handle)); !status)
        return status;
    m_handle.reset(handle);
    return CheckSize();
}

Status HeifFile::CheckSize()
{
    const int bits = heif_image_handle_get_luma_bits_per_pixel(m_handle.get());
    if (bits < 1 || bits > 16)
        return Status::Fail(GFL_ERROR_FILE_READ, Text("HEIF: %d bits per channel; 1 to 16 are supported", bits));
    m_properties = ReadHeifProperties(*m_stream.source);
    const bool hasAlpha = heif_image_handle_has_alpha_channel(m_handle.get()) != 0;
    m_form = {bits > 8 ? 16 : 8, hasAlpha ? 4 : m_properties.isGray ? 1 : 3};
    m_width = heif_image_handle_get_width(m_handle.get());
    m_height = heif_image_handle_get_height(m_handle.get());
    if (m_properties.turn.xx == 0) // a quarter turn
        std::swap(m_width, m_height);
    if (Status status = CheckImageSize(m_width, m_height, m_form.channels, m_form.bits); !status)
        return status;
    // The limit also applies to tiles and opacity. Encoders round sides up to multiples of up to 64.
    heif_context_set_maximum_image_size_limit(m_context.get(), std::max(m_width, m_height) + 64);
    const std::int64_t bytes = std::int64_t(m_width) * m_height * m_form.BytesPerPixel();
    return CheckClaim(bytes, bytes, m_stream.source->Size(), kUnboundedRatio);
}

void HeifFile::Describe(GFL_FILE_INFORMATION *info) const
{
    info->Width = m_width;
    info->Height = m_height;
    info->BitsPerComponent = static_cast<std::uint16_t>(m_form.bits);
    info->ComponentsPerPixel = static_cast<std::uint16_t>(m_form.channels);
    info->ColorModel = m_form.channels == 1 ? GFL_CM_GREY : GFL_CM_YCBCR;
}

void HeifFile::TakeBlock(heif_item_id id, Metadata *metadata) const
{
    const bool isExif = std::strcmp(heif_image_handle_get_metadata_type(m_handle.get(), id), "Exif") == 0;
    const char *kind = heif_image_handle_get_metadata_content_type(m_handle.get(), id);
    const bool isXmp = !isExif && kind && std::strcmp(kind, "application/rdf+xml") == 0;
    const std::size_t size = heif_image_handle_get_metadata_size(m_handle.get(), id);
    if ((!isExif && !isXmp) || size == 0)
        return;
    Bytes block(size <= kMaxMetadataBytes ? size : 0);
    if (block.empty() || heif_image_handle_get_metadata(m_handle.get(), id, block.data()).code != heif_error_Ok)
        return Warn("damaged metadata is left out: a block that can't be read");
    if (isXmp)
        metadata->xmp = std::move(block);
    else
        DecodeBoxedExif(block, &metadata->exif);
}

// Stores the ICC profile. Without one, warns if the file has color codes (ITU-T H.273) other than those of sRGB.
void HeifFile::TakeColors(Metadata *metadata) const
{
    metadata->icc = ProfileOf(m_handle.get());
    if (!metadata->icc.empty())
        return;
    heif_color_profile_nclx *found = nullptr;
    const bool isKnown = heif_image_handle_get_nclx_color_profile(m_handle.get(), &found).code == heif_error_Ok;
    const HeifColors colors(found); // may be set even after an error
    if (!found)
        return;
    const int primaries = isKnown ? found->color_primaries : 0, curve = isKnown ? found->transfer_characteristics : 0;
    const bool isSrgb =
        (primaries == heif_color_primaries_ITU_R_BT_709_5 || primaries == heif_color_primaries_unspecified)
        && (curve == heif_transfer_characteristic_ITU_R_BT_709_5 || curve == heif_transfer_characteristic_unspecified
            || curve == heif_transfer_characteristic_ITU_R_BT_601_6
            || curve == heif_transfer_characteristic_IEC_61966_2_1);
    if (!isSrgb)
        Warn(Text("colors are treated as sRGB, but the file has no profile and gives primaries %d and tone curve %d of "
                  "ITU-T H.273 (0: not defined there)",
                  primaries, curve)
                 .c_str());
}

void HeifFile::ReadMetadata(Metadata *metadata) const
{
    const int count = heif_image_handle_get_number_of_metadata_blocks(m_handle.get(), nullptr);
    std::vector<heif_item_id> ids(static_cast<std::size_t>(std::max(0, count)));
    heif_image_handle_get_list_of_metadata_block_IDs(m_handle.get(), nullptr, ids.data(), count);
    for (const heif_item_id id : ids)
        TakeBlock(id, metadata);
    TakeColors(metadata);
    const std::uint16_t orientation = m_properties.turn.Orientation();
    if (!metadata->exif.empty() || orientation != 1)
        metadata->exif["Exif.Image.Orientation"] = orientation;
}

} // namespace imagefile
