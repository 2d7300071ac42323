#include "heif_codec.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

/// Returns the delivered value for each stored value of @p bits bits. In limited range, black is 16 and white is 235 at
/// 8 bits (ITU-T H.273, 8.3); libheif expands that range in color pictures, but not in gray ones.
std::vector<std::uint16_t> ScaleTable(int bits, int deliveredBits, bool isLimited)
{
    const double unit = bits >= 8 ? double(1 << (bits - 8)) : 1.0;
    const double black = isLimited ? 16.0 * unit : 0.0, white = isLimited ? 235.0 * unit : (1 << bits) - 1.0;
    const double greatest = deliveredBits == 16 ? 65535.0 : 255.0;
    std::vector<std::uint16_t> table(std::size_t(1) << bits);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const double share = (static_cast<double>(i) - black) / (white - black);
        table[i] = static_cast<std::uint16_t>(std::clamp(share, 0.0, 1.0) * greatest + 0.5);
    }
    return table;
}

/// Gathers a row of stored pixels from the displayed ones, which are @p step bytes apart.
void Gather(const std::uint8_t *src, std::ptrdiff_t step, std::uint8_t *row, int width, int pixelBytes)
{
    if (step == pixelBytes)
        std::memcpy(row, src, static_cast<std::size_t>(width) * static_cast<std::size_t>(pixelBytes));
    else
        for (int x = 0; x < width; ++x)
            std::memcpy(row + std::ptrdiff_t(x) * pixelBytes, src + x * step, static_cast<std::size_t>(pixelBytes));
}

/// Scales a row of stored values. Premultiplied colors are divided by the stored opacity instead.
template <class T>
void FinishRow(const std::vector<std::uint16_t> &table, bool isPremultiplied, T *row, std::size_t samples)
{
    constexpr std::uint32_t kFull = FullScale<T>();
    for (std::size_t i = 0; i < samples; ++i) {
        const std::uint32_t value = row[i], opacity = isPremultiplied && i % 4 != 3 ? row[i | 3] : 0;
        row[i] = static_cast<T>(opacity > 0 ? std::min(kFull, (value * kFull + opacity / 2) / opacity)
                                            : table[std::min<std::size_t>(value, table.size() - 1)]);
    }
}

bool HasLimitedRange(const heif_image &image)
{
    heif_color_profile_nclx *found = nullptr;
    const bool isKnown = heif_image_get_nclx_color_profile(&image, &found).code == heif_error_Ok;
    const HeifColors colors(found); // may be set even after an error
    return isKnown && found && found->full_range_flag == 0;
}

// Returns whether libheif ignores the picture's opacity: it does so if opacity and colors differ in size after
// rotation, and some writers (avifenc 0.11) rotate only the colors.
bool LosesOpacity(const heif_image_handle *picture)
{
    if (heif_image_handle_has_alpha_channel(picture))
        return false;
    heif_item_id ids[4];
    const int count = heif_image_handle_get_list_of_auxiliary_image_IDs(picture, 0, ids, std::size(ids));
    for (int i = 0; i < count; ++i) {
        heif_image_handle *found = nullptr;
        if (heif_image_handle_get_auxiliary_image_handle(picture, ids[i], &found).code != heif_error_Ok)
            continue;
        const HeifHandle auxiliary(found);
        const char *type = nullptr;
        const bool isKnown = heif_image_handle_get_auxiliary_type(found, &type).code == heif_error_Ok && type;
        const bool isOpacity = isKnown
            && (std::strcmp(type, "urn:mpeg:mpegB:cicp:systems:auxiliary:alpha") == 0
                || std::strcmp(type, "urn:mpeg:hevc:2015:auxid:1") == 0);
        if (isKnown)
            heif_image_handle_free_auxiliary_types(found, &type);
        if (isOpacity)
            return true;
    }
    return false;
}

} // namespace

