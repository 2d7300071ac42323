#include "core/image_limits.h"
#include "jpeg/jpeg_codec.h"
#include "raw_codec.h"
#include "raw_stream.h"

#include <algorithm>
#include <cmath>

namespace imagefile {

namespace {

float ValidFactor(float value)
{
    return std::isfinite(value) && value > 0.0f ? std::clamp(value, 1e-3f, 1e3f) : 1.0f;
}

Status StatusOf(int code)
{
    if (code == LIBRAW_SUCCESS)
        return Status::Ok();
    const bool memory = code == LIBRAW_UNSUFFICIENT_MEMORY || code == LIBRAW_TOO_BIG || code == LIBRAW_MEMPOOL_OVERFLOW;
    const GflError error = code == LIBRAW_FILE_UNSUPPORTED || code == LIBRAW_NOT_IMPLEMENTED ? GFL_ERROR_UNKNOWN_FORMAT
        : memory                                                                             ? GFL_ERROR_NO_MEMORY
                                                                                             : GFL_ERROR_FILE_READ;
    return Status::Fail(error, Text("camera raw: %s", LibRaw::strerror(code)));
}

} // namespace

// LibRaw with scaling factors for red and blue, for which it has no settings, and with errors stored, not printed.
class RawFile::Developer : public LibRaw {
public:
    Developer();

    float redScaling = 1.0f;
    float blueScaling = 1.0f;
    bool damaged = false;

private:
    static Developer *Of(void *context) { return static_cast<Developer *>(static_cast<LibRaw *>(context)); }

    bool BalancesAutomatically() const
    {
        const libraw_output_params_t &params = imgdata.params;
        return params.use_auto_wb != 0 || (params.use_camera_wb != 0 && imgdata.color.cam_mul[0] < -0.5f);
    }
    void ScaleMultipliers();
    void ScalePixels();
};

RawFile::Developer::Developer() : LibRaw(LIBRAW_OPIONS_NO_MEMERR_CALLBACK | LIBRAW_OPIONS_NO_DATAERR_CALLBACK)
{
    set_dataerror_handler([](void *data, const char *, int) { static_cast<Developer *>(data)->damaged = true; }, this);
    callbacks.pre_scalecolors_cb = [](void *context) { Of(context)->ScaleMultipliers(); };
    callbacks.pre_preinterpolate_cb = [](void *context) { Of(context)->ScalePixels(); };
}

void RawFile::Developer::ScaleMultipliers()
{
    for (float *multipliers : {imgdata.color.cam_mul, imgdata.color.pre_mul}) {
        if (BalancesAutomatically())
            continue;
        multipliers[0] *= redScaling;
        multipliers[2] *= blueScaling;
    }
}

// Scales red and blue in the pixels if the balance is automatic: LibRaw computes that balance only while applying it.
void RawFile::Developer::ScalePixels()
{
    if (!BalancesAutomatically() || (redScaling == 1.0f && blueScaling == 1.0f))
        return;
    const std::size_t pixels = std::size_t(imgdata.sizes.iwidth) * imgdata.sizes.iheight;
    for (std::size_t i = 0; i < pixels; ++i) {
        std::uint16_t *pixel = imgdata.image[i];
        pixel[0] = ToSample<std::uint16_t>(static_cast<float>(pixel[0]) * redScaling);
        pixel[2] = ToSample<std::uint16_t>(static_cast<float>(pixel[2]) * blueScaling);
    }
}

RawFile::RawFile() : m_raw(std::make_unique<Developer>()) { }

RawFile::~RawFile() = default;

Status RawFile::Open(const Source &source)
{
    m_source = &source;
    m_stream = std::make_unique<RawStream>(source);
    m_raw->imgdata.params.user_flip = 0;
    if (Status status = StatusOf(m_raw->open_datastream(m_stream.get())); !status)
        return status;
    const libraw_image_sizes_t &sizes = m_raw->imgdata.sizes;
    if (Status status = CheckImageSize(sizes.raw_width, sizes.raw_height, 4, 16); !status)
        return status;
    if (Status status = CheckImageSize(sizes.width, sizes.height, 4, 16); !status)
        return status;
    const std::int64_t stored = std::int64_t(sizes.raw_width) * sizes.raw_height * 2; // <= 2^33
    return CheckClaim(stored, stored, source.Size(), kRawRatio);
}

Status RawFile::Describe(GFL_FILE_INFORMATION *info)
{
    if (Status status = StatusOf(m_raw->adjust_sizes_info_only()); !status)
        return status;
    std::snprintf(info->Description, sizeof info->Description, "Camera raw");
    info->Width = m_raw->imgdata.sizes.iwidth;
    info->Height = m_raw->imgdata.sizes.iheight;
    info->BitsPerComponent = 16;
    const bool isGray = m_raw->imgdata.idata.colors == 1;
    info->ComponentsPerPixel = isGray ? 1 : 3;
    info->ColorModel = isGray ? GFL_CM_GREY : GFL_CM_RGB;
    return Status::Ok();
}

void RawFile::SetUp(const GFL_LOAD_PARAMS &params, Size size)
{
    libraw_output_params_t &to = m_raw->imgdata.params;
    to.use_auto_wb = params.RawUseAutomaticBalance != 0;
    // If both were set, LibRaw would use the camera's balance.
    to.use_camera_wb = params.RawUseCameraBalance != 0 && params.RawUseAutomaticBalance == 0;
    to.highlight = std::min<int>(params.RawHighlight, 9);
    to.no_auto_bright = params.RawAutoBright == 0;
    to.gamm[0] = 1.0 / static_cast<double>(ValidFactor(params.RawGamma));
    to.gamm[1] = 0.0; // no linear toe
    to.bright = ValidFactor(params.RawBrightness);
    to.adjust_maximum_thr = 0.0f; // otherwise brightness depends on the brightest pixel
    to.output_bps = (params.Flags & GFL_LOAD_ORIGINAL_DEPTH) != 0 ? 16 : 8;
    to.half_size = size == Size::Half;
    m_raw->redScaling = ValidFactor(params.RawRedScaling);
    m_raw->blueScaling = ValidFactor(params.RawBlueScaling);
}

Status RawFile::Develop(const GFL_LOAD_PARAMS &params, Size size, RowSink *rows)
{
    SetUp(params, size);
    if (Status status = StatusOf(m_raw->unpack()); !status)
        return status;
    if (m_raw->damaged || m_raw->error_count() > 0)
        return Status::Fail(GFL_ERROR_FILE_READ, "camera raw: pixels are damaged or missing");
    if (Status status = StatusOf(m_raw->dcraw_process()); !status)
        return status;
    return DeliverPicture(rows);
}

Status RawFile::DeliverPicture(RowSink *rows)
{
    int width = 0, height = 0, colors = 0, bits = 0;
    m_raw->get_mem_image_format(&width, &height, &colors, &bits);
    if (colors != 1 && colors != 3)
        return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT, Text("camera raw: %d colors", colors));
    const PixelForm form = {bits, colors};
    const std::size_t rowBytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(form.BytesPerPixel());
    std::vector<std::uint8_t> pixels(rowBytes * static_cast<std::size_t>(height));
    if (Status status = StatusOf(m_raw->copy_mem_image(pixels.data(), static_cast<int>(rowBytes), 0)); !status)
        return status;
    m_raw->recycle(); // frees four times as much memory as the picture takes
    if (Status status = rows->Start(width, height, form); !status)
        return status;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t *row = pixels.data() + static_cast<std::size_t>(y) * rowBytes;
        std::copy(row, row + rowBytes, rows->Row(y));
        rows->Done(y);
    }
    return Status::Ok();
}

