#include "core/image_limits.h"
#include "core/thread_count.h"
#include "metadata/metadata.h"
#include "tiff_codec.h"
#include "tiff_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <limits>
#include <mutex>
#include <new>
#include <thread>

namespace imagefile {

namespace {

/// Strips up to this size are decoded whole: libtiff then uses libdeflate, which is much faster than decoding row by
/// row. Decoding larger strips whole, such as the only strip of a picture, would take twice the memory.
constexpr std::uint64_t kMaxStripBuffer = std::uint64_t(64) << 20;

/// Decoder that reads a TIFF from the top down, one band at a time: a row of tiles, a strip or a single row. Each plane
/// of a planar file has a separate handle, so that all are read in one pass.
class BandReader {
public:
    Status Open(const Source &source);
    /// Opens a reduced version that can replace the picture in @p box.
    Status OpenReduced(const Source &source, const Box &box);
    const TiffLayout &Layout() const { return m_layout; }
    TIFF *Picture() const { return m_planes[0]->Get(); }

    Status Start();
    /// Decodes the band that begins at row @p y.
    Status ReadBand(int y);
    int BandRows() const { return m_bandRows; }
    int Bands() const { return (m_layout.height - 1) / m_bandRows + 1; }
    std::size_t BandBytes() const { return m_band.size(); }
    /// Unpacks a row of the band into @p dst: layout.unpacked.channels samples per pixel.
    void UnpackRow(int rowInBand, void *dst) const;

private:
    Status OpenPlanes(const Source &source);
    Status ReadTiles(std::size_t plane, int y);
    Status ReadStrip(std::size_t plane, int y);
    void UnpackPiece(const std::uint8_t *src, std::size_t plane, std::size_t x, std::size_t count, void *dst) const;
    Status Expect(std::size_t plane, tmsize_t got, std::uint64_t wanted) const;

