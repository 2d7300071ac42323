#include "core/row_source.h"
#include "jpeg_codec.h"
#include "jpeg_made_thumbnail.h"
#include "metadata/exif_carry.h"
#include "metadata/photoshop_resources.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace imagefile {

namespace {

constexpr std::size_t kBufferBytes = 65536;
constexpr std::size_t kMaxSegment = 65533; // payload of one marker segment

/// At this quality and above, color is stored at full resolution to keep edges sharp.
constexpr int kFullChromaQuality = 90;

// libjpeg's output, written to a Sink.
struct Output {
    jpeg_destination_mgr base; // must be first: libjpeg points to it
    Sink *sink;
    Status *failure;
    JOCTET buffer[kBufferBytes];
};

void StartOutput(j_compress_ptr cinfo)
{
    auto *output = reinterpret_cast<Output *>(cinfo->dest);
    output->base.next_output_byte = output->buffer;
    output->base.free_in_buffer = kBufferBytes;
}

void Flush(j_compress_ptr cinfo, std::size_t count)
{
    auto *output = reinterpret_cast<Output *>(cinfo->dest);
    *output->failure = output->sink->WriteAt(output->sink->Size(), output->buffer, count);
    if (!*output->failure)
        std::longjmp(reinterpret_cast<JpegError *>(cinfo->err)->out, 1);
}

boolean EmptyOutput(j_compress_ptr cinfo)
{
    Flush(cinfo, kBufferBytes);
    StartOutput(cinfo);
    return TRUE;
}

void EndOutput(j_compress_ptr cinfo)
{
    Flush(cinfo, kBufferBytes - cinfo->dest->free_in_buffer);
}

struct Segment {
    int marker;
    Bytes payload;
};

void AddSegment(int marker, std::string_view signature, const std::uint8_t *data, std::size_t size,
                std::vector<Segment> *segments)
{
    Segment segment = {marker, Bytes(signature.begin(), signature.end())};
    segment.payload.insert(segment.payload.end(), data, data + size);
    segments->push_back(std::move(segment));
}

Exiv2::ExifData WithoutMakerNote(const Exiv2::ExifData &exif)
{
    Exiv2::ExifData rest;
    for (const Exiv2::Exifdatum &datum : exif)
        if (!IsOfMakerNote(datum))
            rest.add(datum);
    return rest;
}

long CountOf(const Exiv2::Blob &blob)
{
    Exiv2::ExifData fields;
    Exiv2::ExifParser::decode(fields, blob.data(), static_cast<std::uint32_t>(blob.size()));
    return fields.count();
}

// Adds EXIF, which must fit into one segment, and space for a thumbnail if that still fits. If the EXIF doesn't fit,
// Exiv2 encodes it again without keeping the maker note's offset and, if necessary, without previews and large
// values. If it still doesn't fit, the maker note is dropped: in other formats, notes may be larger than a segment.
void AddExif(const Exiv2::ExifData &exif, ThumbnailRoom *room, std::vector<Segment> *segments)
{
    constexpr std::string_view kSignature("Exif\0\0", 6);
    constexpr std::size_t kMaxBlob = kMaxSegment - kSignature.size();
    Exiv2::Blob blob = EncodeExif(exif);
    if (blob.size() > kMaxBlob) {
        const long count = CountOf(blob);
        blob.clear();
        Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, exif);
        if (CountOf(blob) < count)
            Warn("metadata is left out: the largest values of the EXIF, which is too long for a JPEG");
    }
    if (blob.size() > kMaxBlob) {
        blob.clear();
        Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, WithoutMakerNote(exif));
        Warn(blob.size() > kMaxBlob ? "metadata is left out: the EXIF, which is too long for a JPEG"
                                    : "metadata is left out: the maker note, which is too long for a JPEG");
    }
    if (room)
        room->Append(kMaxBlob, &blob);
    if (!blob.empty() && blob.size() <= kMaxBlob)
        AddSegment(JPEG_APP0 + 1, kSignature, blob.data(), blob.size(), segments);
}

void AddXmp(const Bytes &xmp, std::vector<Segment> *segments)
{
    constexpr std::string_view kSignature("http://ns.adobe.com/xap/1.0/\0", 29);
    if (xmp.size() + kSignature.size() > kMaxSegment)
        Warn("metadata is left out: the XMP, which is too long for a JPEG");
    else if (!xmp.empty())
        AddSegment(JPEG_APP0 + 1, kSignature, xmp.data(), xmp.size(), segments);
}

// Adds IPTC in a Photoshop image resource, which may span several segments.
void AddIptc(const Bytes &iptc, std::vector<Segment> *segments)
{
    constexpr std::string_view kSignature("Photoshop 3.0\0", 14);
    if (iptc.empty())
        return;
    const Bytes resource = IptcResource(iptc);
    for (std::size_t at = 0; at < resource.size();) {
        const std::size_t count = std::min(resource.size() - at, kMaxSegment - kSignature.size());
        AddSegment(JPEG_APP0 + 13, kSignature, resource.data() + at, count, segments);
        at += count;
    }
}

std::vector<Segment> Segments(const Metadata &metadata, ThumbnailRoom *room)
{
    std::vector<Segment> segments;
    AddExif(metadata.exif, room, &segments);
    AddXmp(metadata.xmp, &segments);
    AddIptc(metadata.iptc, &segments);
    return segments;
}

/// Encoder of one picture. Objects with destructors are members, so that a jump skips no destructor.
class Encoder {
public:
    Encoder(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink);
    ~Encoder() { jpeg_destroy_compress(&m_cinfo); }
    Encoder(const Encoder &) = delete;
    Encoder &operator=(const Encoder &) = delete;