Status HeifFile::Decode(HeifImage *image)
{
    const std::unique_ptr<heif_decoding_options, HeifDeleter<heif_decoding_options_free>> options(
        heif_decoding_options_alloc());
    if (!options)
        return Status::Fail(GFL_ERROR_NO_MEMORY, "HEIF: not enough memory");
    options->ignore_transformations = !LetsLibheifTransform();
    options->strict_decoding = 1;
    const bool isGray = m_form.channels == 1, hasAlpha = m_form.channels == 4;
    const heif_chroma small = hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
    const heif_chroma large = hasAlpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
    heif_image *decoded = nullptr;
    Status status = HeifStatus(heif_decode_image(m_handle.get(), &decoded,
                                                 isGray ? heif_colorspace_monochrome : heif_colorspace_RGB,
                                                 isGray                  ? heif_chroma_monochrome
                                                     : m_form.bits == 16 ? large
                                                                         : small,
                                                 options.get()));
    image->reset(decoded);
    return status;
}

Status HeifFile::PassOn(const heif_image &image, RowSink *rows) const
{
    const bool isGray = m_form.channels == 1;
    const heif_channel channel = isGray ? heif_channel_Y : heif_channel_interleaved;
    const int bits = heif_image_get_bits_per_pixel_range(&image, channel);
    const int width = heif_image_get_width(&image, channel), height = heif_image_get_height(&image, channel);
    int stride = 0;
    const std::uint8_t *plane = heif_image_get_plane_readonly(&image, channel, &stride);
    const HeifTurn turn = AppliedTurn();
    const int wantedWidth = turn.xx != 0 ? m_width : m_height, wantedHeight = turn.xx != 0 ? m_height : m_width;
    if (!plane || bits < 1 || bits > m_form.bits || (m_form.bits == 16 && bits <= 8) || width != wantedWidth
        || height != wantedHeight)
        return Status::Fail(GFL_ERROR_FILE_READ,
                            Text("HEIF: the data has %d x %d pixels of %d bits; the header claims %d x %d, %d bits",
                                 width, height, bits, wantedWidth, wantedHeight, m_form.bits));
    const int pixelBytes = m_form.BytesPerPixel();
    const std::ptrdiff_t stepX = turn.xx * pixelBytes + std::ptrdiff_t(turn.yx) * stride;
    const std::ptrdiff_t stepY = turn.xy * pixelBytes + std::ptrdiff_t(turn.yy) * stride;
    const std::uint8_t *first = plane + (turn.xx + turn.xy < 0 ? std::ptrdiff_t(width - 1) * pixelBytes : 0)
        + (turn.yx + turn.yy < 0 ? std::ptrdiff_t(height - 1) * stride : 0);
    const std::vector<std::uint16_t> table = ScaleTable(bits, m_form.bits, isGray && HasLimitedRange(image));
    const bool isPremultiplied = m_form.channels == 4 && heif_image_handle_is_premultiplied_alpha(m_handle.get()) != 0;
    const auto samples = static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_form.channels);
    for (int y = 0; y < m_height; ++y) {
        std::uint8_t *row = rows->Row(y);
        auto *wide = reinterpret_cast<std::uint16_t *>(row);
        Gather(first + y * stepY, stepX, row, m_width, pixelBytes);
        m_form.bits == 16 ? FinishRow(table, isPremultiplied, wide, samples)
                          : FinishRow(table, isPremultiplied, row, samples);
        rows->Done(y);
    }
    return Status::Ok();
}

Status HeifFile::ReadPixels(RowSink *rows)
{
    if (LosesOpacity(m_handle.get()))
        Warn("opacity is left out: it isn't rotated like the colors, which libheif doesn't support");
    HeifImage image;
    if (Status status = Decode(&image); !status)
        return status;
    if (Status status = rows->Start(m_width, m_height, m_form); !status)
        return status;
    return PassOn(*image, rows);
}

} // namespace imagefile
