// The way of the pixels: from a file to the corrected file, and the correction of an image in memory.
#include "KVitreluxOne2One.h"

#include "HostApplication_p.h"
#include "KIImageDef.h"
#include "KImage.h"
#include "ippi.h"
#include "newLCP.h"

#include <QDir>
#include <QFileInfo>

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

/// Turns all of @p source into all of @p target, whose sides are exchanged. Cubic, which is exact for right angles.
void Turn(const KImage &source, KImage &target, double angleDegrees, double xShift, double yShift)
{
    ippiRotate_32f_C4R(reinterpret_cast<const float *>(source.getData(0, 0)), {source.width(), source.height()},
                       source.bytesPerLine(), {0, 0, source.width(), source.height()},
                       reinterpret_cast<float *>(target.getData(0, 0)), target.bytesPerLine(),
                       {0, 0, target.width(), target.height()}, angleDegrees, xShift, yShift, primitives::kCubic);
}

/// Upright and square pictures: the profile's frame lies on its side, so they do too while they are warped. Uses
/// @p source up.
void RenderTurned(newLCP &lcp, KImage &source, KImage &target, const KVitreluxOne2One::Params &params)
{
    const int width = source.width();
    const int height = source.height();
    KImage rotated(height, width, GFL_RGBA, 32, /*clear=*/false, nullptr, 0);
    Turn(source, rotated, 90.0, 0.0, width - 1);
    source.FreeBitmap(); // its memory serves the result: new pages cost a preview more time than the warp
    KImage result(height, width, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
    lcp.Render(rotated, result, params.disto, params.ca, params.falloff, kInterpolated);
    Turn(result, target, -90.0, width - 1, 0.0);
}

} // namespace

void KVitreluxOne2One::Process(QPair<KIImageDef *, KImage *> item, void *parameters)
{
    auto *params = static_cast<Params *>(parameters);
    if (params->lcpFilename.isEmpty()) {
        QString message;
        const QStringList profiles = GetLCPfilename(item.first, message);
        if (!profiles.isEmpty())
            params->lcpFilename = profiles.first();
        return; // the caller goes on with the image as it is; the next run corrects
    }
    bool ok = true; // not looked at: a profile that can't be read has no models, and nothing is corrected
    newLCP lcp(params->lcpFilename, ok);
    lcp.scale = params->scale;

    if (!params->disto && !params->ca && !params->falloff)
        return;

    KImage source; // the warp reads around the pixel that it writes
    item.second->Convert(source, GFL_RGBA, 32);
    if (source.width() > source.height())
        lcp.Render(source, *item.second, params->disto, params->ca, params->falloff, kInterpolated);
    else
        RenderTurned(lcp, source, *item.second, *params);
}

void KVitreluxOne2One::Process(QString fileName, void *parameters, QString &outputFileName)
{
    KIImageDef *def = NeededHost().ImageDefOf(fileName);
    outputFileName = CorrectedFileName(fileName);
    if (!def)
        ThrowNotLoaded(fileName);
    KImage result;
    {
        KImage work;
        {
            const FullSizeLock full(def);
            if (!full.Image())
                ThrowNotLoaded(fileName);
            full.Image()->Convert(work, GFL_RGBA, 32);
            Process(qMakePair(def, &work), parameters);
        }
        if (def->nDepth() > 16)
            work.Convert(result, GFL_RGB, 32);
        else
            work.Convert(result, GFL_RGBA, def->nDepth());
    }
    constexpr int kDeflate = 3;
    result.Write(outputFileName, QStringLiteral("tiff"), kDeflate, fileName);
}
