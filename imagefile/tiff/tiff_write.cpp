#include "metadata/metadata.h"
#include "strip_packer.h"
#include "tiff_codec.h"
#include "tiff_exif.h"
#include "tiff_handle.h"
#include "tiff_predictor.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

/// Unpacked bytes per strip: enough for good compression, but few enough that readers and our threads need little
/// memory.
constexpr std::int64_t kStripBytes = 512 * 1024;

/// Zstandard level: with the predictor, higher ones gain little and take much longer.
constexpr int kZstdLevel = 3;

/// Room for directories and the header in addition to pixels, metadata and strip tables.
constexpr std::uint64_t kOtherBytes = 65536;

/// Pixels to write, divided into strips.
struct Picture {
    /// @param isFast  Whether ISA-L compresses the strips. The number of rows per strip then divides GFL_FAST_ROWS.
    Picture(const GFL_BITMAP &source, const RowMaker *rowMaker, bool isFast);

    const GFL_BITMAP &bitmap;
    const RowMaker *maker; // generates the rows; null if they are in the bitmap
    PixelForm form;
    std::size_t rowBytes; // without padding
    int rowsPerStrip;
    int strips;

    int RowsOf(int strip) const { return std::min(rowsPerStrip, bitmap.Height - strip * rowsPerStrip); }
    const std::uint8_t *Row(int y) const { return bitmap.Data + static_cast<std::size_t>(y) * bitmap.BytesPerLine; }
    std::size_t BytesOf(int strip) const { return rowBytes * static_cast<std::size_t>(RowsOf(strip)); }
    std::uint64_t Bytes() const { return std::uint64_t(rowBytes) * static_cast<std::uint64_t>(bitmap.Height); }
    /// Copies the rows of @p count strips, starting with @p first, without gaps, or requests them from the caller's
    /// callback.
    Status FillStrips(int first, int count, std::uint8_t *dst) const;
};

/// Returns the largest power of two that exceeds neither @p value, which is at least 1, nor GFL_FAST_ROWS.
int FastRows(int value)
{
    int rows = GFL_FAST_ROWS;
    while (rows > value)
        rows /= 2;
    return rows;
}

Picture::Picture(const GFL_BITMAP &source, const RowMaker *rowMaker, bool isFast)
    : bitmap(source),
      maker(rowMaker),
      form{source.BitsPerComponent, gflChannelsOfType(source.Type)},
      rowBytes(static_cast<std::size_t>(source.Width) * static_cast<std::size_t>(form.BytesPerPixel()))
{
    rowsPerStrip =
        static_cast<int>(std::clamp<std::int64_t>(kStripBytes / static_cast<std::int64_t>(rowBytes), 1, source.Height));
    if (isFast)
        rowsPerStrip = FastRows(rowsPerStrip);
    strips = (source.Height - 1) / rowsPerStrip + 1;
}

Status Picture::FillStrips(int first, int count, std::uint8_t *dst) const
{
    const int firstRow = first * rowsPerStrip;
    const int rows = (count - 1) * rowsPerStrip + RowsOf(first + count - 1);
    if (maker)
        return maker->Make(firstRow, rows, dst, static_cast<std::uint32_t>(rowBytes));
    for (int y = 0; y < rows; ++y)
        std::memcpy(dst + static_cast<std::size_t>(y) * rowBytes, Row(firstRow + y), rowBytes);
    return Status::Ok();
}

/// Converts SaveOptions::compression to TIFF's number. Returns false for unknown ones.
bool TranslateCompression(std::uint16_t compression, std::uint16_t *tag)
{
    switch (compression) {
    case 0:
    case GFL_COMPRESSION_DEFAULT:
        *tag = COMPRESSION_NONE;
        return true;
    case 2:
        *tag = COMPRESSION_LZW;
        return true;
    case 4:
        *tag = COMPRESSION_ADOBE_DEFLATE;
        return true;
    case COMPRESSION_ZSTD:
        *tag = COMPRESSION_ZSTD;
        return true;
    default:
        return false;
    }
}

/// Returns the maximum compressed size of the pixels in bytes.
std::uint64_t PackedBound(const Picture &picture, std::uint16_t compression)
{
    const std::uint64_t bytes = picture.Bytes();
    if (compression == COMPRESSION_LZW)
        return bytes + bytes / 2; // 12 bits per byte
    if (compression == COMPRESSION_ZSTD)
        return bytes + bytes / 256 + static_cast<std::uint64_t>(picture.strips) * 128; // ZSTD_COMPRESSBOUND, rounded up
    return compression == COMPRESSION_NONE ? bytes : bytes + bytes / 1000; // deflate stores incompressible data as is
}