    TiffLayout m_layout;
    std::vector<std::unique_ptr<TiffHandle>> m_planes; // one, or one per used sample
    int m_pieceWidth = 0;                              // width of a tile or of the picture
    int m_bandRows = 0;                                // tile height, rows of a strip, or 1
    bool m_byRow = false;                              // strips are too large to decode whole
    std::size_t m_pieces = 1;                          // side by side
    std::size_t m_rowBytes = 0;                        // of a piece
    std::size_t m_pieceBytes = 0;
    std::vector<std::uint8_t> m_band; // by plane, piece and row
};

Status BandReader::Open(const Source &source)
{
    m_planes.push_back(std::make_unique<TiffHandle>());
    if (Status status = OpenTiffPicture(source, m_planes[0].get(), &m_layout); !status)
        return status;
    return m_layout.isPlanar && m_layout.color != TiffColor::Other ? OpenPlanes(source) : Status::Ok();
}

Status BandReader::OpenReduced(const Source &source, const Box &box)
{
    m_planes.push_back(std::make_unique<TiffHandle>());
    if (Status status = OpenTiffReduced(source, box, m_planes[0].get(), &m_layout); !status)
        return status;
    return m_layout.isPlanar ? Status::Fail(GFL_ERROR_UNKNOWN_FORMAT, "TIFF: planar reduced versions are not supported")
                             : Status::Ok();
}

Status BandReader::OpenPlanes(const Source &source)
{
    while (m_planes.size() < m_layout.used.size()) {
        TiffLayout same;
        m_planes.push_back(std::make_unique<TiffHandle>());
        if (Status status = OpenTiffPicture(source, m_planes.back().get(), &same); !status)
            return status;
    }
    return Status::Ok();
}

Status BandReader::Start()
{
    TIFF *tiff = Picture();
    const int samples = m_layout.isPlanar ? 1 : m_layout.samples;
    if (m_layout.isTiled) {
        m_pieceWidth = static_cast<int>(m_planes[0]->Field<std::uint32_t>(TIFFTAG_TILEWIDTH, 0));
        m_bandRows = static_cast<int>(m_planes[0]->Field<std::uint32_t>(TIFFTAG_TILELENGTH, 0));
        m_rowBytes = TIFFTileRowSize64(tiff);
        m_pieceBytes = TIFFTileSize64(tiff); // <= kMaxCodecAllocation
    } else {
        const auto rows = m_planes[0]->Field<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, 1);
        m_pieceWidth = m_layout.width;
        m_rowBytes = TIFFScanlineSize64(tiff);
        m_bandRows = static_cast<int>(std::min<std::uint32_t>(rows, static_cast<std::uint32_t>(m_layout.height)));
        m_byRow = m_rowBytes * static_cast<std::uint64_t>(m_bandRows) > kMaxStripBuffer;
        if (m_byRow)
            m_bandRows = 1;
        m_pieceBytes = m_rowBytes * static_cast<std::size_t>(m_bandRows);
    }
    const std::int64_t neededBits = std::int64_t(m_pieceWidth) * samples * m_layout.bits;
    if (m_pieceWidth < 1 || m_bandRows < 1 || static_cast<std::int64_t>(m_rowBytes) * 8 < neededBits
        || m_pieceBytes / static_cast<std::size_t>(m_bandRows) < m_rowBytes)
        return Status::Fail(GFL_ERROR_FILE_READ, "TIFF: strips or tiles don't fit the picture");
    m_pieces = static_cast<std::size_t>((std::int64_t(m_layout.width) + m_pieceWidth - 1) / m_pieceWidth);
    m_band.resize(m_planes.size() * m_pieces * m_pieceBytes);
    return Status::Ok();
}

Status BandReader::Expect(std::size_t plane, tmsize_t got, std::uint64_t wanted) const
{
    if (got >= 0 && static_cast<std::uint64_t>(got) >= wanted)
        return Status::Ok();
    return m_planes[plane]->Failure(GFL_ERROR_FILE_READ);
}

Status BandReader::ReadTiles(std::size_t plane, int y)
{
    TIFF *tiff = m_planes[plane]->Get();
    const auto sample = static_cast<std::uint16_t>(m_layout.isPlanar ? m_layout.used[plane] : 0);
    for (std::size_t piece = 0; piece < m_pieces; ++piece) {
        const auto x = static_cast<std::uint32_t>(piece) * static_cast<std::uint32_t>(m_pieceWidth);
        const std::uint32_t tile = TIFFComputeTile(tiff, x, static_cast<std::uint32_t>(y), 0, sample);
        std::uint8_t *buffer = m_band.data() + (plane * m_pieces + piece) * m_pieceBytes;
        const tmsize_t got = TIFFReadEncodedTile(tiff, tile, buffer, static_cast<tmsize_t>(m_pieceBytes));
        if (Status status = Expect(plane, got, m_pieceBytes); !status)
            return status;
    }
    return Status::Ok();
}

Status BandReader::ReadStrip(std::size_t plane, int y)
{
    TIFF *tiff = m_planes[plane]->Get();
    const auto row = static_cast<std::uint32_t>(y);
    const auto sample = static_cast<std::uint16_t>(m_layout.isPlanar ? m_layout.used[plane] : 0);
    std::uint8_t *buffer = m_band.data() + plane * m_pieceBytes;
    if (m_byRow)
        return Expect(plane, TIFFReadScanline(tiff, buffer, row, sample), 1);
    const int rows = std::min(m_bandRows, m_layout.height - y);
    const std::size_t wanted = static_cast<std::size_t>(rows) * m_rowBytes;
    const std::uint32_t strip = TIFFComputeStrip(tiff, row, sample);
    return Expect(plane, TIFFReadEncodedStrip(tiff, strip, buffer, static_cast<tmsize_t>(wanted)), wanted);
}

Status BandReader::ReadBand(int y)
{
    for (std::size_t plane = 0; plane < m_planes.size(); ++plane)
        if (Status status = m_layout.isTiled ? ReadTiles(plane, y) : ReadStrip(plane, y); !status)
            return status;
    return Status::Ok();
}

void BandReader::UnpackPiece(const std::uint8_t *src, std::size_t plane, std::size_t x, std::size_t count,
                             void *dst) const
{
    const auto channels = static_cast<std::size_t>(m_layout.unpacked.channels);
    const auto sampleBytes = static_cast<std::size_t>(m_layout.unpacked.bits) / 8;
    std::uint8_t *out = static_cast<std::uint8_t *>(dst) + x * channels * sampleBytes;
    const auto stored = static_cast<std::size_t>(m_layout.isPlanar ? 1 : m_layout.samples);
    if (stored == channels && m_layout.bits == m_layout.unpacked.bits && m_layout.isFloat == (m_layout.bits == 32)) {
        std::memcpy(out, src, count * channels * sampleBytes); // as stored; the common case
        return;
    }
    if (m_layout.isPlanar) {
        UnpackSamples(m_layout, src, 0, 1, count, out + plane * sampleBytes, channels);
        return;
    }
    for (std::size_t c = 0; c < channels; ++c)
        UnpackSamples(m_layout, src, static_cast<std::size_t>(m_layout.used[c]), stored, count, out + c * sampleBytes,
                      channels);
}

void BandReader::UnpackRow(int rowInBand, void *dst) const
{
    const auto width = static_cast<std::size_t>(m_layout.width), pieceWidth = static_cast<std::size_t>(m_pieceWidth);
    for (std::size_t plane = 0; plane < m_planes.size(); ++plane) {
        for (std::size_t piece = 0; piece < m_pieces; ++piece) {
            const std::uint8_t *src = m_band.data() + (plane * m_pieces + piece) * m_pieceBytes
                + static_cast<std::size_t>(rowInBand) * m_rowBytes;
            const std::size_t x = piece * pieceWidth;
            UnpackPiece(src, plane, x, std::min(pieceWidth, width - x), dst);
        }
    }
}

// Starts the transform for Lab and CMYK. Reads the metadata only for CMYK, which needs the ICC profile.
Status StartTransform(const Source &source, const TiffLayout &layout, ColorTransform *transform)
{
    const bool hasAlpha = layout.form.channels == 4;
    if (layout.color == TiffColor::Lab)
        return transform->StartLab(layout.white, layout.form.bits, hasAlpha);
    if (layout.color != TiffColor::Cmyk)
        return Status::Ok();
    Metadata metadata;
    if (Status status = ReadExiv2Metadata(source, &metadata); !status)
        return status;
    return transform->StartInks(metadata.icc, layout.form.bits, hasAlpha);
}

std::size_t UnpackedRowBytes(const TiffLayout &layout)
{
    return static_cast<std::size_t>(layout.width) * static_cast<std::size_t>(layout.unpacked.BytesPerPixel());
}

/// Decoder that runs on several threads, each with separate handles, and writes rows to their final location.
class ParallelReader {
public:
    /// Returns whether bands can be decoded in any order, and are small and numerous enough to share among threads.
    static bool IsWorthwhile(const BandReader &reader, const RowSink &rows);

