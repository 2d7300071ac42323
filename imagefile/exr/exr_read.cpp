#include "core/image_limits.h"
#include "exr_attributes.h"
#include "exr_codec.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputFile.h>
#include <ImfRgbaFile.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>
#include <ImfTileDescription.h>
#include <ImfVersion.h>
#include <ImfXdr.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <set>

namespace imagefile {

namespace {

// OpenEXR input stream over a Source.
class Input : public Imf::IStream {
public:
    explicit Input(const Source &source) : Imf::IStream("OpenEXR"), m_source(source) { }

    bool read(char *buffer, int count) override
    {
        const auto wanted = static_cast<std::size_t>(std::max(count, 0));
        if (m_source.ReadAt(m_position, buffer, wanted) < wanted)
            throw std::runtime_error("the file ends early");
        m_position += wanted;
        return m_position < m_source.Size();
    }
    std::uint64_t tellg() override { return m_position; }
    void seekg(std::uint64_t position) override { m_position = position; }

private:
    const Source &m_source;
    std::uint64_t m_position = 0;
};

Status Unknown(const char *why)
{
    return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT, Text("OpenEXR: %s", why));
}

Status Damaged(const char *why)
{
    return Status::Fail(GFL_ERROR_FILE_READ, Text("OpenEXR: %s", why));
}

/// Runs @p work, which returns a Status; converts OpenEXR's exceptions to read errors.
template <class Work> Status CatchErrors(Work work)
{
    try {
        return work();
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &error) {
        return Damaged(error.what());
    }
}

struct ExrLayout {
    int version = 0;
    Imf::Header header; // of the first part
    std::string layer;  // with its dot; empty for none
    bool hasY = false, hasColor = false, hasChroma = false, hasAlpha = false;
    int components = 0; // stored
    PixelForm form = {32, 3};
    int width = 0, height = 0; // of the display window

    bool Has(const char *name) const { return header.channels().findChannel(layer + name) != nullptr; }
};

std::int64_t Width(const Imath::Box2i &box)
{
    return std::int64_t(box.max.x) - box.min.x + 1;
}

std::int64_t Height(const Imath::Box2i &box)
{
    return std::int64_t(box.max.y) - box.min.y + 1;
}

std::int64_t BytesPerPixel(const Imf::ChannelList &channels)
{
    std::int64_t bytes = 0;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel)
        bytes += channel.channel().type == Imf::HALF ? 2 : 4;
    return bytes;
}

int LinesPerChunk(Imf::Compression compression)
{
    constexpr int kLines[] = {1, 1, 1, 16, 32, 16, 32, 32, 32, 256}; // by compression method
    return compression >= 0 && compression < Imf::NUM_COMPRESSION_METHODS ? kLines[compression] : 1;
}

/// Checks one part against the limits and the file's size, before OpenEXR allocates tables, a chunk and a row of tiles.
Status CheckPart(const Imf::Header &header, std::uint64_t fileBytes, std::uint64_t *tableBytes)
{
    const Imath::Box2i &data = header.dataWindow();
    const std::int64_t width = Width(data), height = Height(data);
    if (Status status = CheckImageSize(width, height, 1, 8); !status)
        return status;
    const std::int64_t bytes = BytesPerPixel(header.channels());
    if (bytes < 1 || bytes > kMaxExrPixelBytes)
        return Unknown("no channels, or too many");
    std::int64_t rows = LinesPerChunk(header.compression()), columns = width, chunks = (height + rows - 1) / rows;
    if (header.hasTileDescription()) {
        columns = header.tileDescription().xSize;
        rows = header.tileDescription().ySize;
        if (columns < 1 || rows < 1 || columns > kMaxSidePixels || rows > kMaxSidePixels)
            return Damaged(Text("tiles of %lld x %lld pixels; sides of 1 to %lld are supported",
                                static_cast<long long>(columns), static_cast<long long>(rows),
                                static_cast<long long>(kMaxSidePixels))
                               .c_str());
        // Reduced versions add at most three times as many tiles.
        chunks = 4 * ((width + columns - 1) / columns) * ((height + rows - 1) / rows); // <= 2^42
    }
    if (std::max(columns, width) * rows * bytes > kMaxCodecAllocation) // <= 2^52
        return Status::Fail(GFL_ERROR_NO_MEMORY, "OpenEXR: chunks or tiles are too large");
    *tableBytes += static_cast<std::uint64_t>(chunks) * 8;
    if (*tableBytes > std::max<std::uint64_t>(4 * fileBytes, 65536))
        return Damaged("the file is shorter than its chunk tables");
    return CheckClaim(width * height * bytes, 0, fileBytes, kUnboundedRatio);
}

