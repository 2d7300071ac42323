#include "ProfileUses.h"

#include "CorrectionTwin.h"
#include "Fit.h"
#include "FittedWarp.h"
#include "KImage.h"
#include "ProfileReport.h"
#include "Target.h"
#include "newLCP.h"

#include <cmath>

namespace {

/// Applies all combinations of corrections to small pictures. Their size and values don't matter: positions come from
/// the profile.
void CorrectBy(newLCP &lcp)
{
    lcp.scale = 0.01F;
    for (int switches = 0; switches < 16; ++switches) {
        const int bits = switches & 8 ? 32 : 8;
        KImage source(9, 7, GFL_RGBA, bits, /*clear=*/true, nullptr, 0);
        KImage destination(11, 5, GFL_RGBA, 40 - bits, /*clear=*/true, nullptr, 0);
        lcp.Render(source, destination, switches & 1, switches & 2, switches & 4, switches % 3);
    }
}

/// Checks the invariants that hold for every fit.
void Check(const FitResult &fit, const LensProfile &profile)
{
    Require(fit.zoom >= 0.5 && fit.zoom <= 2.0 && fit.fieldShare >= 0.0 && fit.fieldShare <= 1.0);
    Require(!fit.why.contains(QLatin1Char('\n')));
    Require(fit.distortion != fit.geometryEntries.isEmpty() && fit.vignetting != fit.lightEntries.isEmpty());
    for (const auto *weights : {&fit.geometryEntries, &fit.colorEntries, &fit.lightEntries}) {
        double sum = 0.0;
        for (const EntryWeight &one : *weights) {
            Require(one.entry >= 0 && one.entry < profile.entries.size());
            sum += one.weight;
        }
        Require(weights->isEmpty() || std::abs(sum - 1.0) < 1e-9);
    }
    const CorrectionTwin twin(fit.correction);
    for (int i = 0; i < 12; ++i) {
        const SourcePlaces places = twin.At(i * 5.0, i * 3.0);
        Require(places.gain >= 1.0 && places.gain <= 16.0);
        if (!twin.IsEmpty(places))
            Require(std::isfinite(places.red.x + places.green.x + places.blue.x));
    }
}

/// Renders a blank picture with sharp sampling, which renders kUnitColumns columns at a time; callers pass a correction
/// of a wider picture.
void RenderSharp(const FitResult &fit, bool isFloat)
{
    const Correction &correction = fit.correction;
    const KImage source(correction.width, correction.height, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
    KImage result(correction.width, correction.height, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
    const FittedWarp warp(correction, FittedWarp::Sampling::Sharp, TransferCurve::Srgb(), {isFloat, false});
    Require(warp.Render(source, 0, result, 0));
}

PictureFacts FactsFor(const ProfileEntry &entry)
{
    const QString source = QStringLiteral("made");
    PictureFacts facts;
    facts.make = {entry.make, source};
    facts.model = {entry.model.isEmpty() ? QStringLiteral("BODY") : entry.model, source};
    facts.pixels = QSize(60, 40);
    facts.focalMm = {entry.focalMm > 0.0 ? entry.focalMm * 1.1 : 50.0, source};
    facts.aperture = {4.5, source};
    facts.distanceM = {2.0, source};
    facts.focalPlaneWidthMm = {23.5, source};
    return facts;
}

} // namespace

void CorrectPlainly(const QByteArray &content)
{
    const MemoryFile file(content);
    const ProfileReport report = ReadProfileReport(file.Path());
    bool ok = false;
    newLCP lcp(file.Path(), ok);
    Require(ok || !report.usable); // otherwise the report contradicts the reader
    Require(report.usable == report.problem.isEmpty() && !report.problem.contains(QLatin1Char('\n')));
    CorrectBy(lcp);
}

void CorrectFitted(const QByteArray &content)
{
    QString error;
    const LensProfile profile = ParseLensProfile(content, QString(), &error);
    Require(profile.entries.isEmpty() == !error.isEmpty());
    Require(!error.contains(QLatin1Char('\n')));
    if (profile.entries.isEmpty())
        return;
    FitOptions options;
    for (int i = 0; i < 4; ++i) {
        PictureFacts facts = FactsFor(profile.entries[0]);
        facts.readerTurn = 1 + 2 * i;
        facts.pixels = i % 2 ? QSize(1, 70) : facts.pixels;
        options.framing = static_cast<Framing>(i);
        options.projection = static_cast<Projection>(i);
        options.profile = QString::fromLatin1(i < 2 ? "" : "chosen");
        const FitResult fit = Fit(profile, facts, options);
        Check(fit, profile);
        facts.pixels = QSize(540, 40);
        if (const FitResult wide = Fit(profile, facts, options);
            (i == 0 || i == 3) && wide.correction.ChangesAnything())
            RenderSharp(wide, i == 3);
    }
}