    /// @p reader belongs to the calling thread and has been started.
    ParallelReader(const Source &source, BandReader *reader, RowSink *rows) : m_source(source), m_rows(rows)
    {
        m_workers.push_back({reader, nullptr, {}});
    }
    Status Run();

private:
    struct Worker {
        BandReader *reader;
        std::unique_ptr<BandReader> owned;
        std::vector<std::uint8_t> scratch; // empty if rows are unpacked in place
    };

    Status AddWorkers();
    void Work(Worker *worker);
    Status Read(Worker *worker, int band);

    const Source &m_source;
    RowSink *m_rows;
    std::vector<Worker> m_workers;
    std::mutex m_mutex; // guards everything below
    int m_next = 0;
    int m_failedBand = std::numeric_limits<int>::max(); // first band that failed; all before it are decoded
    Status m_failure = Status::Ok();
};

bool ParallelReader::IsWorthwhile(const BandReader &reader, const RowSink &rows)
{
    constexpr std::size_t kMaxBandBytes = std::size_t(8) << 20;
    constexpr std::int64_t kMinPixels = 1 << 20; // smaller pictures decode faster than threads start
    constexpr std::uint16_t kCompressions[] = {COMPRESSION_NONE,     COMPRESSION_LZW,  COMPRESSION_ADOBE_DEFLATE,
                                               COMPRESSION_PACKBITS, COMPRESSION_ZSTD, COMPRESSION_DEFLATE};
    const TiffLayout &layout = reader.Layout();
    const bool isPlainColor = layout.color != TiffColor::Cmyk && layout.color != TiffColor::Lab;
    return isPlainColor && rows.KeepsRows() && ThreadCount() > 1 && reader.Bands() > 1
        && reader.BandBytes() <= kMaxBandBytes && std::int64_t(layout.width) * layout.height >= kMinPixels
        && std::find(std::begin(kCompressions), std::end(kCompressions), layout.compression) != std::end(kCompressions);
}

Status ParallelReader::AddWorkers()
{
    const int wanted = std::min(ThreadCount(), m_workers[0].reader->Bands());
    while (static_cast<int>(m_workers.size()) < wanted) {
        auto reader = std::make_unique<BandReader>();
        if (Status status = reader->Open(m_source); !status)
            return status;
        if (Status status = reader->Start(); !status)
            return status;
        BandReader *const opened = reader.get();
        m_workers.push_back({opened, std::move(reader), {}});
    }
    const TiffLayout &layout = m_workers[0].reader->Layout();
    for (Worker &worker : m_workers)
        if (!UnpacksInPlace(layout))
            worker.scratch.resize(UnpackedRowBytes(layout));
    return Status::Ok();
}

Status ParallelReader::Read(Worker *worker, int band)
{
    BandReader &reader = *worker->reader;
    const TiffLayout &layout = reader.Layout();
    const int first = band * reader.BandRows(), end = std::min(first + reader.BandRows(), layout.height);
    if (Status status = reader.ReadBand(first); !status)
        return status;
    ColorTransform none;
    for (int y = first; y < end; ++y) {
        std::uint8_t *row = m_rows->Row(y);
        void *unpacked = worker->scratch.empty() ? row : worker->scratch.data();
        reader.UnpackRow(y - first, unpacked);
        FinishRow(layout, &none, unpacked, row);
        m_rows->Done(y);
    }
    return Status::Ok();
}

void ParallelReader::Work(Worker *worker)
{
    const int bands = worker->reader->Bands();
    std::unique_lock<std::mutex> lock(m_mutex);
    while (m_next < bands && m_next < m_failedBand) {
        const int band = m_next++;
        lock.unlock();
        Status status = Status::Ok();
        try {
            status = Read(worker, band);
        } catch (const std::bad_alloc &) { // no exception may leave a thread
            status = Status::Fail(GFL_ERROR_NO_MEMORY, std::string());
        }
        lock.lock();
        if (!status && band < m_failedBand) {
            m_failedBand = band;
            m_failure = std::move(status);
        }
    }
}

Status ParallelReader::Run()
{
    if (Status status = AddWorkers(); !status)
        return status;
    std::vector<std::thread> threads;
    threads.reserve(m_workers.size());
    try {
        for (std::size_t i = 1; i < m_workers.size(); ++i)
            threads.emplace_back(&ParallelReader::Work, this, &m_workers[i]);
    } catch (const std::exception &) { // too many threads, or no memory: continue with those that started
    }
    Work(&m_workers[0]);
    for (std::thread &thread : threads)
        thread.join();
    return m_failure;
}

Status ReadBands(const Source &source, BandReader *reader, RowSink *rows)
{
    const TiffLayout &layout = reader->Layout();
    if (Status status = reader->Start(); !status)
        return status;
    ColorTransform transform;
    if (Status status = StartTransform(source, layout, &transform); !status)
        return status;
    if (Status status = rows->Start(layout.width, layout.height, layout.form); !status)
        return status;
    if (ParallelReader::IsWorthwhile(*reader, *rows))
        return ParallelReader(source, reader, rows).Run();
    std::vector<std::uint8_t> scratch;
    if (!UnpacksInPlace(layout))
        scratch.resize(UnpackedRowBytes(layout));
    for (int y = 0; y < layout.height; ++y) {
        const int rowInBand = y % reader->BandRows();
        if (rowInBand == 0)
            if (Status status = reader->ReadBand(y); !status)
                return status;
        std::uint8_t *row = rows->Row(y);
        void *unpacked = scratch.empty() ? row : scratch.data();
        reader->UnpackRow(rowInBand, unpacked);
        FinishRow(layout, &transform, unpacked, row);
        rows->Done(y);
    }
    return Status::Ok();
}

// Reads rare color models through libtiff's conversion, which also needs memory for the picture as 8-bit RGBA.
Status ReadConverted(const BandReader &reader, RowSink *rows)
{
    const TiffLayout &layout = reader.Layout();
    const auto width = static_cast<std::uint32_t>(layout.width), height = static_cast<std::uint32_t>(layout.height);
    std::vector<std::uint32_t> raster(std::size_t(width) * height);
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    TIFFGetFieldDefaulted(reader.Picture(), TIFFTAG_ORIENTATION,
                          &orientation); // same orientation in and out: nothing is rotated
    if (!TIFFReadRGBAImageOriented(reader.Picture(), width, height, raster.data(), orientation, /*stopOnError=*/1))
        return Status::Fail(GFL_ERROR_FILE_READ, "TIFF: the pixels can't be decoded");
    if (Status status = rows->Start(layout.width, layout.height, layout.form); !status)
        return status;
    const std::uint32_t *pixel = raster.data();
    for (int y = 0; y < layout.height; ++y) {
        std::uint8_t *out = rows->Row(y);
        for (int x = 0; x < layout.width; ++x, ++pixel, out += 3) {
            out[0] = static_cast<std::uint8_t>(TIFFGetR(*pixel));
            out[1] = static_cast<std::uint8_t>(TIFFGetG(*pixel));
            out[2] = static_cast<std::uint8_t>(TIFFGetB(*pixel));
        }
        rows->Done(y);
    }
    return Status::Ok();
}

Status ReadOpened(const Source &source, BandReader *reader, RowSink *rows)
{
    return reader->Layout().color == TiffColor::Other ? ReadConverted(*reader, rows) : ReadBands(source, reader, rows);
}

std::uint16_t Dpi(const TiffHandle &handle, std::uint32_t tag)
{
    const auto unit = handle.Field<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    const float density = handle.Field<float>(tag, 0.0f);
    const float dpi = unit == RESUNIT_CENTIMETER ? density * 2.54f : unit == RESUNIT_INCH ? density : 0.0f;
    return dpi > 0.0f && dpi < 65535.0f ? static_cast<std::uint16_t>(std::lround(dpi)) : std::uint16_t(0);
}

GflColorModel ColorModelOf(const TiffLayout &layout)
{
    switch (layout.photometric) {
    case PHOTOMETRIC_ITULAB:
        return GFL_CM_LAB;
    case PHOTOMETRIC_YCBCR:
        return GFL_CM_YCBCR;
    default:
        break;
    }
    switch (layout.color) {
    case TiffColor::Gray:
        return GFL_CM_GREY;
    case TiffColor::Rgb:
        return GFL_CM_RGB;
    case TiffColor::Palette:
        return GFL_CM_PALETTE;
    case TiffColor::Cmyk:
        return GFL_CM_CMYK;
    case TiffColor::Lab:
        return GFL_CM_LAB;
    case TiffColor::Other:
        break;
    }
    return GFL_CM_OTHER;
}

} // namespace

