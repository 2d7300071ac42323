#include "FittedBands.h"

#include "KException.h"
#include "KImage.h"

namespace {

// Sharp sampling works in units of 64 rows, each with the source rows around it. Lower bands would repeat that work.
constexpr int kBandRows = 64;

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
      m_splitsColors(plan.fit.correction.red || plan.fit.correction.blue),
      m_warp(plan.fit.correction, SamplingOf(sampling), plan.light, SourceOf(source)),
      m_file(plan.file),
      m_values(plan.values)
{
    m_values.flattens = !m_file.HasAlpha() && (HasAlpha(source) || m_warp.LeavesEmpty());
}

unsigned short FittedBands::ResultType() const
{
    const bool isGray = m_picture.type() == GFL_GREY && !m_splitsColors;
    const bool hasAlpha = m_file.HasAlpha() && (HasAlpha(m_picture) || m_warp.LeavesEmpty());
    return hasAlpha ? GFL_RGBA : isGray ? GFL_GREY : GFL_RGB;
}

int FittedBands::ResultBits() const
{
    const int bits = m_picture.bitsPerComponent();
    return m_file.Bits(bits <= 8 ? 8 : bits <= 16 ? 16 : 32);
}

void FittedBands::Fill(KImage &rows, int firstRow)
{
    const int end = firstRow + rows.height();
    for (int row = firstRow, count = 0; row < end; row += count) {
        if (!m_band.m_bitmap || row < m_firstRow || row >= m_firstRow + m_band.height())
            MakeBand(row);
        count = qMin(end, m_firstRow + m_band.height()) - row;
        m_band.CropCopyTo(0, row - m_firstRow, rows.width(), count, rows, 0, row - firstRow);
    }
}

void FittedBands::MakeBand(int firstRow)
{
    const int rows = qMin(kBandRows, m_picture.height() - firstRow);
    if (!m_band.m_bitmap || m_band.height() != rows)
        m_band.AllocBitmap(m_picture.width(), rows, GFL_RGBA, 32, /*clear=*/false, nullptr, 0);
    m_firstRow = firstRow;
    Render(m_band, firstRow);
    m_values.Apply(&m_band);
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
            throw KException(QStringLiteral("Invalid Parameter"), KPlace()); // the whole picture is already in memory
        const int more = range.end - range.first;
        range = {qMax(0, range.first - more), qMin(m_picture.height(), range.end + more)};
        m_source.Hold(range.first, range.end);
    }
}