RawFile::Size RawFile::SizeFor(const Box &box) const
{
    const int width = m_raw->imgdata.sizes.width, height = m_raw->imgdata.sizes.height;
    const Box wanted = FitInto(box, width, height);
    return wanted.width <= width / 2 && wanted.height <= height / 2 ? Size::Half : Size::Full;
}

Status RawFile::ReadPreview(const Box &box, RowSink *rows)
{
    const libraw_thumbnail_t &preview = m_raw->imgdata.thumbnail;
    const Box picture = {m_raw->imgdata.sizes.width, m_raw->imgdata.sizes.height};
    const Status small = Status::Fail(GFL_ERROR_UNKNOWN_FORMAT, "camera raw: no preview of the requested size");
    if (preview.tlength > m_source->Size())
        return small;
    if (Status status = StatusOf(m_raw->unpack_thumb()); !status)
        return status;
    if (preview.tformat == LIBRAW_THUMBNAIL_BITMAP)
        return CanReplace(picture, {preview.twidth, preview.theight}, box) ? DeliverPreviewBitmap(rows) : small;
    if (preview.tformat != LIBRAW_THUMBNAIL_JPEG)
        return small;
    const Source jpeg(preview.thumb, preview.tlength);
    GFL_FILE_INFORMATION info = {};
    if (Status status = ReadJpegInfo(jpeg, &info); !status)
        return status;
    return CanReplace(picture, {info.Width, info.Height}, box) ? ReadJpegPixels(jpeg, &box, rows) : small;
}

Status RawFile::DeliverPreviewBitmap(RowSink *rows)
{
    const libraw_thumbnail_t &preview = m_raw->imgdata.thumbnail;
    const std::size_t rowBytes = std::size_t(preview.twidth) * 3;
    if (preview.tcolors != 3 || preview.tlength / rowBytes < preview.theight)
        return Status::Fail(GFL_ERROR_FILE_READ, "camera raw: the preview is too short");
    if (Status status = rows->Start(preview.twidth, preview.theight, {8, 3}); !status)
        return status;
    for (int y = 0; y < preview.theight; ++y) {
        const char *row = preview.thumb + static_cast<std::size_t>(y) * rowBytes;
        std::copy(row, row + rowBytes, reinterpret_cast<char *>(rows->Row(y)));
        rows->Done(y);
    }
    return Status::Ok();
}

} // namespace imagefile