std::uint64_t FileBound(const Picture &picture, std::uint16_t compression, const Metadata &metadata,
                        const TiffExif &exif)
{
    return PackedBound(picture, compression) + metadata.icc.size() + metadata.iptc.size() + metadata.xmp.size()
        + exif.BytesBound() + static_cast<std::uint64_t>(picture.strips) * 16 + kOtherBytes;
}

/// Applies the predictor to a row.
void PredictRow(const Picture &picture, const std::uint8_t *src, std::uint8_t *dst)
{
    const auto width = static_cast<std::size_t>(picture.bitmap.Width);
    const auto channels = static_cast<std::size_t>(picture.form.channels);
    if (picture.form.bits == 8)
        DifferenceRow(src, dst, width, channels);
    else if (picture.form.bits == 16)
        DifferenceRow(reinterpret_cast<const std::uint16_t *>(src), reinterpret_cast<std::uint16_t *>(dst), width,
                      channels);
    else
        DifferenceFloatRow(reinterpret_cast<const float *>(src), dst, width, channels);
}

const Metadata &MetadataOf(const SaveOptions &options)
{
    static const Metadata none;
    return options.metadata ? *options.metadata : none;
}

/// Writer for one file.
class Writer {
public:
    Writer(const Picture &picture, const SaveOptions &options, std::uint16_t compression, Sink *sink)
        : m_picture(picture), m_options(options), m_compression(compression), m_sink(sink)
    {
    }

    Status Write();

private:
    Status SetFields();
    Status SetBlocks();
    Status WritePlain();
    Status WriteByLibtiff();
    Status WriteDeflate();
    Status WriteRawStrip(int strip, const std::uint8_t *data, std::size_t bytes);
    TIFF *Tiff() const { return m_handle.Get(); }

    const Picture &m_picture;
    const SaveOptions &m_options;
    const std::uint16_t m_compression;
    Sink *const m_sink;
    TiffHandle m_handle;
};

Status Writer::SetFields()
{
    TIFF *tiff = Tiff();
    const GFL_BITMAP &bitmap = m_picture.bitmap;
    const bool isFloat = m_picture.form.bits == 32;
    bool good = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(bitmap.Width))
        && TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(bitmap.Height))
        && TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, m_picture.form.bits)
        && TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, m_picture.form.channels)
        && TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, isFloat ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT)
        && TIFFSetField(tiff, TIFFTAG_COMPRESSION, m_compression)
        && TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                        m_picture.form.channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB)
        && TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG)
        && TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(m_picture.rowsPerStrip));
    if (m_picture.form.channels == 4) {
        const std::uint16_t straight = EXTRASAMPLE_UNASSALPHA;
        good = good && TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &straight);
    }
    if (m_compression != COMPRESSION_NONE)
        good = good && TIFFSetField(tiff, TIFFTAG_PREDICTOR, isFloat ? PREDICTOR_FLOATINGPOINT : PREDICTOR_HORIZONTAL);
    if (m_compression == COMPRESSION_ZSTD)
        good = good && TIFFSetField(tiff, TIFFTAG_ZSTD_LEVEL, kZstdLevel);
    if (bitmap.Xdpi > 0 && bitmap.Ydpi > 0)
        good = good && TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(bitmap.Xdpi))
            && TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(bitmap.Ydpi))
            && TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    return good ? SetBlocks() : m_handle.Failure(GFL_ERROR_FILE_WRITE);
}

Status Writer::SetBlocks()
{
    const Metadata &metadata = MetadataOf(m_options);
    const auto set = [this](std::uint32_t tag, const Bytes &bytes) {
        return bytes.empty() || TIFFSetField(Tiff(), tag, static_cast<std::uint32_t>(bytes.size()), bytes.data());
    };
    const bool good = set(TIFFTAG_ICCPROFILE, metadata.icc) && set(TIFFTAG_RICHTIFFIPTC, metadata.iptc)
        && set(TIFFTAG_XMLPACKET, metadata.xmp);
    return good ? Status::Ok() : m_handle.Failure(GFL_ERROR_FILE_WRITE);
}

Status Writer::WriteRawStrip(int strip, const std::uint8_t *data, std::size_t bytes)
{
    const tmsize_t written = TIFFWriteRawStrip(Tiff(), static_cast<std::uint32_t>(strip),
                                               const_cast<std::uint8_t *>(data), // libtiff only reads it
                                               static_cast<tmsize_t>(bytes));
    return written == static_cast<tmsize_t>(bytes) ? Status::Ok() : m_handle.Failure(GFL_ERROR_FILE_WRITE);
}

