// Lens profiles: reading one, and fitting it to a picture of 24 megapixels. Milliseconds count here: the fit runs
// before each picture and each change on the page.
#include "Fit.h"
#include "KImage.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

QByteArray Model(const char *name, const QByteArray &values, const QByteArray &inside = {})
{
    return QByteArray("<s:") + name + " s:FocalLengthX='1.02' s:ImageXCenter='0.507' s:ImageYCenter='0.494' " + values
        + ">" + inside + "</s:" + name + ">\n";
}

/// 6 focal lengths x 3 distances x 4 apertures with all five models, as attributes.
QByteArray ProfileText(bool isFisheye)
{
    QByteArray entries;
    for (double focal : {24.0, 28.0, 35.0, 45.0, 55.0, 70.0}) {
        for (const char *distance : {"0.5", "1.5", "10000"}) {
            for (double apex : {3.0, 4.0, 5.0, 7.0}) {
                const QByteArray bend = "s:RadialDistortParam1='" + QByteArray::number(-2.6 / focal)
                    + "' s:RadialDistortParam2='0.05' s:RadialDistortParam3='-0.01'";
                const QByteArray dark = "s:VignetteModelParam1='" + QByteArray::number(-3.0 / apex)
                    + "' s:VignetteModelParam2='0.4' s:VignetteModelParam3='-0.2'";
                const QByteArray colors = Model("ChromaticGreenModel", bend)
                    + Model("ChromaticRedGreenModel", "s:ScaleFactor='1.0008' s:RadialDistortParam1='0.001'")
                    + Model("ChromaticBlueGreenModel", "s:ScaleFactor='0.9993' s:RadialDistortParam1='-0.001'");
                entries += "<r:li s:Make='Maker' s:Model='BODY' s:ImageWidth='6000' s:ImageLength='4000' "
                           "s:SensorFormatFactor='1.5' s:FocalLength='"
                    + QByteArray::number(focal) + "' s:FocusDistance='" + distance + "' s:ApertureValue='"
                    + QByteArray::number(apex) + "'>"
                    + Model(isFisheye ? "FisheyeModel" : "PerspectiveModel", bend,
                            colors + Model("VignetteModel", dark))
                    + "</r:li>\n";
            }
        }
    }
    return "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#' "
           "xmlns:s='http://ns.adobe.com/photoshop/1.0/camera-profile'><r:Seq>\n"
        + entries + "</r:Seq></r:RDF>";
}

void BM_ReadProfile(benchmark::State &state)
{
    const QByteArray text = ProfileText(false);
    for (auto _ : state)
        benchmark::DoNotOptimize(ParseLensProfile(text, QString(), nullptr));
    state.counters["entries"] = 72;
}

/// Between eight entries, the picture by another body than the profile's or by the same.
void BM_Fit(benchmark::State &state, bool isFisheye, bool isOtherBody)
{
    const QString source = QStringLiteral("made");
    const LensProfile profile = ParseLensProfile(ProfileText(isFisheye), QString(), nullptr);
    PictureFacts facts;
    facts.make = {isOtherBody ? QStringLiteral("NIKON") : QStringLiteral("Maker"), source};
    facts.model = {isOtherBody ? QStringLiteral("NIKON D7000") : QStringLiteral("BODY"), source};
    facts.pixels = QSize(6000, 4000);
    facts.focalMm = {31.0, source};
    facts.distanceM = {0.9, source};
    facts.aperture = {4.8, source};
    for (auto _ : state) {
        const FitResult fit = Fit(profile, facts, {});
        if (!fit.distortion)
            state.SkipWithError("nothing fitted");
        benchmark::DoNotOptimize(fit.zoom);
    }
}

BENCHMARK(BM_ReadProfile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Fit, perspective, false, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Fit, other_body, false, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Fit, fisheye, true, false)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    KImage::init(nullptr); // registers the table of cameras
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    KImage::exit();
    return 0;
}
