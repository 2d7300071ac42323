#include "row_sink.h"

#include <algorithm>
#include <cmath>

namespace imagefile {

Box FitInto(const Box &box, int width, int height)
{
    const double scale =
        std::min({1.0, static_cast<double>(box.width) / width, static_cast<double>(box.height) / height});
    return {std::max(1, static_cast<int>(std::lround(width * scale))),
            std::max(1, static_cast<int>(std::lround(height * scale)))};
}

bool CanReplace(const Box &picture, const Box &preview, const Box &box)
{
    constexpr double kMaxDifference = 0.03;
    const Box wanted = FitInto(box, picture.width, picture.height);
    const double proportion = static_cast<double>(preview.width) * picture.height / preview.height / picture.width;
    return preview.width >= wanted.width && preview.height >= wanted.height
        && std::abs(proportion - 1.0) < kMaxDifference;
}

PixelForm DeliveredForm(const PixelForm &stored, const GFL_LOAD_PARAMS &params)
{
    PixelForm form = stored;
    if ((params.Flags & GFL_LOAD_ORIGINAL_DEPTH) == 0)
        form.bits = 8;
    const int channels = gflChannelsOfType(params.ColorModel);
    if ((params.Flags & GFL_LOAD_FORCE_COLOR_MODEL) != 0 && channels != 0)
        form.channels = channels;
    return form;
}

Status NewBitmap(int width, int height, const PixelForm &form, Owned<GFL_BITMAP> *bitmap)
{
    Owned<GFL_BITMAP> made(NewZeroed<GFL_BITMAP>(), gflFreeBitmap);
    made->Type = TypeOfChannels(form.channels);
    made->Width = width;
    made->Height = height;
    made->LinePadding = 4;
    made->BitsPerComponent = static_cast<std::uint16_t>(form.bits);
    made->ComponentsPerPixel = static_cast<std::uint16_t>(form.channels);
    made->BytesPerPixel = static_cast<std::uint16_t>(form.BytesPerPixel());
    // <= 2^20 * 16: sides were checked
    made->BytesPerLine = (static_cast<std::uint32_t>(width) * made->BytesPerPixel + 3) & ~3u;
    made->TransparentIndex = -1;
    made->ColorUsed = form.channels == 1 ? 256 : 0;
    const std::size_t bytes = static_cast<std::size_t>(made->BytesPerLine) * static_cast<std::size_t>(height);
    made->Data = static_cast<std::uint8_t *>(Allocate(bytes));
    if (!made->Data)
        return Status::Fail(GFL_ERROR_NO_MEMORY,
                            Text("no memory for %d x %d pixels (%zu bytes)", width, height, bytes));
    *bitmap = std::move(made);
    return Status::Ok();
}

Status CheckShape(const GFL_BITMAP &bitmap)
{
    const int channels = bitmap.Type == GFL_GREY || bitmap.Type == GFL_RGB || bitmap.Type == GFL_RGBA
        ? gflChannelsOfType(bitmap.Type)
        : 0;
    const int bits = bitmap.BitsPerComponent;
    const std::int64_t rowBytes = std::int64_t(bitmap.Width) * channels * (bits / 8); // <= 2^31 * 4 * 8191
    const bool good = channels != 0 && bitmap.Width > 0 && bitmap.Height > 0 && bitmap.Origin == 0
        && (bits == 8 || bits == 16 || bits == 32) && bitmap.BytesPerLine >= rowBytes;
    if (good)
        return Status::Ok();
    return Status::Fail(GFL_ERROR_BAD_BITMAP,
                        Text("unsupported bitmap: type %d, %d bits, %d x %d pixels in rows of %u bytes", bitmap.Type,
                             bits, bitmap.Width, bitmap.Height, bitmap.BytesPerLine));
}

Status CheckBitmap(const GFL_BITMAP &bitmap)
{
    return bitmap.Data ? CheckShape(bitmap) : Status::Fail(GFL_ERROR_BAD_BITMAP, "the bitmap has no pixels");
}

BitmapRows::BitmapRows(const GFL_LOAD_PARAMS &params) : m_params(params), m_bitmap(nullptr, gflFreeBitmap) { }

Status BitmapRows::Start(int width, int height, const PixelForm &form)
{
    const PixelForm wanted = DeliveredForm(form, m_params);
    m_convert = nullptr;
    if (!(wanted == form)) {
        m_convert = ChooseConverter(form, wanted);
        m_row.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(form.BytesPerPixel()));
    }
    return NewBitmap(width, height, wanted, &m_bitmap);
}

