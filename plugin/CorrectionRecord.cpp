#include "CorrectionRecord.h"

#include "FittedRecord.h"
#include "KException.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

#include <cmath>

namespace {

struct CorrectionRow {
    const char *name;
    bool FitResult::*made;
    bool FitOptions::*wanted;
    Fact<bool> PictureFacts::*doneBefore;
    bool PictureFacts::*tried;
    double FitOptions::*amount;
    const char *scale; // camera raw setting that holds the amount in percent
};

constexpr CorrectionRow kCorrections[] = {
    {"distortion", &FitResult::distortion, &FitOptions::distortion, &PictureFacts::distortionDone,
     &PictureFacts::distortionTried, &FitOptions::amountDistortion, "LensProfileDistortionScale"},
    {"lateral color", &FitResult::chromatic, &FitOptions::chromatic, &PictureFacts::chromaticDone,
     &PictureFacts::chromaticTried, &FitOptions::amountChromatic, "LensProfileChromaticAberrationScale"},
    {"vignetting", &FitResult::vignetting, &FitOptions::vignetting, &PictureFacts::vignettingDone,
     &PictureFacts::vignettingTried, &FitOptions::amountVignetting, "LensProfileVignettingScale"},
};

/// Returns the names of the corrections that satisfy @p isNamed.
template <typename Predicate> QString Names(Predicate isNamed)
{
    QStringList names;
    for (const CorrectionRow &row : kCorrections)
        if (isNamed(row))
            names << QLatin1String(row.name);
    return names.join(QStringLiteral(", "));
}

/// Returns whether the source's XMP reports the correction. Corrections made by the camera are reported in other
/// metadata, which the result keeps.
bool IsInXmp(const Fact<bool> &done)
{
    return done.value && done.source.startsWith(QLatin1String("XMP "));
}

/// Names of the profile in the record.
struct ProfileNames {
    QString name;         // the name in the profile, otherwise that of its file
    QString file, digest; // empty for lensfun's profiles
};

/// Returns the profile's names and its file's digest. Other programs identify profiles by this digest, an MD5 hash.
ProfileNames NamesOf(const FitResult &fit)
{
    const QLatin1String lensfun("lensfun:");
    if (fit.profile.startsWith(lensfun))
        return {fit.profile.mid(lensfun.size()), {}, {}}; // not a path: lens names contain slashes
    const QFileInfo info(fit.profile);
    QFile file(fit.profile);
    QCryptographicHash hash(QCryptographicHash::Md5);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file) || file.error() != QFileDevice::NoError)
        throw KException(QStringLiteral("cannot read \"%1\": %2").arg(fit.profile, file.errorString()), KPlace());
    return {fit.profileName.isEmpty() ? info.completeBaseName() : fit.profileName, info.fileName(),
            QString::fromLatin1(hash.result().toHex().toUpper())};
}

/// Writer of XMP properties in one namespace.
class Properties {
public:
    Properties(const char *prefix, KImage::EditRecord *record)
        : m_prefix(QStringLiteral("Xmp.%1.").arg(QLatin1String(prefix))), m_record(record)
    {
    }
    /// Sets a property; an empty string removes the source's value.
    void Set(const char *name, const QString &text) { m_record->append({m_prefix + QLatin1String(name), text}); }

private:
    const QString m_prefix;
    KImage::EditRecord *m_record;
};

void AddOwnProperties(const FitResult &fit, const PictureFacts &facts, const FitOptions &options,
                      const ProfileNames &profile, KImage::EditRecord *record)
{
    Properties own("vitrelux", record);
    own.Set("Version", QStringLiteral(VITRELUX_VERSION));
    own.Set("Corrections",
            Names([&](const CorrectionRow &row) { return fit.*row.made || IsInXmp(facts.*row.doneBefore); }));
    own.Set("Requested", Names([&](const CorrectionRow &row) {
                return (options.*row.wanted && options.*row.amount > 0.0) || IsInXmp(facts.*row.doneBefore)
                    || facts.*row.tried;
            }));
    own.Set("Profile", profile.file.isEmpty() ? fit.profile : profile.file);
    own.Set("ProfileName", profile.name);
    own.Set("ProfileDigest", profile.digest);
    own.Set("Entries", fit.entries);
    own.Set("Zoom", QString::number(fit.zoom, 'g', 6));
    fitted::Write(fitted::Options::All, options, [&](const QString &name, const QString &text) {
        if (name != QLatin1String("Again") && name != QLatin1String("Source"))
            own.Set(name.toLatin1(), text);
    });
}

void AddCameraRawProperties(const FitResult &fit, const PictureFacts &facts, const FitOptions &options,
                            const ProfileNames &profile, KImage::EditRecord *record)
{
    Properties crs("crs", record);
    crs.Set("AlreadyApplied", QStringLiteral("True"));
    crs.Set("LensProfileEnable", QStringLiteral("1"));
    crs.Set("LensProfileSetup", options.profile.isEmpty() ? QStringLiteral("Auto") : QStringLiteral("Custom"));
    crs.Set("LensProfileName", profile.name);
    crs.Set("LensProfileFilename", profile.file);
    crs.Set("LensProfileDigest", profile.digest);
    crs.Set("LensProfileIsEmbedded", QString());
    for (const CorrectionRow &row : kCorrections) {
        if (fit.*row.made)
            crs.Set(row.scale, QString::number(std::lround(options.*row.amount * 100.0)));
        else if (!IsInXmp(facts.*row.doneBefore)) // otherwise the source's value stays
            crs.Set(row.scale, QStringLiteral("0"));
    }
}

} // namespace

QString CorrectionsText(const FitResult &fit)
{
    return Names([&](const CorrectionRow &row) { return fit.*row.made; });
}

KImage::EditRecord CorrectionRecord(const FitResult &fit, const PictureFacts &facts, const FitOptions &options,
                                    const QString &mimeType)
{
    const ProfileNames profile = NamesOf(fit);
    KImage::EditRecord record;
    record.append({QStringLiteral("Xmp.dc.format"), mimeType});
    AddOwnProperties(fit, facts, options, profile, &record);
    AddCameraRawProperties(fit, facts, options, profile, &record);
    return record;
}
