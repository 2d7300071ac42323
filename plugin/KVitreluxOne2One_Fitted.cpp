// Fitted correction: finds a profile if none was chosen, fits it to the picture and applies it.
#include "KVitreluxOne2One.h"

#include "CorrectionRecord.h"
#include "FittedBands.h"
#include "ImageDatas.h"
#include "KIImageDef.h"
#include "KImage.h"
#include "PictureFit.h"
#include "PictureLight.h"
#include "SourcePixels_p.h"
#include "gfl.h"

#include <QDir>
#include <QThread>

#include <mutex>

namespace {

/// Returns a fitter shared by all users of the same folders, so that the threads of a job read the index once.
std::shared_ptr<PictureFitter> FitterOf(const QStringList &folders)
{
    static std::mutex mutex;
    static std::shared_ptr<PictureFitter> fitter;
    static QStringList fitterFolders;
    const std::lock_guard<std::mutex> lock(mutex);
    if (!fitter || fitterFolders != folders)
        fitter = std::make_shared<PictureFitter>(folders);
    fitterFolders = folders;
    return fitter;
}

FitOptions OptionsOf(const KVitreluxOne2One::Params &params)
{
    FitOptions options = params.fitted->options;
    options.distortion = params.disto;
    options.chromatic = params.ca;
    options.vignetting = params.falloff;
    options.profile = params.lcpFilename;
    return options;
}

FitReport ReportOf(const FitResult &fit)
{
    FitReport report;
    report.profile = fit.profile;
    report.entries = fit.entries;
    report.assumed = fit.assumed.join(QStringLiteral("; "));
    report.done = CorrectionsText(fit);
    report.why = fit.why;
    return report;
}

/// Returns the properties of the picture that the result's format can't store.
QStringList LostByFormat(const FittedPlan &plan, const FittedBands &bands, const KImage &source)
{
    const int sourceBits = source.bitsPerComponent();
    QStringList lost;
    if (bands.ResultBits() < sourceBits) {
        const QString from =
            sourceBits == 32 ? QStringLiteral("floats (clipped to 0 to 1)") : QStringLiteral("%1").arg(sourceBits);
        lost << QStringLiteral("%1 bits per channel instead of %2").arg(bands.ResultBits()).arg(from)
                + (plan.values.encodes ? QStringLiteral(", with the sRGB curve") : QString());
    }
    if (source.type() == GFL_GREY && bands.ResultType() != GFL_GREY)
        lost << QStringLiteral(
            "RGB with opacity instead of gray, because some pixels are empty, and without the gray color profile");
    if (bands.Flattens())
        lost << QStringLiteral("no opacity: transparent pixels are black");
    return lost;
}

/// Throws if the host has requested the interruption of the thread that called Process (QThread::requestInterruption).
void EndIfInterrupted(const QThread &caller)
{
    if (caller.isInterruptionRequested())
        throw KException(QStringLiteral("interrupted"), KPlace());
}

} // namespace

/// Returns the folders to search for profiles: the one in the settings if it exists, otherwise the default ones.
QStringList KVitreluxOne2One::ProfileFolders() const
{
    return QDir::isAbsolutePath(m_lensPath) && QDir(m_lensPath).exists() ? QStringList{m_lensPath}
                                                                         : DefaultProfileFolders();
}

/// Fits the record's profile, or one that it finds, and stores the report in the record. Throws KException with the
/// reason if there is nothing to correct.
///
/// @param pixels  Size of the picture in memory; empty: the size in the file.
FittedPlan KVitreluxOne2One::PlanFor(KIImageDef *def, const QString &fileName, const QSize &pixels,
                                     Params &params) const
{
    FittedPlan plan;
    PictureFacts &facts = plan.facts;
    facts = ReadPictureFacts(fileName, nullptr);
    if (!pixels.isEmpty())
        facts.pixels = pixels;
    plan.fit = FitterOf(ProfileFolders())->Fit(facts, OptionsOf(params));
    constexpr int kColors = 3;
    if (def->nBands() < kColors)
        LeaveOutColor(&plan.fit);
    plan.file = params.fitted->file;
    const bool isFloat = def->nDepth() > 16;
    plan.values.toLight = plan.file.HoldsLight();
    plan.values.encodes = isFloat && !plan.file.HoldsFloats()
        && !gflHasICCProfileUTF8(fileName.toUtf8().constData()); // an ICC profile defines the curve
    if (plan.fit.vignetting || plan.values.toLight) {
        GFL_LOAD_PARAMS development;
        ImageDatas::GetDefaultLoadParams(&development);
        const PictureLight light = LightOf(facts, isFloat, double(development.RawGamma));
        plan.light = plan.values.light = light.curve;
        if (!light.assumed.isEmpty())
            plan.fit.assumed << light.assumed;
    }
    params.fitted->report = ReportOf(plan.fit);
    if (!plan.fit.correction.ChangesAnything())
        throw KException(plan.fit.why.isEmpty() ? QStringLiteral("no correction was requested") : plan.fit.why,
                         KPlace());
    return plan;
}

void KVitreluxOne2One::ProcessFitted(const QString &fileName, KIImageDef *def, Params &params,
                                     const QString &outputFileName)
{
    FittedPlan plan = PlanFor(def, fileName, QSize(), params); // before decoding, which would be useless if this throws
    // Locked until the file is written: a copy would double the memory needed.
    const FullSizeLock full(def, FullSizeLock::Rows::MayBePending);
    if (!full.Image())
        ThrowNotLoaded(fileName);
    const KImage &source = *full.Image();
    const QSize size(source.width(), source.height());
    if (size != QSize(plan.fit.correction.width, plan.fit.correction.height))
        plan = PlanFor(def, fileName, size, params);
    FittedBands bands(plan, params.fitted->options.sampling, source,
                      [&](int rows) { return source.WaitForRows(rows, fileName); });
    const QThread *const caller = QThread::currentThread();
    const KImage::RowsToWrite rows = {source.width(),
                                      source.height(),
                                      bands.ResultType(),
                                      bands.ResultBits(),
                                      [&](KImage &band, int firstRow) {
                                          EndIfInterrupted(*caller);
                                          bands.Fill(band, firstRow);
                                      },
                                      /*fast=*/true};
    const int sourceBits = source.bitsPerComponent();
    plan.fit.assumed << LostByFormat(plan, bands, source);
    params.fitted->report = ReportOf(plan.fit);
    KImage::WriteRows(rows, outputFileName, plan.file.Form(sourceBits), fileName,
                      CorrectionRecord(plan.fit, plan.facts, OptionsOf(params), plan.file.MimeType()));
}

void KVitreluxOne2One::ProcessFitted(KIImageDef *def, KImage &image, Params &params)
{
    const FittedPlan plan = PlanFor(def, def->FileName(), QSize(image.width(), image.height()), params);
    KImage source; // a copy, because the warp reads around the pixel that it writes
    image.Convert(source, GFL_RGBA, 32);
    FittedBands(plan, Sampling::Bilinear, source).FillFloat(image);
}
