#include "FittedBands.h"

#include "KException.h"
#include "KImage.h"

namespace {

// Sharp sampling works in units of 64 rows and prepares the source rows around each. Smaller bands would repeat that
// work.
constexpr int kBandRows = GFL_FAST_ROWS;

// Rows converted at once: few enough that KImage doesn't divide them among OpenMP threads. Otherwise, each thread that
// calls Fill would start a team of threads.
constexpr int kRowsAtOnce = 8;

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

FittedBands::FittedBands(const FittedPlan &plan, Sampling sampling, const KImage &source, WaitForRows wait)
    : m_picture(source),
      m_wait(std::move(wait)),
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

std::unique_ptr<FittedBands::Work> FittedBands::Take()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_idle.empty())
        return std::make_unique<Work>(m_picture);
    std::unique_ptr<Work> work = std::move(m_idle.back());
    m_idle.pop_back();
    return work;
}

void FittedBands::Fill(KImage &rows, int firstRow)
{
    std::unique_ptr<Work> work = Take();
    const int end = firstRow + rows.height();
    for (int row = firstRow, count = 0; row < end; row += count) {
        if (!work->band.m_bitmap || row < work->firstRow || row >= work->firstRow + work->band.height())
            MakeBand(work.get(), row / kBandRows * kBandRows);
        count = qMin(kRowsAtOnce, qMin(end, work->firstRow + work->band.height()) - row);
        work->band.CropCopyTo(0, row - work->firstRow, rows.width(), count, rows, 0, row - firstRow);
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_idle.push_back(std::move(work));
}

void FittedBands::MakeBand(Work *work, int firstRow) const
{
    const int rows = qMin(kBandRows, m_picture.height() - firstRow);
    if (!work->band.m_bitmap || work->band.height() != rows)
        work->band.AllocBitmap(m_picture.width(), rows, GFL_RGBA, 32, /*clear=*/false, nullptr, 0);
    work->firstRow = firstRow;
    Render(&work->source, work->band, firstRow);
    m_values.Apply(&work->band);
}

void FittedBands::FillFloat(KImage &image)
{
    Render(&Take()->source, image, 0);
}

void FittedBands::Render(FloatRows *source, KImage &band, int firstRow) const
{
    const int all = m_picture.height();
    // Includes the band's own rows. So the last band waits for all rows, and damage at the end of the file is always
    // reported.
    FittedWarp::RowRange range = m_warp.RowsFor(firstRow, band.height());
    if (m_warp.ReadsStored(m_picture) && (RenderStored(band, firstRow, range.end) || RenderStored(band, firstRow, all)))
        return;
    ReadableRows(range.end);
    source->Hold(range.first, range.end);
    while (!m_warp.Render(source->Image(), source->FirstRow(), band, firstRow)) {
        if (range.first == 0 && range.end == all)
            throw KException(QStringLiteral("Invalid Parameter"), KPlace()); // even the whole picture isn't enough
        range = range.Widened(all);
        ReadableRows(range.end);
        source->Hold(range.first, range.end);
    }
}

/// Renders directly from the source's integer rows, as soon as the first @p rows rows can be read. Returns false if the
/// warp needs more rows.
bool FittedBands::RenderStored(KImage &band, int firstRow, int rows) const
{
    KImage readable; // wraps the decoded rows, which no thread writes to
    readable.AllocBitmap(m_picture.width(), ReadableRows(rows), m_picture.type(), m_picture.bitsPerComponent(),
                         /*clear=*/false, m_picture.getData(0, 0), static_cast<int>(m_picture.bytesPerLine()));
    return m_warp.Render(readable, 0, band, firstRow);
}
