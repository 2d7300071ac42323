#include "DoneBefore_p.h"

#include "FitOptions.h"

#include <algorithm>

namespace {

using Done = Fact<bool> PictureFacts::*;

/// A switch in the maker notes: on if the value's number at `index` is above 0 and below `end`.
struct SwitchRule {
    const char *key;
    int index;
    Done done;
    const char *source;
    double end = 256.0; // "not applicable" is stored as a large number
};

// Tag numbers and indices from the documentation of the package libimage-exiftool-perl.
constexpr SwitchRule kSwitches[] = {
    {"Exif.Nikon3.VignetteControl", 0, &PictureFacts::vignettingDone, "maker note, vignette control"},
    {"Exif.Nikon3.0x002b", 4, &PictureFacts::distortionDone, "maker note, auto distortion control", 2.0},
    {"Exif.Canon.VignettingCorr2", 5, &PictureFacts::vignettingDone, "maker note, peripheral lighting"},
    {"Exif.Canon.VignettingCorr2", 6, &PictureFacts::chromaticDone, "maker note, chromatic aberration setting"},
    {"Exif.Canon.VignettingCorr2", 7, &PictureFacts::distortionDone, "maker note, distortion correction setting"},
    {"Exif.Sony2.0x2011", 0, &PictureFacts::vignettingDone, "maker note, vignetting correction"},
    {"Exif.Sony2.0x2012", 0, &PictureFacts::chromaticDone, "maker note, lateral chromatic aberration"},
    {"Exif.Sony2.0x2013", 0, &PictureFacts::distortionDone, "maker note, distortion correction setting"},
    {"Exif.OlympusIp.DistortionCorrection", 0, &PictureFacts::distortionDone, "maker note, distortion correction"},
    {"Exif.OlympusIp.ShadingCompensation", 0, &PictureFacts::vignettingDone, "maker note, shading compensation"},
    {"Exif.Panasonic.ShadingCompensation", 0, &PictureFacts::vignettingDone, "maker note, shading compensation"},
};

/// A phone or drone that corrects its own pictures: prefixes of make and model; case is ignored.
struct SelfCorrecting {
    const char *make, *model;
};

// The model of a drone is the name of its camera. Drones that are not listed deliver uncorrected pictures.
constexpr SelfCorrecting kSelfCorrecting[] = {
    {"Apple", "iPhone"},
    {"Apple", "iPad"},
    {"samsung", "SM-"},
    {"Google", "Pixel"},
    {"HUAWEI", ""},
    {"HONOR", ""},
    {"Xiaomi", ""},
    {"OnePlus", ""},
    {"OPPO", ""},
    {"vivo", ""},
    {"motorola", ""},
    {"Nothing", ""},
    {"LGE", ""},
    {"HMD", ""},
    {"realme", ""},
    {"DJI", "FC2103"},
    {"DJI", "FC2204"},
    {"DJI", "FC3170"},
    {"DJI", "FC3411"},
    {"DJI", "FC3582"},
    {"DJI", "FC7203"},
    {"DJI", "FC7303"},
    {"DJI", "L1D-20c"},
    {"Hasselblad", "L1D-20c"},
    {"Hasselblad", "L2D-20c"},
};

void Set(Fact<bool> *fact, const QString &source)
{
    if (!fact->Known())
        *fact = {true, source};
}

/// Reads the settings that a raw converter reports as applied.
void FindDeveloped(const MetadataLookup &metadata, PictureFacts *facts)
{
    if (!metadata.IsTrue("Xmp.crs.AlreadyApplied"))
        return;
    const bool isByProfile = metadata.IsTrue("Xmp.crs.LensProfileEnable");
    const auto isScaled = [&](const char *key) { return !metadata.Has(key) || metadata.Number(key) > 0.0; };
    if (isByProfile && isScaled("Xmp.crs.LensProfileDistortionScale"))
        Set(&facts->distortionDone, QStringLiteral("XMP crs:LensProfileEnable"));
    if (isByProfile && isScaled("Xmp.crs.LensProfileVignettingScale"))
        Set(&facts->vignettingDone, QStringLiteral("XMP crs:LensProfileEnable"));
    if (isByProfile && metadata.Number("Xmp.crs.LensProfileChromaticAberrationScale") > 0.0)
        Set(&facts->chromaticDone, QStringLiteral("XMP crs:LensProfileChromaticAberrationScale"));
    if (metadata.IsTrue("Xmp.crs.AutoLateralCA"))
        Set(&facts->chromaticDone, QStringLiteral("XMP crs:AutoLateralCA"));
}

/// A correction and its name in the record that our runs write, the same as in FitTask.
struct RecordRow {
    QLatin1String name;
    Done done;
    bool PictureFacts::*tried;
    bool FitOptions::*wanted;
};

const RecordRow kRecord[] = {
    {QLatin1String("distortion"), &PictureFacts::distortionDone, &PictureFacts::distortionTried,
     &FitOptions::distortion},
    {QLatin1String("lateral color"), &PictureFacts::chromaticDone, &PictureFacts::chromaticTried,
     &FitOptions::chromatic},
    {QLatin1String("vignetting"), &PictureFacts::vignettingDone, &PictureFacts::vignettingTried,
     &FitOptions::vignetting},
};

/// Reads the record of an earlier run; see docs/fitting.md.
void FindOwnRecord(const MetadataLookup &metadata, PictureFacts *facts)
{
    const auto names = [&](const char *key) { return metadata.Text(key).raw.split(QStringLiteral(", ")); };
    const QStringList made = names("Xmp.vitrelux.Corrections"), requested = names("Xmp.vitrelux.Requested");
    for (const RecordRow &row : kRecord) {
        if (made.contains(row.name))
            Set(&(facts->*row.done), QStringLiteral("XMP vitrelux:Corrections"));
        facts->*row.tried = requested.contains(row.name) && !made.contains(row.name);
    }
}

bool IsSelfCorrecting(const PictureFacts &facts)
{
    const auto begins = [](const Fact<QString> &fact, const char *text) {
        return fact.value.startsWith(QLatin1String(text), Qt::CaseInsensitive);
    };
    return std::any_of(std::begin(kSelfCorrecting), std::end(kSelfCorrecting), [&](const SelfCorrecting &one) {
        return begins(facts.make, one.make) && begins(facts.model, one.model);
    });
}

} // namespace

void FindDoneBefore(const MetadataLookup &metadata, PictureFacts *facts)
{
    if (facts->raw)
        return;
    FindOwnRecord(metadata, facts);
    FindDeveloped(metadata, facts);
    for (const SwitchRule &rule : kSwitches) {
        const double value = metadata.Numbers(rule.key).value(rule.index);
        if (value > 0.0 && value < rule.end)
            Set(&(facts->*rule.done), QString::fromLatin1(rule.source));
    }
    if (!IsSelfCorrecting(*facts))
        return;
    for (Done done : {&PictureFacts::distortionDone, &PictureFacts::chromaticDone, &PictureFacts::vignettingDone})
        Set(&(facts->*done), QStringLiteral("%1 corrects its own pictures").arg(facts->model.value));
}

bool WasDoneBefore(const PictureFacts &facts, const FitOptions &options)
{
    if (options.again)
        return false;
    bool isAnyDone = false, isAnyTried = false;
    for (const RecordRow &row : kRecord) {
        if (!(options.*row.wanted))
            continue;
        if (!(facts.*row.done).value && !(facts.*row.tried))
            return false;
        isAnyDone = isAnyDone || (facts.*row.done).value;
        isAnyTried = isAnyTried || facts.*row.tried;
    }
    return isAnyDone || !isAnyTried;
}
