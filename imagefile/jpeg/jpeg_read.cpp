#include "core/color_transform.h"
#include "jpeg_codec.h"
#include "metadata/metadata.h"

#include <jerror.h>

#include <algorithm>
#include <memory>

namespace imagefile {

namespace {

constexpr std::size_t kBufferBytes = 65536;

// libjpeg's input, read from a Source. At the end of the file libjpeg gets an end marker, so that it always terminates.
struct Input {
    jpeg_source_mgr base; // must be first: libjpeg points to it
    const Source *source;
    std::uint64_t at = 0; // of the next byte to fetch
    bool ended = false;   // the file ended before its end marker
    JOCTET buffer[kBufferBytes];
};

boolean FillInput(j_decompress_ptr cinfo)
{
    auto *input = reinterpret_cast<Input *>(cinfo->src);
    std::size_t count = input->source->ReadAt(input->at, input->buffer, kBufferBytes);
    input->at += count;
    if (count == 0) {
        input->ended = true;
        input->buffer[0] = 0xFF;
        input->buffer[1] = JPEG_EOI;
        count = 2;
    }
    input->base.next_input_byte = input->buffer;
    input->base.bytes_in_buffer = count;
    return TRUE;
}

void SkipInput(j_decompress_ptr cinfo, long count)
{
    auto *input = reinterpret_cast<Input *>(cinfo->src);
    const std::size_t wanted = count > 0 ? static_cast<std::size_t>(count) : 0;
    const std::size_t here = std::min(wanted, input->base.bytes_in_buffer);
    input->base.next_input_byte += here;
    input->base.bytes_in_buffer -= here;
    input->at += wanted - here;
}

struct DecoderError : JpegError {
    bool damaged = false; // picture data is missing or wrong
};

// Returns whether a warning means that part of the picture is wrong. Other warnings, such as those about junk between
// the end of the data and the end marker, are harmless.
bool IsDamage(int code)
{
    return code == JWRN_HIT_MARKER || code == JWRN_HUFF_BAD_CODE || code == JWRN_ARITH_BAD_CODE
        || code == JWRN_MUST_RESYNC;
}

void NoteWarning(j_common_ptr cinfo, int level)
{
    auto *error = static_cast<DecoderError *>(reinterpret_cast<JpegError *>(cinfo->err));
    if (level >= 0 || error->damaged || !IsDamage(cinfo->err->msg_code))
        return;
    error->damaged = true;
    cinfo->err->format_message(cinfo, error->text);
}

void LimitScans(j_common_ptr cinfo)
{
    if (reinterpret_cast<j_decompress_ptr>(cinfo)->input_scan_number <= kMaxJpegScans)
        return;
    auto *error = reinterpret_cast<JpegError *>(cinfo->err);
    std::snprintf(error->text, sizeof error->text, "more than %d scans", kMaxJpegScans);
    std::longjmp(error->out, 1);
}

/// Decoder of one picture. Objects with destructors are members, so that a jump skips no destructor.
class Decoder {
public:
    explicit Decoder(const Source &source);
    ~Decoder() { jpeg_destroy_decompress(&m_cinfo); }
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;

    Status Open();
    Status ReadRows(const Box *box, RowSink *rows);
    void Describe(GFL_FILE_INFORMATION *info) const;

private:
    bool TryReadHeader();
    bool TryStart();
    bool TryRows(RowSink *rows);
    void ChooseScale(const Box &box);
    Status StartInks();
    void ReadCmykRow(std::uint8_t *row);
    bool IsCmyk() const { return m_cinfo.num_components == 4; }
    Status Failure() const;
    Status CheckComplete();

