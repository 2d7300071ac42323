// The way of the pixels: from a file to the corrected file, and the correction of an image in memory.
#include "KVitreluxOne2One.h"

#include "FloatWarp.h"
#include "HostApplication_p.h"
#include "KIImageDef.h"
#include "KImage.h"
#include "newLCP.h"

#include <QDir>
#include <QFileInfo>

#include <optional>

namespace {

constexpr int kInterpolated = 1; // mode of newLCP::Render

/// Borrows an image's full-size pixels for a scope, so that an exception gives them back too.
class FullSizeLock {
public:
    explicit FullSizeLock(KIImageDef *def) : m_def(def), m_image(def->LockFullSize(/*nativeDepth=*/true)) { }
    ~FullSizeLock()
    {
        if (m_image)
            m_def->UnlockFullSize(/*nativeDepth=*/true);
    }
    FullSizeLock(const FullSizeLock &) = delete;
    FullSizeLock &operator=(const FullSizeLock &) = delete;

    /// Null if the host lends nothing.
    const KImage *Image() const { return m_image; }

private:
    KIImageDef *m_def;
    KImage *m_image;
};

[[noreturn]] void ThrowNotLoaded(const QString &fileName)
{
    throw KException(QCoreApplication::translate("QCoreApplication", "File \"%1\" cannot be loaded")
                         .arg(QFileInfo(fileName).absoluteFilePath()),
                     KPlace());
}

QString CorrectedFileName(const QString &fileName)
{
    const QFileInfo info(fileName);
    return info.absolutePath() + QDir::separator() + info.completeBaseName() + QStringLiteral("_corrected.tiff");
}

FloatWarp::Switches SwitchesOf(const KVitreluxOne2One::Params &params)
{
    return {params.disto, params.ca, params.falloff};
}

/// A profile describes a landscape frame. Upright and square pictures are corrected as if they were turned into it and
/// back; what no model writes is black there, as after a turn into a cleared image.
FloatWarp::Frame FrameOf(const KImage &image)
{
    return image.width() > image.height() ? FloatWarp::Frame::Landscape : FloatWarp::Frame::Turned;
}

/// The corrected picture of @p source in another form, band by band: float pixels of the result never need more than a
/// band's memory, and are converted while they are in the caches.
void CorrectInto(KImage &result, const newLCP &lcp, const KImage &source, FloatWarp::Switches switches)
{
    constexpr int kBandRows = 16;
    const FloatWarp::Frame frame = FrameOf(source);
    const auto unwritten =
        frame == FloatWarp::Frame::Landscape ? FloatWarp::Unwritten::FromSource : FloatWarp::Unwritten::Cleared;
    const FloatWarp warp(lcp, switches, frame, source);
    KImage band;
    for (int y = 0; y < source.height(); y += kBandRows) {
        const int rows = qMin(kBandRows, source.height() - y);
        band.AllocBitmap(source.width(), rows, GFL_RGBA, 32, /*clear=*/false, nullptr, 0);
        warp.Render(band, y, unwritten);
        band.CropCopyTo(0, 0, source.width(), rows, result, 0, y);
    }
}

} // namespace

/// The profile to correct with now: of the record, at its scale. None where nothing is to be done, and where the record
/// has none yet: it then gets one looked up, and the next run corrects.
std::optional<newLCP> KVitreluxOne2One::ProfileOf(KIImageDef *def, Params &params)
{
    if (params.lcpFilename.isEmpty()) {
        QString message;
        const QStringList profiles = GetLCPfilename(def, message);
        if (!profiles.isEmpty())
            params.lcpFilename = profiles.first();
        return std::nullopt;
    }
    if (!params.disto && !params.ca && !params.falloff)
        return std::nullopt;
    bool ok = true; // not looked at: a profile that can't be read has no models, and nothing is corrected
    newLCP lcp(params.lcpFilename, ok);
    lcp.scale = params.scale;
    return lcp;
}

void KVitreluxOne2One::Process(QPair<KIImageDef *, KImage *> item, void *parameters)
{
    auto &params = *static_cast<Params *>(parameters);
    std::optional<newLCP> lcp = ProfileOf(item.first, params);
    if (!lcp)
        return;
    KImage source; // the warp reads around the pixel that it writes
    item.second->Convert(source, GFL_RGBA, 32);
    if (FrameOf(source) == FloatWarp::Frame::Landscape) {
        lcp->Render(source, *item.second, params.disto, params.ca, params.falloff, kInterpolated);
        return;
    }
    if (!FloatWarp::Serves(*item.second))
        throw KException(QStringLiteral("Invalid Parameter"), KPlace());
    FloatWarp(*lcp, SwitchesOf(params), FloatWarp::Frame::Turned, source)
        .Render(*item.second, 0, FloatWarp::Unwritten::Cleared);
}

void KVitreluxOne2One::Process(QString fileName, void *parameters, QString &outputFileName)
{
    KIImageDef *def = NeededHost().ImageDefOf(fileName);
    outputFileName = CorrectedFileName(fileName);
    if (!def)
        ThrowNotLoaded(fileName);
    auto &params = *static_cast<Params *>(parameters);
    KImage source, result;
    std::optional<newLCP> lcp;
    {
        const FullSizeLock full(def);
        if (!full.Image())
            ThrowNotLoaded(fileName);
        full.Image()->Convert(source, GFL_RGBA, 32);
        lcp = ProfileOf(def, params);
    }
    const int depth = def->nDepth();
    const unsigned short type = depth > 16 ? GFL_RGB : GFL_RGBA;
    const int bits = depth > 16 ? 32 : depth;
    if (lcp) {
        result.AllocBitmap(source.width(), source.height(), type, bits, /*clear=*/false, nullptr, 0);
        CorrectInto(result, *lcp, source, SwitchesOf(params));
    } else {
        source.Convert(result, type, bits);
    }
    source.FreeBitmap();
    constexpr int kDeflate = 3;
    result.Write(outputFileName, QStringLiteral("tiff"), kDeflate, fileName);
}