Status ReadTiffInfo(const Source &source, GFL_FILE_INFORMATION *info)
{
    TiffHandle handle;
    TiffLayout layout;
    if (Status status = OpenTiffPicture(source, &handle, &layout); !status)
        return status;
    // Hosts compare the whole description of tiled files; in other descriptions, they search for the color model.
    const GflColorModel model = ColorModelOf(layout);
    std::snprintf(info->Description, sizeof info->Description, "TIFF%s",
                  layout.isTiled             ? " tiled"
                      : model == GFL_CM_LAB  ? " LAB"
                      : model == GFL_CM_CMYK ? " CMYK"
                                             : "");
    info->Width = layout.width;
    info->Height = layout.height;
    info->BitsPerComponent = static_cast<std::uint16_t>(layout.form.bits);
    info->ComponentsPerPixel = static_cast<std::uint16_t>(layout.color == TiffColor::Palette ? 3 : layout.samples);
    info->ColorModel = model;
    info->Xdpi = Dpi(handle, TIFFTAG_XRESOLUTION);
    info->Ydpi = Dpi(handle, TIFFTAG_YRESOLUTION);
    return Status::Ok();
}

Status ReadTiffPixels(const Source &source, RowSink *rows)
{
    BandReader reader;
    Status status = reader.Open(source);
    return status ? ReadOpened(source, &reader, rows) : status;
}

Status ReadTiffThumbnail(const Source &source, const Box &box, RowSink *rows)
{
    BandReader reader;
    if (reader.OpenReduced(source, box) && ReadOpened(source, &reader, rows))
        return Status::Ok();
    return ReadTiffPixels(source, rows);
}

} // namespace imagefile
