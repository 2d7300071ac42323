#include "core/row_source.h"
#include "metadata/exif_carry.h"
#include "metadata/photoshop_resources.h"
#include "metadata/png_metadata.h"
#include "png_codec.h"

#include <algorithm>
#include <cmath>

namespace imagefile {

namespace {

constexpr int kDefaultLevel = 6; // of zlib, 0 to 9
constexpr int kMaxLevel = 9;

/// Metadata in the forms that libpng takes; owns the bytes that libpng points to.
struct Blocks {
    explicit Blocks(const Metadata &metadata);

    Bytes icc;
    Bytes exif;       // a TIFF
    std::string xmp;  // as iTXt
    std::string iptc; // as zTXt
};

Blocks::Blocks(const Metadata &metadata)
    : icc(metadata.icc),
      exif(EncodeExif(metadata.exif)),
      xmp(metadata.xmp.begin(), std::find(metadata.xmp.begin(), metadata.xmp.end(), 0)),
      iptc(metadata.iptc.empty() ? std::string() : RawProfileText("iptc", IptcResource(metadata.iptc)))
{
}

/// Encoder for one picture. Objects with destructors are members, so that a longjmp skips no destructor.
class Encoder {
public:
    Encoder(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink);
    ~Encoder() { png_destroy_write_struct(&m_png, &m_info); }
    Encoder(const Encoder &) = delete;
    Encoder &operator=(const Encoder &) = delete;

    Status Write(const Blocks &blocks);

private:
    static void WriteBytes(png_structp png, png_bytep data, std::size_t length);
    bool TryWrite(const Blocks &blocks);
    void SetUp();
    void SetBlocks(const Blocks &blocks);
    void WriteRows();

    const GFL_BITMAP &m_bitmap;
    RowSource m_rows;
    const PixelForm m_from;
    const PixelForm m_form;
    const int m_level;
    Sink *const m_sink;
    Status m_failure = Status::Ok();
    PngError m_error;
    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
    std::vector<std::uint8_t> m_row;
};

Encoder::Encoder(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink)
    : m_bitmap(bitmap),
      m_rows(bitmap, options.rows),
      m_from{bitmap.BitsPerComponent, gflChannelsOfType(bitmap.Type)},
      m_form{bitmap.BitsPerComponent == 8 ? 8 : 16, m_from.channels},
      m_level(options.compression == GFL_COMPRESSION_DEFAULT ? kDefaultLevel
                                                             : std::min<int>(options.compression, kMaxLevel)),
      m_sink(sink),
      m_row(static_cast<std::size_t>(bitmap.Width) * static_cast<std::size_t>(m_form.BytesPerPixel()))
{
    m_error.error = GFL_ERROR_FILE_WRITE;
}

void Encoder::WriteBytes(png_structp png, png_bytep data, std::size_t length)
{
    auto *encoder = static_cast<Encoder *>(png_get_io_ptr(png));
    encoder->m_failure = encoder->m_sink->WriteAt(encoder->m_sink->Size(), data, length);
    if (!encoder->m_failure)
        png_error(png, "the file can't be written");
}

Status Encoder::Write(const Blocks &blocks)
{
    if (TryWrite(blocks))
        return Status::Ok();
    return m_failure ? Status::Fail(m_error.error, Text("PNG: %s", m_error.text)) : m_failure;
}

bool Encoder::TryWrite(const Blocks &blocks)
{
    if (setjmp(m_error.out) != 0)
        return false;
    m_png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &m_error, FailPng, IgnorePngWarning);
    m_info = m_png ? png_create_info_struct(m_png) : nullptr;
    if (!m_info) {
        m_error.error = GFL_ERROR_NO_MEMORY;
        return false;
    }
    png_set_write_fn(m_png, this, WriteBytes, [](png_structp) {});
    png_set_user_limits(m_png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    SetUp();
    SetBlocks(blocks);
    png_write_info(m_png, m_info);
    if (m_form.bits == 16)
        png_set_swap(m_png); // to big-endian
    WriteRows();
    png_write_end(m_png, nullptr); // all blocks precede the pixels; with m_info libpng would write EXIF again
    return true;
}

void Encoder::SetUp()
{
    const int color = m_form.channels == 1 ? PNG_COLOR_TYPE_GRAY
        : m_form.channels == 3             ? PNG_COLOR_TYPE_RGB
                                           : PNG_COLOR_TYPE_RGB_ALPHA;
    png_set_IHDR(m_png, m_info, static_cast<png_uint_32>(m_bitmap.Width), static_cast<png_uint_32>(m_bitmap.Height),
                 m_form.bits, color, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(m_png, m_level);
    if (m_bitmap.Xdpi > 0 && m_bitmap.Ydpi > 0)
        png_set_pHYs(m_png, m_info, static_cast<png_uint_32>(std::lround(m_bitmap.Xdpi / 0.0254)),
                     static_cast<png_uint_32>(std::lround(m_bitmap.Ydpi / 0.0254)), PNG_RESOLUTION_METER);
}

// Errors in blocks become warnings. A profile that libpng rejects is left out: readers that use libpng would reject it.
void Encoder::SetBlocks(const Blocks &blocks)
{
    png_set_benign_errors(m_png, 1);
    if (!blocks.icc.empty())
        png_set_iCCP(m_png, m_info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, blocks.icc.data(),
                     static_cast<png_uint_32>(blocks.icc.size()));
    if (!blocks.icc.empty() && png_get_valid(m_png, m_info, PNG_INFO_iCCP) == 0)
        Warn("metadata is left out: the ICC profile, which libpng rejects");
    if (!blocks.exif.empty())
        png_set_eXIf_1(m_png, m_info, static_cast<png_uint_32>(blocks.exif.size()),
                       const_cast<png_bytep>(blocks.exif.data())); // libpng copies it
    png_text texts[2] = {};
    int count = 0;
    if (!blocks.xmp.empty()) {
        texts[count].compression = PNG_ITXT_COMPRESSION_NONE; // so that a text search finds it
        texts[count].key = const_cast<char *>(kPngXmpKey);
        texts[count++].text = const_cast<char *>(blocks.xmp.c_str());
    }
    if (!blocks.iptc.empty()) {
        texts[count].compression = PNG_TEXT_COMPRESSION_zTXt;
        texts[count].key = const_cast<char *>(kPngIptcKey);
        texts[count++].text = const_cast<char *>(blocks.iptc.c_str());
    }
    if (count > 0)
        png_set_text(m_png, m_info, texts, count);
}

void Encoder::WriteRows()
{
    const RowConverter convert = ChooseConverter(m_from, m_form);
    const std::uint8_t *src = nullptr;
    for (int y = 0; y < m_bitmap.Height; ++y) {
        m_failure = m_rows.Next(&src);
        if (!m_failure)
            png_error(m_png, "the rows could not be generated");
        convert(src, m_row.data(), static_cast<std::size_t>(m_bitmap.Width), 255);
        png_write_row(m_png, m_row.data());
    }
}

} // namespace

Status WritePng(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink)
{
    try {
        const Blocks blocks(options.metadata ? *options.metadata : Metadata());
        return Encoder(bitmap, options, sink).Write(blocks);
    } catch (const Exiv2::AnyError &error) {
        return Status::Fail(GFL_ERROR_FILE_WRITE, Text("PNG: the EXIF can't be written: %s", error.what()));
    }
}

} // namespace imagefile