    Status Write();

private:
    bool TryWrite();
    void SetUp();
    void WriteMetadata();
    void WriteRows();
    std::uint64_t BytesWritten() const;

    const GFL_BITMAP &m_bitmap;
    const SaveOptions &m_options;
    jpeg_compress_struct m_cinfo = {};
    JpegError m_error;
    Status m_failure = Status::Ok();
    std::unique_ptr<Output> m_output;
    std::uint64_t m_exifAt = 0; // position of the first metadata segment's payload in the file
    std::vector<Segment> m_segments;
    std::vector<std::uint8_t> m_row;
    RowSource m_rows;
    std::unique_ptr<MadeThumbnail> m_thumbnail; // null if there is none
};

Encoder::Encoder(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink)
    : m_bitmap(bitmap), m_options(options), m_output(std::make_unique<Output>()), m_rows(bitmap, options.rows)
{
    m_cinfo.err = StartJpegError(&m_error);
    m_output->sink = sink;
    m_output->failure = &m_failure;
    m_output->base.init_destination = StartOutput;
    m_output->base.empty_output_buffer = EmptyOutput;
    m_output->base.term_destination = EndOutput;
}

Status Encoder::Write()
{
    if (m_bitmap.Width > JPEG_MAX_DIMENSION || m_bitmap.Height > JPEG_MAX_DIMENSION)
        return Status::Fail(GFL_ERROR_BAD_BITMAP,
                            Text("JPEG allows sides up to %ld pixels; the picture has %d x %d", JPEG_MAX_DIMENSION,
                                 m_bitmap.Width, m_bitmap.Height));
    ThumbnailRoom room;
    try {
        if (m_options.metadata)
            m_segments = Segments(*m_options.metadata, m_options.thumbnail ? &room : nullptr);
    } catch (const Exiv2::AnyError &error) {
        return Status::Fail(GFL_ERROR_FILE_WRITE, Text("JPEG: the EXIF can't be written: %s", error.what()));
    }
    m_row.resize(static_cast<std::size_t>(m_bitmap.Width) * 3);
    if (room.IsReserved()) {
        m_thumbnail = std::make_unique<MadeThumbnail>();
        if (Status status = m_thumbnail->Start(m_bitmap.Width, m_bitmap.Height, m_bitmap.Type == GFL_GREY ? 1 : 3);
            !status)
            return status;
    }
    if (TryWrite())
        return m_thumbnail ? room.Fill(*m_thumbnail, m_exifAt, m_output->sink) : Status::Ok();
    return m_failure ? Status::Fail(GFL_ERROR_FILE_WRITE, Text("JPEG: %s", m_error.text)) : m_failure;
}

bool Encoder::TryWrite()
{
    if (setjmp(m_error.out) != 0)
        return false;
    jpeg_create_compress(&m_cinfo);
    m_cinfo.dest = &m_output->base;
    SetUp();
    jpeg_start_compress(&m_cinfo, TRUE);
    WriteMetadata();
    WriteRows();
    jpeg_finish_compress(&m_cinfo);
    return true;
}

void Encoder::SetUp()
{
    const bool gray = m_bitmap.Type == GFL_GREY;
    m_cinfo.image_width = static_cast<JDIMENSION>(m_bitmap.Width);
    m_cinfo.image_height = static_cast<JDIMENSION>(m_bitmap.Height);
    m_cinfo.input_components = gray ? 1 : 3;
    m_cinfo.in_color_space = gray ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&m_cinfo);
    jpeg_set_quality(&m_cinfo, std::min<int>(m_options.quality, 100), /*force_baseline=*/TRUE);
    if (m_options.quality >= kFullChromaQuality)
        m_cinfo.comp_info[0].h_samp_factor = m_cinfo.comp_info[0].v_samp_factor = 1;
    if (m_bitmap.Xdpi > 0 && m_bitmap.Ydpi > 0) {
        m_cinfo.density_unit = 1; // per inch
        m_cinfo.X_density = m_bitmap.Xdpi;
        m_cinfo.Y_density = m_bitmap.Ydpi;
    }
}

/// Returns the number of bytes written so far, including those in the buffer.
std::uint64_t Encoder::BytesWritten() const
{
    return m_output->sink->Size() + kBufferBytes - m_output->base.free_in_buffer;
}

void Encoder::WriteMetadata()
{
    m_exifAt = BytesWritten() + 4; // after marker and length
    for (const Segment &segment : m_segments)
        jpeg_write_marker(&m_cinfo, segment.marker, segment.payload.data(),
                          static_cast<unsigned>(segment.payload.size()));
    if (m_options.metadata && !m_options.metadata->icc.empty())
        jpeg_write_icc_profile(&m_cinfo, m_options.metadata->icc.data(),
                               static_cast<unsigned>(m_options.metadata->icc.size()));
}

void Encoder::WriteRows()
{
    const PixelForm from = {m_bitmap.BitsPerComponent, gflChannelsOfType(m_bitmap.Type)};
    const RowConverter convert = ChooseConverter(from, {8, m_cinfo.input_components});
    const std::uint8_t *src = nullptr;
    for (int y = 0; y < m_bitmap.Height; ++y) {
        m_failure = m_rows.Next(&src);
        if (!m_failure)
            std::longjmp(m_error.out, 1);
        convert(src, m_row.data(), m_cinfo.image_width, 255);
        if (m_thumbnail)
            m_thumbnail->AddRow(m_row.data());
        JSAMPROW row = m_row.data();
        jpeg_write_scanlines(&m_cinfo, &row, 1);
    }
}

} // namespace

Status WriteJpeg(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink)
{
    return Encoder(bitmap, options, sink).Write();
}

} // namespace imagefile