    jpeg_decompress_struct m_cinfo = {};
    DecoderError m_error;
    jpeg_progress_mgr m_progress = {};
    std::unique_ptr<Input> m_input;
    std::vector<std::uint8_t> m_cmykRow;
    ColorTransform m_inks;
    bool m_manyScans = false;
};

Decoder::Decoder(const Source &source) : m_input(std::make_unique<Input>())
{
    m_cinfo.err = StartJpegError(&m_error);
    m_error.base.emit_message = NoteWarning;
    m_input->source = &source;
    m_input->base.init_source = [](j_decompress_ptr) {};
    m_input->base.fill_input_buffer = FillInput;
    m_input->base.skip_input_data = SkipInput;
    m_input->base.resync_to_restart = jpeg_resync_to_restart;
    m_input->base.term_source = [](j_decompress_ptr) {};
    m_progress.progress_monitor = LimitScans;
}

bool Decoder::TryReadHeader()
{
    if (setjmp(m_error.out) != 0)
        return false;
    jpeg_create_decompress(&m_cinfo);
    m_cinfo.src = &m_input->base;
    m_cinfo.progress = &m_progress;
    jpeg_read_header(&m_cinfo, TRUE);
    m_manyScans = jpeg_has_multiple_scans(&m_cinfo) != 0;
    return true;
}

bool Decoder::TryStart()
{
    if (setjmp(m_error.out) != 0)
        return false;
    jpeg_start_decompress(&m_cinfo);
    return true;
}

bool Decoder::TryRows(RowSink *rows)
{
    if (setjmp(m_error.out) != 0)
        return false;
    while (m_cinfo.output_scanline < m_cinfo.output_height && !m_error.damaged) {
        const auto y = static_cast<int>(m_cinfo.output_scanline);
        JSAMPROW row = rows->Row(y);
        if (IsCmyk())
            ReadCmykRow(row);
        else
            jpeg_read_scanlines(&m_cinfo, &row, 1);
        rows->Done(y);
    }
    if (!m_error.damaged)
        jpeg_finish_decompress(&m_cinfo);
    return true;
}

void Decoder::ReadCmykRow(std::uint8_t *row)
{
    JSAMPROW cmyk = m_cmykRow.data();
    jpeg_read_scanlines(&m_cinfo, &cmyk, 1);
    if (m_cinfo.saw_Adobe_marker) // Adobe programs store inverted CMYK
        for (std::uint8_t &ink : m_cmykRow)
            ink = static_cast<std::uint8_t>(~ink);
    m_inks.Row(cmyk, row, m_cinfo.output_width);
}

Status Decoder::Failure() const
{
    const int code = m_error.code;
    if (code == JERR_OUT_OF_MEMORY)
        return Status::Fail(GFL_ERROR_NO_MEMORY, Text("JPEG: %s", m_error.text));
    const bool unsupported = code == JERR_NO_SOI || code == JERR_BAD_PRECISION || code == JERR_SOF_UNSUPPORTED
        || code == JERR_CONVERSION_NOTIMPL || code == JERR_FRACT_SAMPLE_NOTIMPL || code == JERR_CCIR601_NOTIMPL
        || code == JERR_NOTIMPL || code == JERR_ARITH_NOTIMPL;
    return Status::Fail(unsupported ? GFL_ERROR_UNKNOWN_FORMAT : GFL_ERROR_FILE_READ,
                        Text("JPEG: %s%s", m_error.text, m_input->ended ? " (the file ends early)" : ""));
}

Status Decoder::Open()
{
    if (!TryReadHeader())
        return Failure();
    const int components = m_cinfo.num_components;
    if (components != 1 && components != 3 && components != 4)
        return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT,
                            Text("JPEG: %d components; 1, 3 and 4 are supported", components));
    if (Status status = CheckImageSize(m_cinfo.image_width, m_cinfo.image_height, 4, 8); !status)
        return status;
    const std::int64_t pixels = std::int64_t(m_cinfo.image_width) * m_cinfo.image_height;
    return CheckClaim(pixels, pixels * 3, m_input->source->Size(), kJpegPixelsPerByte);
}

void Decoder::ChooseScale(const Box &box)
{
    const auto width = static_cast<int>(m_cinfo.image_width), height = static_cast<int>(m_cinfo.image_height);
    const Box wanted = FitInto(box, width, height);
    unsigned eighths = 1; // only powers of two, which are fast
    while (eighths < 8
           && (width * std::int64_t(eighths) < wanted.width * std::int64_t(8)
               || height * std::int64_t(eighths) < wanted.height * std::int64_t(8)))
        eighths *= 2;
    m_cinfo.scale_num = eighths;
    m_cinfo.scale_denom = 8;
}

Status Decoder::CheckComplete()
{
    // A Huffman-coded file with a single scan may be complete without its end marker. Without one, a file with several
    // scans or arithmetic codes counts as damaged, because missing scans or codes can't be detected.
    const bool needsEndMarker = m_error.damaged || m_manyScans || m_cinfo.arith_code;
    if (m_input->ended && needsEndMarker)
        return Status::Fail(GFL_ERROR_FILE_READ, "JPEG: the file ends early");
    if (m_error.damaged)
        return Failure();
    return Status::Ok();
}

Status Decoder::StartInks()
{
    m_cmykRow.resize(std::size_t(m_cinfo.output_width) * 4);
    Metadata metadata;
    if (Status status = ReadExiv2Metadata(*m_input->source, &metadata); !status)
        return status;
    return m_inks.StartInks(metadata.icc, 8, /*hasAlpha=*/false);
}

Status Decoder::ReadRows(const Box *box, RowSink *rows)
{
    const int components = m_cinfo.num_components;
    m_cinfo.out_color_space = components == 1 ? JCS_GRAYSCALE : components == 3 ? JCS_RGB : JCS_CMYK;
    if (box)
        ChooseScale(*box);
    if (!TryStart())
        return Failure();
    if (Status status = IsCmyk() ? StartInks() : Status::Ok(); !status)
        return status;
    const PixelForm form = {8, components == 1 ? 1 : 3};
    Status status = rows->Start(static_cast<int>(m_cinfo.output_width), static_cast<int>(m_cinfo.output_height), form);
    if (!status)
        return status;
    if (!TryRows(rows))
        return Failure();
    return CheckComplete();
}

std::uint16_t Dpi(unsigned density, unsigned unit)
{
    const double dpi = unit == 1 ? density : unit == 2 ? density * 2.54 : 0.0; // 1: per inch, 2: per centimeter
    return static_cast<std::uint16_t>(std::min(dpi + 0.5, 65535.0));
}

void Decoder::Describe(GFL_FILE_INFORMATION *info) const
{
    std::snprintf(info->Description, sizeof info->Description, "JPEG%s%s",
                  m_cinfo.progressive_mode ? " progressive" : "", IsCmyk() ? " CMYK" : "");
    info->Width = static_cast<std::int32_t>(m_cinfo.image_width);
    info->Height = static_cast<std::int32_t>(m_cinfo.image_height);
    info->BitsPerComponent = 8;
    info->ComponentsPerPixel = static_cast<std::uint16_t>(m_cinfo.num_components);
    info->ColorModel = IsCmyk() ? GFL_CM_CMYK : m_cinfo.num_components == 1 ? GFL_CM_GREY : GFL_CM_RGB;
    info->Xdpi = Dpi(m_cinfo.X_density, m_cinfo.density_unit);
    info->Ydpi = Dpi(m_cinfo.Y_density, m_cinfo.density_unit);
}

} // namespace

Status ReadJpegInfo(const Source &source, GFL_FILE_INFORMATION *info)
{
    Decoder decoder(source);
    if (Status status = decoder.Open(); !status)
        return status;
    decoder.Describe(info);
    return Status::Ok();
}

Status ReadJpegPixels(const Source &source, const Box *box, RowSink *rows)
{
    Decoder decoder(source);
    if (Status status = decoder.Open(); !status)
        return status;
    return decoder.ReadRows(box, rows);
}

} // namespace imagefile