std::uint8_t *BitmapRows::Row(int y)
{
    if (m_convert)
        return m_row.data();
    return m_bitmap->Data + static_cast<std::size_t>(y) * m_bitmap->BytesPerLine;
}

void BitmapRows::Done(int y)
{
    std::uint8_t *row = m_bitmap->Data + static_cast<std::size_t>(y) * m_bitmap->BytesPerLine;
    const std::size_t pixelBytes = static_cast<std::size_t>(m_bitmap->Width) * m_bitmap->BytesPerPixel;
    if (m_convert)
        m_convert(m_row.data(), row, static_cast<std::size_t>(m_bitmap->Width), m_params.DefaultAlpha);
    std::fill(row + pixelBytes, row + m_bitmap->BytesPerLine, std::uint8_t(0)); // don't leak old memory in the padding
}

ReducedRows::ReducedRows(const GFL_LOAD_PARAMS &params, const Box &box) : m_box(box), m_result(params) { }

Status ReducedRows::Start(int width, int height, const PixelForm &form)
{
    const Box target = FitInto(m_box, width, height);
    m_form = form;
    m_width = width;
    m_height = height;
    m_targetWidth = target.width;
    m_targetHeight = target.height;
    m_targetRow = m_rowsAdded = 0;
    m_row.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(form.BytesPerPixel()));
    m_sums.assign(static_cast<std::size_t>(target.width) * static_cast<std::size_t>(form.channels), 0.0);
    return m_result.Start(target.width, target.height, form);
}

std::uint8_t *ReducedRows::Row(int)
{
    return m_row.data();
}

void ReducedRows::Done(int y)
{
    const bool is8 = m_form.bits == 8, is16 = m_form.bits == 16;
    is8 ? AddRow<std::uint8_t>() : is16 ? AddRow<std::uint16_t>() : AddRow<float>();
    // Of h source rows, target row t of H covers those from t * h / H up to, but not including, (t + 1) * h / H.
    const std::int64_t end = (m_targetRow + std::int64_t(1)) * m_height / m_targetHeight;
    if (y + std::int64_t(1) == end)
        is8 ? FinishRow<std::uint8_t>() : is16 ? FinishRow<std::uint16_t>() : FinishRow<float>();
}

template <class T> void ReducedRows::AddRow()
{
    const T *src = reinterpret_cast<const T *>(m_row.data());
    const int channels = m_form.channels;
    for (int t = 0; t < m_targetWidth; ++t) {
        double *sum = m_sums.data() + static_cast<std::size_t>(t) * static_cast<std::size_t>(channels);
        const auto end = static_cast<int>((t + std::int64_t(1)) * m_width / m_targetWidth);
        for (auto x = static_cast<int>(std::int64_t(t) * m_width / m_targetWidth); x < end; ++x)
            for (int c = 0; c < channels; ++c)
                sum[c] += static_cast<double>(*src++);
    }
    ++m_rowsAdded;
}

template <class T> void ReducedRows::FinishRow()
{
    T *dst = reinterpret_cast<T *>(m_result.Row(m_targetRow));
    const auto channels = static_cast<std::size_t>(m_form.channels);
    for (int t = 0; t < m_targetWidth; ++t) {
        const std::int64_t begin = std::int64_t(t) * m_width / m_targetWidth;
        const std::int64_t end = (t + std::int64_t(1)) * m_width / m_targetWidth;
        const double count = static_cast<double>(end - begin) * m_rowsAdded;
        for (std::size_t c = 0; c < channels; ++c) {
            double &sum = m_sums[static_cast<std::size_t>(t) * channels + c];
            *dst++ = ToSample<T>(static_cast<float>(sum / count));
            sum = 0.0;
        }
    }
    m_result.Done(m_targetRow++);
    m_rowsAdded = 0;
}

} // namespace imagefile