Status Writer::WritePlain()
{
    const bool isPacked = !m_picture.maker && m_picture.rowBytes == m_picture.bitmap.BytesPerLine;
    std::vector<std::uint8_t> buffer(isPacked ? 0 : m_picture.BytesOf(0));
    for (int strip = 0; strip < m_picture.strips; ++strip) {
        if (!isPacked) {
            if (Status status = m_picture.FillStrips(strip, 1, buffer.data()); !status)
                return status;
        }
        const std::uint8_t *data = isPacked ? m_picture.Row(strip * m_picture.rowsPerStrip) : buffer.data();
        if (Status status = WriteRawStrip(strip, data, m_picture.BytesOf(strip)); !status)
            return status;
    }
    return Status::Ok();
}

/// Writes strips packed with LZW or Zstandard, one after another.
Status Writer::WriteByLibtiff()
{
    std::vector<std::uint8_t> buffer(m_picture.BytesOf(0)); // libtiff's predictor works in place
    for (int strip = 0; strip < m_picture.strips; ++strip) {
        if (Status status = m_picture.FillStrips(strip, 1, buffer.data()); !status)
            return status;
        for (int y = 0; y < m_picture.RowsOf(strip); ++y) {
            const int row = strip * m_picture.rowsPerStrip + y;
            if (TIFFWriteScanline(Tiff(), buffer.data() + static_cast<std::size_t>(y) * m_picture.rowBytes,
                                  static_cast<std::uint32_t>(row))
                < 0)
                return m_handle.Failure(GFL_ERROR_FILE_WRITE);
        }
    }
    return Status::Ok();
}

Status Writer::WriteDeflate()
{
    StripJob job;
    job.strips = m_picture.strips;
    job.maxStripBytes = m_picture.BytesOf(0);
    job.threads = m_options.threads;
    job.compressor = m_options.fast ? DeflateBy::IsaL : DeflateBy::LibDeflate;
    if (m_picture.maker)
        job.make = [this](int first, int count, std::uint8_t *rows) {
            return m_picture.FillStrips(first, count, rows);
        };
    job.stripsAtOnce = m_options.fast ? GFL_FAST_ROWS / m_picture.rowsPerStrip : 0;
    job.fill = [this](int strip, const std::uint8_t *made, std::uint8_t *buffer) {
        const std::uint8_t *src = made ? made : m_picture.Row(strip * m_picture.rowsPerStrip);
        const std::size_t stride = made ? m_picture.rowBytes : m_picture.bitmap.BytesPerLine;
        for (std::size_t y = 0; y < static_cast<std::size_t>(m_picture.RowsOf(strip)); ++y)
            PredictRow(m_picture, src + y * stride, buffer + y * m_picture.rowBytes);
        return m_picture.BytesOf(strip);
    };
    job.write = [this](int strip, const std::uint8_t *packed, std::size_t bytes) {
        return WriteRawStrip(strip, packed, bytes);
    };
    return PackStrips(job);
}

Status Writer::Write()
{
    const Metadata &metadata = MetadataOf(m_options);
    TiffExif exif;
    if (Status status = exif.Encode(metadata.exif); !status)
        return status;
    const TiffVariant variant = {FileBound(m_picture, m_compression, metadata, exif) >= m_options.bigTiffFromBytes};
    exif.SetVariant(variant);
    if (Status status = m_handle.OpenForWriting(m_sink, variant.isBig); !status)
        return status;
    if (Status status = exif.WriteHead(m_sink); !status)
        return status;
    Status status = Status::Ok();
    m_handle.RequireMemory([&] { return bool(status = SetFields()); });
    if (!status)
        return status;
    status = m_compression == COMPRESSION_NONE       ? WritePlain()
        : m_compression == COMPRESSION_ADOBE_DEFLATE ? WriteDeflate()
                                                     : WriteByLibtiff();
    if (!status)
        return status;
    if (!TIFFWriteDirectory(Tiff()))
        return m_handle.Failure(GFL_ERROR_FILE_WRITE);
    if (!m_handle.SinkStatus())
        return m_handle.SinkStatus();
    return exif.JoinFirstDirectory(m_sink);
}

} // namespace

Status WriteTiff(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink)
{
    std::uint16_t compression = COMPRESSION_NONE;
    if (!TranslateCompression(options.compression, &compression))
        return Status::Fail(
            GFL_ERROR_BAD_PARAMETERS,
            Text("TIFF: compression %d; 0 (none), 2 (LZW), 4 (deflate) and 50000 (Zstandard) are written",
                 options.compression));
    if (compression == COMPRESSION_LZW && !options.lzwAllowed)
        return Status::Fail(GFL_ERROR_BAD_PARAMETERS, "TIFF: LZW has not been enabled");
    if (!TIFFIsCODECConfigured(compression))
        return Status::Fail(GFL_ERROR_BAD_PARAMETERS,
                            Text("TIFF: libtiff was built without compression %d", compression));
    const bool isFast = options.fast && compression == COMPRESSION_ADOBE_DEFLATE;
    const Picture picture(bitmap, options.rows, isFast);
    return Writer(picture, options, compression, sink).Write();
}

} // namespace imagefile
