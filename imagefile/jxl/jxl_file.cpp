#include "core/limits.h"
#include "jxl_codec.h"

#include <algorithm>

namespace imagefile {

namespace {

constexpr std::size_t kPieceBytes = std::size_t(1) << 20;

} // namespace

Status JxlFile::Open(const Source &source)
{
    m_source = &source;
    m_decoder.reset(JxlDecoderCreate(nullptr));
    constexpr int kEvents = JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE;
    if (!m_decoder || JxlDecoderSubscribeEvents(m_decoder.get(), kEvents) != JXL_DEC_SUCCESS
        || JxlDecoderSetKeepOrientation(m_decoder.get(), JXL_TRUE) != JXL_DEC_SUCCESS
        || JxlDecoderSetUnpremultiplyAlpha(m_decoder.get(), JXL_TRUE) != JXL_DEC_SUCCESS)
        return Status::Fail(GFL_ERROR_NO_MEMORY, "JPEG XL: can't start libjxl");
    const JxlDecoderStatus status = Next();
    return status == JXL_DEC_BASIC_INFO ? TakeInfo() : Failure(status);
}

Status JxlFile::Failure(JxlDecoderStatus status) const
{
    return Status::Fail(GFL_ERROR_FILE_READ,
                        status == JXL_DEC_NEED_MORE_INPUT
                            ? std::string("JPEG XL: the file ends early")
                            : Text("JPEG XL: damaged, or not supported by libjxl (status %d)", status));
}

// Gives the decoder its unused bytes again, followed by the next piece of the file. Returns false at the end of the
// file.
bool JxlFile::Refill()
{
    const std::size_t left = JxlDecoderReleaseInput(m_decoder.get());
    m_piece.erase(m_piece.begin(), m_piece.end() - static_cast<std::ptrdiff_t>(std::min(left, m_piece.size())));
    const std::size_t kept = m_piece.size();
    m_piece.resize(kept + kPieceBytes);
    const std::size_t count = m_source->ReadAt(m_at, m_piece.data() + kept, kPieceBytes);
    m_piece.resize(kept + count);
    m_at += count;
    if (count == 0)
        return false;
    // Don't close the input after the last piece: libjxl would then write to standard error if the file ends early.
    return JxlDecoderSetInput(m_decoder.get(), m_piece.data(), m_piece.size()) == JXL_DEC_SUCCESS;
}

// Returns the next event, or JXL_DEC_NEED_MORE_INPUT if the file has no more bytes.
JxlDecoderStatus JxlFile::Next()
{
    for (;;) {
        const JxlDecoderStatus status = JxlDecoderProcessInput(m_decoder.get());
        if (status != JXL_DEC_NEED_MORE_INPUT || !Refill())
            return status;
    }
}

Status JxlFile::TakeInfo()
{
    if (JxlDecoderGetBasicInfo(m_decoder.get(), &m_info) != JXL_DEC_SUCCESS)
        return Failure(JXL_DEC_ERROR);
    const bool isFloat = m_info.exponent_bits_per_sample > 0 || m_info.bits_per_sample > 16;
    m_form.bits = isFloat ? 32 : m_info.bits_per_sample > 8 ? 16 : 8;
    m_form.channels = m_info.alpha_bits > 0 ? 4 : m_info.num_color_channels == 1 ? 1 : 3;
    if (m_info.num_extra_channels > kMaxJxlExtraChannels)
        return Status::Fail(GFL_ERROR_FILE_READ,
                            Text("JPEG XL: %u extra channels; up to %u are supported", m_info.num_extra_channels,
                                 kMaxJxlExtraChannels));
    for (std::uint32_t i = 0; i < m_info.num_extra_channels; ++i) {
        JxlExtraChannelInfo channel;
        if (JxlDecoderGetExtraChannelInfo(m_decoder.get(), i, &channel) == JXL_DEC_SUCCESS
            && channel.type == JXL_CHANNEL_BLACK)
            return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT, "JPEG XL: CMYK; only gray and RGB are supported");
    }
    if (Status status = CheckImageSize(m_info.xsize, m_info.ysize, m_form.channels, m_form.bits); !status)
        return status;
    const std::int64_t pixels = std::int64_t(m_info.xsize) * m_info.ysize; // <= 2^40
    const std::int64_t decoded = pixels * (m_info.num_color_channels + m_info.num_extra_channels) * 4;
    return CheckClaim(decoded, pixels * m_form.BytesPerPixel(), m_source->Size(), kUnboundedRatio);
}

void JxlFile::Describe(GFL_FILE_INFORMATION *info) const
{
    std::snprintf(info->Description, sizeof info->Description, "%s",
                  m_info.have_animation ? "JPEG XL animation" : "JPEG XL");
    info->Width = static_cast<std::int32_t>(m_info.xsize);
    info->Height = static_cast<std::int32_t>(m_info.ysize);
    info->BitsPerComponent = static_cast<std::uint16_t>(m_form.bits);
    info->ComponentsPerPixel = static_cast<std::uint16_t>(m_info.num_color_channels + (m_info.alpha_bits > 0 ? 1 : 0));
    info->ColorModel = m_info.num_color_channels == 1 ? GFL_CM_GREY : GFL_CM_RGB;
}

JxlPixelFormat JxlFile::Format() const
{
    return {static_cast<std::uint32_t>(m_form.channels),
            m_form.bits == 32       ? JXL_TYPE_FLOAT
                : m_form.bits == 16 ? JXL_TYPE_UINT16
                                    : JXL_TYPE_UINT8,
            JXL_LITTLE_ENDIAN, 0};
}

// Buffers the whole picture, because libjxl delivers groups of pixels in any order.
Status JxlFile::ReadPixels(RowSink *rows)
{
    JxlDecoderStatus status = Next();
    if (status == JXL_DEC_COLOR_ENCODING) {
        ChooseColors();
        status = Next();
    }
    if (status != JXL_DEC_NEED_IMAGE_OUT_BUFFER)
        return Failure(status);
    const std::size_t rowBytes = std::size_t(m_info.xsize) * static_cast<std::size_t>(m_form.BytesPerPixel());
    Bytes pixels(rowBytes * m_info.ysize);
    const JxlPixelFormat format = Format();
    if (JxlDecoderSetImageOutBuffer(m_decoder.get(), &format, pixels.data(), pixels.size()) != JXL_DEC_SUCCESS)
        return Failure(JXL_DEC_ERROR);
    status = Next();
    if (status != JXL_DEC_FULL_IMAGE)
        return Failure(status);
    const int height = static_cast<int>(m_info.ysize);
    if (Status started = rows->Start(static_cast<int>(m_info.xsize), height, m_form); !started)
        return started;
    for (int y = 0; y < height; ++y) {
        std::copy_n(pixels.data() + static_cast<std::size_t>(y) * rowBytes, rowBytes, rows->Row(y));
        rows->Done(y);
    }
    return Status::Ok();
}

} // namespace imagefile