Status ReadHeaders(const Source &source, ExrLayout *layout)
{
    Input input(source);
    int magic = 0;
    Imf::Xdr::read<Imf::StreamIO>(input, magic);
    Imf::Xdr::read<Imf::StreamIO>(input, layout->version);
    if (Imf::getVersion(layout->version) != Imf::EXR_VERSION || Imf::isNonImage(layout->version))
        return Unknown("deep pixels and newer versions are not supported");
    const bool manyParts = Imf::isMultiPart(layout->version);
    if (Status status = CheckExrAttributes(source, manyParts); !status)
        return status;
    std::uint64_t tableBytes = 0;
    for (int part = 0; part < kMaxExrParts; ++part) {
        Imf::Header header;
        header.readFrom(input, layout->version);
        if (manyParts && part > 0 && header.readsNothing())
            return Status::Ok();
        header.sanityCheck(Imf::isTiled(layout->version), manyParts);
        if (Status status = CheckPart(header, source.Size(), &tableBytes); !status)
            return status;
        if (part == 0)
            layout->header = header;
        if (!manyParts)
            return Status::Ok();
    }
    return Unknown("too many parts");
}

void FindChannels(ExrLayout *layout)
{
    layout->hasColor = layout->Has("R") || layout->Has("G") || layout->Has("B");
    layout->hasY = layout->Has("Y");
    layout->hasAlpha = layout->Has("A");
    layout->hasChroma = !layout->hasColor && layout->hasY && layout->Has("RY") && layout->Has("BY");
}

Status ChooseForm(ExrLayout *layout)
{
    std::set<std::string> layers;
    layout->header.channels().layers(layers);
    FindChannels(layout);
    for (auto layer = layers.begin(); layer != layers.end() && !layout->hasColor && !layout->hasY; ++layer) {
        layout->layer = *layer + '.';
        FindChannels(layout);
    }
    if (!layout->hasColor && !layout->hasY)
        return Unknown("no channel R, G, B or Y");
    for (const char *name : {"R", "G", "B", "A"})
        layout->components += layout->hasColor && layout->Has(name) ? 1 : 0;
    if (!layout->hasColor)
        layout->components = (layout->hasChroma ? 3 : 1) + (layout->hasAlpha ? 1 : 0);
    layout->form.channels = layout->hasAlpha ? 4 : layout->hasColor || layout->hasChroma ? 3 : 1;
    return Status::Ok();
}

Status OpenExr(const Source &source, ExrLayout *layout)
{
    if (Status status = ReadHeaders(source, layout); !status)
        return status;
    if (Status status = ChooseForm(layout); !status)
        return status;
    const Imath::Box2i &display = layout->header.displayWindow(), &data = layout->header.dataWindow();
    if (Status status = CheckImageSize(Width(display), Height(display), layout->form.channels, 32); !status)
        return status;
    layout->width = static_cast<int>(Width(display));
    layout->height = static_cast<int>(Height(display));
    const std::int64_t delivered = Width(display) * Height(display) * layout->form.BytesPerPixel(); // <= 2^44
    const std::int64_t stored = Width(data) * Height(data) * BytesPerPixel(layout->header.channels());
    return CheckClaim(std::max(stored, delivered), delivered, source.Size(), kUnboundedRatio);
}

// Returns a base address from which OpenEXR finds the row buffer by data window coordinates, for any y.
template <class T> T *BaseOf(T *row, int minX, std::size_t pixelBytes)
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the base may lie outside the buffer, where no pointer is valid
    return reinterpret_cast<T *>(reinterpret_cast<std::intptr_t>(row) - minX * static_cast<std::intptr_t>(pixelBytes));
}

/// Reader of the data window's rows, as floats with the delivered channels. Colors are still multiplied by alpha.
class RowReader {
public:
    RowReader(const Source &source, const ExrLayout &layout);
    /// Returns row @p y, in data window coordinates.
    const float *Read(int y);

private:
    void ReadByChannels();

    const ExrLayout &m_layout;
    const Imath::Box2i m_data;
    Input m_input;
    std::vector<float> m_row;
    std::vector<Imf::Rgba> m_chromaRow;
    std::unique_ptr<Imf::InputFile> m_file;
    std::unique_ptr<Imf::RgbaInputFile> m_chromaFile;
};

RowReader::RowReader(const Source &source, const ExrLayout &layout)
    : m_layout(layout),
      m_data(layout.header.dataWindow()),
      m_input(source),
      m_row(static_cast<std::size_t>(Width(m_data) * layout.form.channels), 0.0f)
{
    if (!layout.hasChroma) {
        ReadByChannels();
        return;
    }
    const std::string layer = layout.layer.substr(0, layout.layer.size() - (layout.layer.empty() ? 0 : 1));
    m_chromaFile = std::make_unique<Imf::RgbaInputFile>(m_input, layer, /*numThreads=*/0);
    m_chromaRow.resize(static_cast<std::size_t>(Width(m_data)));
    m_chromaFile->setFrameBuffer(BaseOf(m_chromaRow.data(), m_data.min.x, sizeof(Imf::Rgba)), 1, 0);
}

