#include "ResultValues.h"

#include "KImage.h"

#include <cmath>

namespace {

constexpr int kChannels = 4, kColors = 3;

/// Applies one curve per color, extended to negative values as an odd function, to @p count pixels. NaN, for which the
/// tables have no segment, stays unchanged.
void ApplyTables(const TransferCurve::Table *const (&tables)[kColors], float *pixels, int count)
{
    for (float *pixel = pixels; pixel < pixels + std::ptrdiff_t(kChannels) * count; pixel += kChannels) {
        for (int c = 0; c < kColors; ++c) {
            if (!std::isnan(pixel[c]))
                pixel[c] = std::copysign(tables[c]->At(std::abs(pixel[c])), pixel[c]);
        }
    }
}

/// Multiplies the colors by alpha, which the output's format doesn't hold.
void Flatten(float *pixels, int count)
{
    for (float *pixel = pixels; pixel < pixels + std::ptrdiff_t(kChannels) * count; pixel += kChannels) {
        for (int c = 0; c < kColors; ++c)
            pixel[c] *= pixel[kColors];
    }
}

} // namespace

void ResultValues::Apply(KImage *image) const
{
    const GFL_BITMAP &bitmap = *image->m_bitmap;
    const TransferCurve srgb = TransferCurve::Srgb();
    for (int y = 0; y < bitmap.Height; ++y) {
        auto *row = reinterpret_cast<float *>(bitmap.Data + static_cast<size_t>(y) * bitmap.BytesPerLine);
        if (toLight && !light.IsLinear())
            ApplyTables({&light.LightTable(0), &light.LightTable(1), &light.LightTable(2)}, row, bitmap.Width);
        if (encodes)
            ApplyTables({&srgb.StoredTable(0), &srgb.StoredTable(1), &srgb.StoredTable(2)}, row, bitmap.Width);
        if (flattens)
            Flatten(row, bitmap.Width);
    }
}
