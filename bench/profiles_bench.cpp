// Lens profiles: reading one, fitting it to a 24-megapixel picture, and finding it among thousands. The fit may take a
// few milliseconds at most: it runs before each picture and after each change on the wizard's page.
#include "KImage.h"
#include "PictureFit.h"

#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

QByteArray Model(const char *name, const QByteArray &values, const QByteArray &inside = {})
{
    return QByteArray("<s:") + name + " s:FocalLengthX='1.02' s:ImageXCenter='0.507' s:ImageYCenter='0.494' " + values
        + ">" + inside + "</s:" + name + ">\n";
}

/// Returns a profile in attribute form. Each combination of @p focals, 3 distances and 4 apertures has an entry with
/// all five models.
QByteArray ProfileText(bool isFisheye, const QByteArray &names = "s:Make='Maker' s:Model='BODY'",
                       const std::vector<double> &focals = {24.0, 28.0, 35.0, 45.0, 55.0, 70.0})
{
    QByteArray entries;
    for (double focal : focals) {
        for (const char *distance : {"0.5", "1.5", "10000"}) {
            for (double apex : {3.0, 4.0, 5.0, 7.0}) {
                const QByteArray bend = "s:RadialDistortParam1='" + QByteArray::number(-2.6 / focal)
                    + "' s:RadialDistortParam2='0.05' s:RadialDistortParam3='-0.01'";
                const QByteArray dark = "s:VignetteModelParam1='" + QByteArray::number(-3.0 / apex)
                    + "' s:VignetteModelParam2='0.4' s:VignetteModelParam3='-0.2'";
                const QByteArray colors = Model("ChromaticGreenModel", bend)
                    + Model("ChromaticRedGreenModel", "s:ScaleFactor='1.0008' s:RadialDistortParam1='0.001'")
                    + Model("ChromaticBlueGreenModel", "s:ScaleFactor='0.9993' s:RadialDistortParam1='-0.001'");
                entries += "<r:li " + names
                    + " s:ImageWidth='6000' s:ImageLength='4000' s:SensorFormatFactor='1.5' s:FocalLength='"
                    + QByteArray::number(focal) + "' s:FocusDistance='" + distance + "' s:ApertureValue='"
                    + QByteArray::number(apex) + "'>"
                    + Model(isFisheye ? "FisheyeModel" : "PerspectiveModel", bend,
                            colors + Model("VignetteModel", dark))
                    + "</r:li>\n";
            }
        }
    }
    return "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#' "
           "xmlns:p='http://ns.adobe.com/photoshop/1.0/' xmlns:s='http://ns.adobe.com/photoshop/1.0/camera-profile'>"
           "<p:CameraProfiles><r:Seq>\n"
        + entries + "</r:Seq></p:CameraProfiles></r:RDF>";
}

void BM_ReadProfile(benchmark::State &state)
{
    const QByteArray text = ProfileText(false);
    for (auto _ : state)
        benchmark::DoNotOptimize(ParseLensProfile(text, QString(), nullptr));
    state.counters["entries"] = 72;
}

/// Fits a picture taken with the profile's body or another one, at a setting between those of eight entries.
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

/// Writes a collection of 4,000 profiles: 20 bodies from 4 makers, each with 200 lenses.
bool WriteCollection(const QString &folder)
{
    const char *const makers[] = {"Canon", "NIKON CORPORATION", "SONY", "PENTAX"};
    for (int i = 0; i < 4000; ++i) {
        const int lens = i % 200, body = i / 200, shortest = 8 + lens / 5 * 4, longest = shortest * (1 + lens % 5);
        const QByteArray maker = makers[body % 4];
        const QByteArray range = QByteArray::number(shortest) + (lens % 5 ? '-' + QByteArray::number(longest) : "");
        const QByteArray stop = lens % 2 ? "2.8" : "4";
        const QByteArray names = "s:Make='" + maker + "' s:Model='" + maker + " BODY " + QByteArray::number(body)
            + "' s:Lens='" + maker.left(5) + ' ' + range + "mm f/" + stop + " G ED' s:LensInfo='"
            + QByteArray::number(shortest) + "/1 " + QByteArray::number(longest) + "/1 " + stop + "/1 " + stop + "/1'";
        QFile file(folder + QStringLiteral("/%1.lcp").arg(i));
        if (!file.open(QIODevice::WriteOnly) || file.write(ProfileText(false, names, {double(shortest)})) < 0)
            return false;
    }
    return true;
}

/// Runs all steps for one picture, after the index and the profile have been read.
void BM_FindAndFit(benchmark::State &state)
{
    const QTemporaryDir folder;
    if (!WriteCollection(folder.path()))
        return state.SkipWithError("no collection");
    PictureFitter fitter({folder.path()}, QString());
    const QString source = QStringLiteral("made");
    PictureFacts facts;
    facts.make = {QStringLiteral("NIKON CORPORATION"), source};
    facts.model = {QStringLiteral("NIKON CORPORATION BODY 9"), source};
    facts.lensNames = {{QStringLiteral("NIKON 24-48mm f/2.8 G ED"), source}};
    facts.pixels = QSize(6000, 4000);
    facts.focalMm = {31.0, source};
    facts.distanceM = {0.9, source};
    facts.aperture = {4.8, source};
    if (const FitResult first = fitter.Fit(facts, {}); !first.distortion)
        return state.SkipWithError(qPrintable(first.why));
    for (auto _ : state)
        benchmark::DoNotOptimize(fitter.Fit(facts, {}).zoom);
}

BENCHMARK(BM_ReadProfile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Fit, perspective, false, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Fit, other_body, false, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Fit, fisheye, true, false)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FindAndFit)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    KImage::init(nullptr); // registers the table of cameras
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    KImage::exit();
    return 0;
}