void RowReader::ReadByChannels()
{
    m_file = std::make_unique<Imf::InputFile>(m_input, /*numThreads=*/0);
    const auto channels = static_cast<std::size_t>(m_layout.form.channels);
    const std::size_t pixelBytes = channels * sizeof(float);
    char *base = BaseOf(reinterpret_cast<char *>(m_row.data()), m_data.min.x, pixelBytes);
    const char *const gray[] = {"Y", nullptr, nullptr, "A"}, *const rgba[] = {"R", "G", "B", "A"};
    Imf::FrameBuffer buffer;
    for (std::size_t c = 0; c < channels; ++c)
        if (const char *name = (m_layout.hasColor ? rgba : gray)[c])
            buffer.insert(m_layout.layer + name, Imf::Slice(Imf::FLOAT, base + c * sizeof(float), pixelBytes, 0));
    m_file->setFrameBuffer(buffer);
}

const float *RowReader::Read(int y)
{
    const auto channels = static_cast<std::size_t>(m_layout.form.channels);
    if (m_file) {
        m_file->readPixels(y);
        for (std::size_t i = 0; !m_layout.hasColor && channels == 4 && i < m_row.size(); i += channels)
            m_row[i + 1] = m_row[i + 2] = m_row[i];
        return m_row.data();
    }
    m_chromaFile->readPixels(y);
    for (std::size_t x = 0; x < m_chromaRow.size(); ++x) {
        const Imf::Rgba &pixel = m_chromaRow[x];
        const float rgba[] = {pixel.r, pixel.g, pixel.b, pixel.a};
        std::copy(rgba, rgba + channels, m_row.data() + x * channels);
    }
    return m_row.data();
}

void DivideByAlpha(float *row, int width)
{
    for (float *pixel = row; pixel < row + std::ptrdiff_t(4) * width; pixel += 4)
        for (int c = 0; c < 3 && pixel[3] > 0.0f && pixel[3] != 1.0f; ++c)
            pixel[c] /= pixel[3];
}

Status ReadRows(const Source &source, const ExrLayout &layout, RowSink *rows)
{
    const Imath::Box2i &display = layout.header.displayWindow(), &data = layout.header.dataWindow();
    RowReader reader(source, layout);
    const std::int64_t left = std::max(display.min.x, data.min.x);
    const std::int64_t end = std::min(display.max.x, data.max.x) + std::int64_t(1); // [left, end) is in both windows
    const int channels = layout.form.channels;
    for (int row = 0; row < layout.height; ++row) {
        float *out = reinterpret_cast<float *>(rows->Row(row));
        std::fill(out, out + std::ptrdiff_t(layout.width) * channels, 0.0f);
        const int y = display.min.y + row;
        if (y >= data.min.y && y <= data.max.y && left < end) {
            const float *in = reader.Read(y);
            std::copy(in + (left - data.min.x) * channels, in + (end - data.min.x) * channels,
                      out + (left - display.min.x) * channels);
        }
        if (channels == 4)
            DivideByAlpha(out, layout.width);
        rows->Done(row);
    }
    return Status::Ok();
}

} // namespace

Status ReadExrInfo(const Source &source, GFL_FILE_INFORMATION *info)
{
    ExrLayout layout;
    if (Status status = CatchErrors([&] { return OpenExr(source, &layout); }); !status)
        return status;
    std::snprintf(info->Description, sizeof info->Description, "OpenEXR");
    info->Width = layout.width;
    info->Height = layout.height;
    info->BitsPerComponent = 32;
    info->ComponentsPerPixel = static_cast<std::uint16_t>(layout.components);
    info->ColorModel = layout.hasColor ? GFL_CM_RGB : layout.hasChroma ? GFL_CM_YCBCR : GFL_CM_GREY;
    const float dpi = Imf::hasXDensity(layout.header) ? Imf::xDensity(layout.header) : 0.0f;
    if (dpi > 0.0f && dpi < 65535.0f)
        info->Xdpi = info->Ydpi = static_cast<std::uint16_t>(std::lround(dpi));
    return Status::Ok();
}

Bytes ReadExrXmp(const Source &source)
{
    Bytes xmp;
    static_cast<void>(CatchErrors([&] {
        ExrLayout layout;
        if (Status status = ReadHeaders(source, &layout); !status)
            return status;
        if (const auto *packet = layout.header.findTypedAttribute<Imf::StringAttribute>("xmp"))
            xmp.assign(packet->value().begin(), packet->value().end());
        return Status::Ok();
    }));
    return xmp;
}

Status ReadExrPixels(const Source &source, RowSink *rows)
{
    ExrLayout layout;
    if (Status status = CatchErrors([&] { return OpenExr(source, &layout); }); !status)
        return status;
    if (Status status = rows->Start(layout.width, layout.height, layout.form); !status)
        return status;
    return CatchErrors([&] { return ReadRows(source, layout, rows); });
}

} // namespace imagefile
