#include "core/image_limits.h"
#include "png_codec.h"

#include <algorithm>

namespace imagefile {

namespace {

/// Decoder for one picture. Objects with destructors are members, so that a longjmp skips no destructor.
class Decoder {
public:
    explicit Decoder(const Source &source) : m_source(source) { }
    ~Decoder() { png_destroy_read_struct(&m_png, &m_info, nullptr); }
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;

    Status Open();
    Status ReadRows(RowSink *rows);
    void Describe(GFL_FILE_INFORMATION *info) const;

private:
    static void ReadBytes(png_structp png, png_bytep data, std::size_t length);
    bool TryReadHeader();
    bool TryStart();
    bool TryRows(RowSink *rows);
    bool TryPasses(std::uint8_t *const *rows);
    Status ReadPasses(RowSink *rows);
    PixelForm Form() const;
    bool HasAlpha() const;
    Status Failure() const;

    const Source &m_source;
    std::uint64_t m_at = 0;
    PngError m_error;
    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
    png_uint_32 m_width = 0, m_height = 0;
    int m_bits = 0; // as stored
    int m_color = 0;
    int m_interlace = PNG_INTERLACE_NONE;
};

void Decoder::ReadBytes(png_structp png, png_bytep data, std::size_t length)
{
    auto *decoder = static_cast<Decoder *>(png_get_io_ptr(png));
    if (decoder->m_source.ReadAt(decoder->m_at, data, length) < length)
        png_error(png, "the file ends early");
    decoder->m_at += length;
}

bool Decoder::TryReadHeader()
{
    if (setjmp(m_error.out) != 0)
        return false;
    m_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &m_error, FailPng, IgnorePngWarning);
    m_info = m_png ? png_create_info_struct(m_png) : nullptr;
    if (!m_info) {
        m_error.error = GFL_ERROR_NO_MEMORY;
        return false;
    }
    png_set_read_fn(m_png, this, ReadBytes);
    png_set_user_limits(m_png, kMaxSidePixels, kMaxSidePixels);
    png_set_chunk_malloc_max(m_png, kMaxPngChunkBytes);
    // ReadPngMetadata reads the metadata. Skipping it here avoids texts that unpack to gigabytes and profiles that
    // libpng rejects.
    png_set_keep_unknown_chunks(m_png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_set_keep_unknown_chunks(m_png, PNG_HANDLE_CHUNK_AS_DEFAULT, reinterpret_cast<png_const_bytep>("pHYs"), 1);
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION // a fuzzer can't guess checksums
    png_set_crc_action(m_png, PNG_CRC_QUIET_USE, PNG_CRC_QUIET_USE);
    png_set_option(m_png, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
#endif
    png_read_info(m_png, m_info);
    png_get_IHDR(m_png, m_info, &m_width, &m_height, &m_bits, &m_color, &m_interlace, nullptr, nullptr);
    return true;
}

Status Decoder::Failure() const
{
    return Status::Fail(m_error.error, Text("PNG: %s", m_error.text));
}

bool Decoder::HasAlpha() const
{
    return (m_color & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(m_png, m_info, PNG_INFO_tRNS) != 0;
}

// Returns the delivered form. Palettes and 1-bit gray become color, as in the other formats, and so does gray with
// alpha, for which there is no form.
PixelForm Decoder::Form() const
{
    const bool isGray = m_color == PNG_COLOR_TYPE_GRAY && m_bits > 1;
    return {m_bits == 16 ? 16 : 8, HasAlpha() ? 4 : isGray ? 1 : 3};
}

Status Decoder::Open()
{
    if (!TryReadHeader())
        return Failure();
    const PixelForm form = Form();
    if (Status status = CheckImageSize(m_width, m_height, form.channels, form.bits); !status)
        return status;
    const std::int64_t stored = static_cast<std::int64_t>(png_get_rowbytes(m_png, m_info)) * m_height;
    const std::int64_t delivered = std::int64_t(m_width) * m_height * form.BytesPerPixel();
    return CheckClaim(stored, delivered, m_source.Size(), kDeflateRatio);
}

bool Decoder::TryStart()
{
    if (setjmp(m_error.out) != 0)
        return false;
    png_set_expand(m_png); // palettes, 1 to 4 bits, a transparent color
    if (Form().channels != 1)
        png_set_gray_to_rgb(m_png);
    if (m_bits == 16)
        png_set_swap(m_png); // from big-endian
    png_set_interlace_handling(m_png);
    png_read_update_info(m_png, m_info);
    return true;
}

bool Decoder::TryRows(RowSink *rows)
{
    if (setjmp(m_error.out) != 0)
        return false;
    for (int y = 0; y < static_cast<int>(m_height); ++y) {
        png_read_row(m_png, rows->Row(y), nullptr);
        rows->Done(y);
    }
    return true;
}

bool Decoder::TryPasses(std::uint8_t *const *rows)
{
    if (setjmp(m_error.out) != 0)
        return false;
    png_read_image(m_png, const_cast<png_bytepp>(rows));
    return true;
}

// Reads an interlaced picture, whose seven passes need all rows at once.
Status Decoder::ReadPasses(RowSink *rows)
{
    const std::size_t rowBytes = png_get_rowbytes(m_png, m_info);
    std::vector<std::uint8_t> picture(rows->KeepsRows() ? 0 : rowBytes * m_height);
    std::vector<std::uint8_t *> pointers(m_height);
    for (std::size_t y = 0; y < pointers.size(); ++y)
        pointers[y] = picture.empty() ? rows->Row(static_cast<int>(y)) : picture.data() + y * rowBytes;
    if (!TryPasses(pointers.data()))
        return Failure();
    for (int y = 0; y < static_cast<int>(m_height); ++y) {
        if (!picture.empty())
            std::copy_n(pointers[static_cast<std::size_t>(y)], rowBytes, rows->Row(y));
        rows->Done(y);
    }
    return Status::Ok();
}

Status Decoder::ReadRows(RowSink *rows)
{
    if (!TryStart())
        return Failure();
    if (Status status = rows->Start(static_cast<int>(m_width), static_cast<int>(m_height), Form()); !status)
        return status;
    if (m_interlace != PNG_INTERLACE_NONE)
        return ReadPasses(rows);
    return TryRows(rows) ? Status::Ok() : Failure();
}

std::uint16_t Dpi(png_uint_32 perMeter)
{
    return static_cast<std::uint16_t>(std::min(perMeter * 0.0254 + 0.5, 65535.0));
}

void Decoder::Describe(GFL_FILE_INFORMATION *info) const
{
    const bool isPalette = m_color == PNG_COLOR_TYPE_PALETTE;
    const bool hasColor = (m_color & PNG_COLOR_MASK_COLOR) != 0;
    std::snprintf(info->Description, sizeof info->Description, "%s",
                  m_interlace == PNG_INTERLACE_NONE ? "PNG" : "PNG interlaced");
    info->Width = static_cast<std::int32_t>(m_width);
    info->Height = static_cast<std::int32_t>(m_height);
    info->BitsPerComponent = static_cast<std::uint16_t>(Form().bits);
    info->ComponentsPerPixel = static_cast<std::uint16_t>((hasColor ? 3 : 1) + (HasAlpha() ? 1 : 0));
    info->ColorModel = isPalette ? GFL_CM_PALETTE : hasColor ? GFL_CM_RGB : GFL_CM_GREY;
    info->Xdpi = Dpi(png_get_x_pixels_per_meter(m_png, m_info));
    info->Ydpi = Dpi(png_get_y_pixels_per_meter(m_png, m_info));
}

} // namespace

Status ReadPngInfo(const Source &source, GFL_FILE_INFORMATION *info)
{
    Decoder decoder(source);
    if (Status status = decoder.Open(); !status)
        return status;
    decoder.Describe(info);
    return Status::Ok();
}

Status ReadPngPixels(const Source &source, RowSink *rows)
{
    Decoder decoder(source);
    if (Status status = decoder.Open(); !status)
        return status;
    return decoder.ReadRows(rows);
}

} // namespace imagefile
