// Processing of pixels: from a file to the corrected file, and in memory.
#include "KVitreluxOne2One.h"

#include "FloatRows.h"
#include "FloatWarp.h"
#include "HostApplication_p.h"
#include "KIImageDef.h"
#include "KImage.h"
#include "SourcePixels_p.h"
#include "newLCP.h"

#include <QDir>
#include <QFileInfo>

#include <optional>

namespace {

constexpr int kInterpolated = 1; // mode of newLCP::Render

QString CorrectedFileName(const QString &fileName, const QString &suffix)
{
    const QFileInfo info(fileName);
    return info.absolutePath() + QDir::separator() + info.completeBaseName() + QStringLiteral("_corrected.") + suffix;
}

/// Returns the frame in which a picture is corrected. A profile describes a landscape frame; portrait and square
/// pictures are corrected as if they were rotated into it and back. In such pictures, pixels that the correction does
/// not write are black, as after a rotation into a cleared image.
FloatWarp::Frame FrameOf(const KImage &image)
{
    return image.width() > image.height() ? FloatWarp::Frame::Landscape : FloatWarp::Frame::Turned;
}

/// Renderer of bands of the corrected picture in the output file's pixel format. Only a few rows of source and result
/// exist as floats at a time, and they are converted while they are in the CPU caches.
class CorrectedBands {
public:
    /// @p source must outlive the object. Without @p lcp, the picture is not corrected.
    CorrectedBands(const std::optional<newLCP> &lcp, const KImage &source, Corrections corrections)
        : m_frame(FrameOf(source)), m_height(source.height()), m_source(source)
    {
        if (lcp)
            m_warp.emplace(*lcp, corrections, m_frame, source);
    }

    void Fill(KImage &rows, int firstRow)
    {
        if (m_warp) {
            m_band.AllocBitmap(rows.width(), rows.height(), GFL_RGBA, 32, /*clear=*/false, nullptr, 0);
            Render(firstRow);
            m_band.CropCopyTo(0, 0, rows.width(), rows.height(), rows, 0, 0);
        } else {
            m_source.Hold(firstRow, firstRow + rows.height());
            m_source.Image().CropCopyTo(0, firstRow - m_source.FirstRow(), rows.width(), rows.height(), rows, 0, 0);
        }
    }

private:
    void Render(int firstRow)
    {
        const auto unwritten =
            m_frame == FloatWarp::Frame::Landscape ? FloatWarp::Unwritten::FromSource : FloatWarp::Unwritten::Cleared;
        FloatWarp::RowRange range = m_warp->RowsFor(firstRow, m_band.height());
        m_source.Hold(range.first, range.end);
        while (!m_warp->RenderFrom(m_source.Image(), m_source.FirstRow(), m_band, firstRow, unwritten)) {
            range = range.Widened(m_height); // with the whole picture, rendering always succeeds
            m_source.Hold(range.first, range.end);
        }
    }

    const FloatWarp::Frame m_frame;
    const int m_height;
    FloatRows m_source;
    std::optional<FloatWarp> m_warp;
    KImage m_band;
};

} // namespace

/// Returns the record's profile at its scale; nullopt if there is nothing to correct. If the record has no profile yet,
/// looks one up and returns nullopt, so that only the next run corrects the picture.
std::optional<newLCP> KVitreluxOne2One::ProfileOf(KIImageDef *def, Params &params)
{
    if (params.lcpFilename.isEmpty()) {
        QString message;
        const QStringList profiles = GetLCPfilename(def, message);
        if (!profiles.isEmpty())
            params.lcpFilename = profiles.first();
        return std::nullopt;
    }
    if (!params.Chosen().Any())
        return std::nullopt;
    bool ok = true; // ignored: a file that isn't a profile has no models, so nothing is corrected
    QString whyNotRead;
    newLCP lcp(params.lcpFilename, ok, &whyNotRead);
    if (!whyNotRead.isEmpty())
        throw KException(QStringLiteral("cannot read \"%1\": %2").arg(params.lcpFilename, whyNotRead), KPlace());
    lcp.scale = params.scale;
    return lcp;
}

void KVitreluxOne2One::Process(QPair<KIImageDef *, KImage *> item, void *parameters)
{
    auto &params = *static_cast<Params *>(parameters);
    if (params.fitted)
        return ProcessFitted(item.first, *item.second, params);
    std::optional<newLCP> lcp = ProfileOf(item.first, params);
    if (!lcp)
        return;
    KImage source; // a copy, because the warp reads around the pixel that it writes
    item.second->Convert(source, GFL_RGBA, 32);
    if (FrameOf(source) == FloatWarp::Frame::Landscape) {
        lcp->Render(source, *item.second, params.disto, params.ca, params.falloff, kInterpolated);
        return;
    }
    if (!FloatWarp::Serves(*item.second))
        throw KException(QStringLiteral("Invalid Parameter"), KPlace());
    FloatWarp(*lcp, params.Chosen(), FloatWarp::Frame::Turned, source)
        .Render(*item.second, 0, FloatWarp::Unwritten::Cleared);
}

void KVitreluxOne2One::Process(QString fileName, void *parameters, QString &outputFileName)
{
    KIImageDef *def = NeededHost().ImageDefOf(fileName);
    auto &params = *static_cast<Params *>(parameters);
    outputFileName = CorrectedFileName(fileName, params.fitted ? params.fitted->file.Suffix() : QStringLiteral("tiff"));
    if (!def)
        ThrowNotLoaded(fileName);
    if (params.fitted)
        return ProcessFitted(fileName, def, params, outputFileName);
    KImage source;
    std::optional<newLCP> lcp;
    {
        const FullSizeLock full(def);
        if (!full.Image())
            ThrowNotLoaded(fileName);
        const KImage &image = *full.Image(); // must be unlocked before the file is written
        image.Convert(source, image.type(), image.bitsPerComponent());
        lcp = ProfileOf(def, params);
    }
    CorrectedBands bands(lcp, source, params.Chosen());
    const int depth = def->nDepth();
    const bool isFloat = depth > 16; // written without alpha
    const KImage::RowsToWrite rows = {source.width(), source.height(),
                                      static_cast<unsigned short>(isFloat ? GFL_RGB : GFL_RGBA), isFloat ? 32 : depth,
                                      [&](KImage &band, int firstRow) { bands.Fill(band, firstRow); }};
    constexpr int kDeflate = 3;
    KImage::WriteRows(rows, outputFileName, {QStringLiteral("tiff"), kDeflate}, fileName);
}
