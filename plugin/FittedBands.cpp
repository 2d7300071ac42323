#include "FittedBands.h"

#include "KException.h"
#include "KImage.h"

namespace {

bool HasAlpha(const KImage &image)
{
    return image.m_bitmap->ComponentsPerPixel == 4;
}

FittedWarp::Source SourceOf(const KImage &image)
{
    return {image.bitsPerComponent() > 16, HasAlpha(image)};
}

FittedWarp::Sampling SamplingOf(Sampling sampling)
{
    return sampling == Sampling::Sharp ? FittedWarp::Sampling::Sharp : FittedWarp::Sampling::Bilinear;
}

} // namespace

FittedBands::FittedBands(const FittedPlan &plan, Sampling sampling, const KImage &source)
    : m_picture(source),
      m_source(source),
      m_warp(plan.fit.correction, SamplingOf(sampling), plan.light, SourceOf(source))
{
}

unsigned short FittedBands::ResultType() const
{
    return static_cast<unsigned short>(HasAlpha(m_picture) || m_warp.LeavesEmpty() ? GFL_RGBA : GFL_RGB);
}

int FittedBands::ResultBits() const
{
    const int bits = m_picture.bitsPerComponent();
    return bits <= 8 ? 8 : bits <= 16 ? 16 : 32;
}

void FittedBands::Fill(KImage &rows, int firstRow)
{
    m_band.AllocBitmap(rows.width(), rows.height(), GFL_RGBA, 32, /*clear=*/false, nullptr, 0);
    Render(m_band, firstRow);
    m_band.CropCopyTo(0, 0, rows.width(), rows.height(), rows, 0, 0);
}

void FittedBands::FillFloat(KImage &image)
{
    Render(image, 0);
}

void FittedBands::Render(KImage &band, int firstRow)
{
    FittedWarp::RowRange range = m_warp.RowsFor(firstRow, band.height());
    m_source.Hold(range.first, range.end);
    while (!m_warp.Render(m_source.Image(), m_source.FirstRow(), band, firstRow)) {
        if (range.first == 0 && range.end == m_picture.height())
            throw KException(QStringLiteral("Invalid Parameter"), KPlace()); // the whole picture is held already
        const int more = range.end - range.first;
        range = {qMax(0, range.first - more), qMin(m_picture.height(), range.end + more)};
        m_source.Hold(range.first, range.end);
    }
}
