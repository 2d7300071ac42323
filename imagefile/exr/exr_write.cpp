#include "core/row_source.h"
#include "exr_codec.h"
#include "exr_metadata.h"
#include "metadata/metadata.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfOutputFile.h>
#include <ImfStandardAttributes.h>

#include <algorithm>

namespace imagefile {

namespace {

// OpenEXR output stream over a Sink. Keeps the first failure, because OpenEXR writes the chunk offsets in a
// destructor, which swallows exceptions.
class Output : public Imf::OStream {
public:
    explicit Output(Sink *sink) : Imf::OStream("OpenEXR"), m_sink(sink) { }

    void write(const char *data, int count) override
    {
        if (m_failure)
            m_failure = m_sink->WriteAt(m_position, data, static_cast<std::size_t>(count));
        if (!m_failure)
            throw std::runtime_error(m_failure.Why());
        m_position += static_cast<std::uint64_t>(count);
    }
    std::uint64_t tellp() override { return m_position; }
    void seekp(std::uint64_t position) override { m_position = position; }

    const Status &Failure() const { return m_failure; }

private:
    Sink *m_sink;
    std::uint64_t m_position = 0;
    Status m_failure = Status::Ok();
};

// Returns the type of samples in the file; half for B44, which leaves floats uncompressed, and for DWA, which
// rounds floats of colors to half precision.
Imf::PixelType TypeFor(const GFL_BITMAP &bitmap, const SaveOptions &options, Imf::Compression method)
{
    return bitmap.BitsPerComponent == 8 || options.halfFloats || method >= Imf::B44_COMPRESSION ? Imf::HALF
                                                                                                : Imf::FLOAT;
}

void MultiplyByAlpha(float *row, std::size_t width)
{
    for (float *pixel = row; pixel < row + 4 * width; pixel += 4)
        for (int c = 0; c < 3; ++c)
            pixel[c] *= pixel[3];
}

/// Returns failures to generate rows; write failures are exceptions.
Status WriteRows(const GFL_BITMAP &bitmap, const SaveOptions &options, Imf::PixelType type, Imf::Header header,
                 Output *output)
{
    const int channels = gflChannelsOfType(bitmap.Type);
    const auto width = static_cast<std::size_t>(bitmap.Width);
    std::vector<float> floats(width * static_cast<std::size_t>(channels));
    std::vector<half> halves(type == Imf::HALF ? floats.size() : 0);
    char *row = halves.empty() ? reinterpret_cast<char *>(floats.data()) : reinterpret_cast<char *>(halves.data());
    const std::size_t sampleBytes = type == Imf::HALF ? sizeof(half) : sizeof(float);
    const char *const gray[] = {"Y"}, *const rgba[] = {"R", "G", "B", "A"};
    Imf::FrameBuffer buffer; // every row uses the same memory
    for (int c = 0; c < channels; ++c) {
        const char *name = (channels == 1 ? gray : rgba)[c];
        header.channels().insert(name, Imf::Channel(type));
        buffer.insert(name,
                      Imf::Slice(type, row + static_cast<std::size_t>(c) * sampleBytes,
                                 sampleBytes * static_cast<std::size_t>(channels), 0));
    }
    Imf::OutputFile file(*output, header, /*numThreads=*/0);
    file.setFrameBuffer(buffer);
    const RowConverter convert = ChooseConverter({bitmap.BitsPerComponent, channels}, {32, channels});
    RowSource rows(bitmap, options.rows);
    const std::uint8_t *src = nullptr;
    for (int y = 0; y < bitmap.Height; ++y) {
        if (Status status = rows.Next(&src); !status)
            return status;
        convert(src, floats.data(), width, 255);
        if (channels == 4)
            MultiplyByAlpha(floats.data(), width);
        std::transform(floats.begin(), floats.begin() + static_cast<std::ptrdiff_t>(halves.size()), halves.begin(),
                       [](float value) { return half(std::clamp(value, -float(HALF_MAX), float(HALF_MAX))); });
        file.writePixels(1);
    }
    return Status::Ok();
}

} // namespace

Status WriteExr(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink)
{
    const int number = options.compression == GFL_COMPRESSION_DEFAULT ? int(Imf::PIZ_COMPRESSION) : options.compression;
    if (number >= Imf::NUM_COMPRESSION_METHODS)
        return Status::Fail(GFL_ERROR_BAD_PARAMETERS, Text("OpenEXR: unknown compression %d", number));
    const auto method = static_cast<Imf::Compression>(number);
    Output output(sink);
    try {
        Imf::Header header(bitmap.Width, bitmap.Height);
        header.compression() = method;
        if (bitmap.Xdpi > 0)
            Imf::addXDensity(header, bitmap.Xdpi);
        if (options.metadata)
            AddExrAttributes(*options.metadata, &header);
        if (Status status = WriteRows(bitmap, options, TypeFor(bitmap, options, method), header, &output); !status)
            return status;
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &error) {
        return output.Failure() ? Status::Fail(GFL_ERROR_FILE_WRITE, Text("OpenEXR: %s", error.what()))
                                : output.Failure();
    }
    return output.Failure();
}

} // namespace imagefile
