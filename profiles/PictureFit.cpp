#include "PictureFit.h"

#include "CorrectionTwin.h"
#include "FitSteps_p.h"
#include "InputLimits.h"
#include "LensfunDatabase.h"
#include "LensfunFit.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cmath>

namespace {

constexpr int kKeptProfiles = 8; // pictures of one job use only a few
constexpr double kAlikePx = 3.0, kAlikeEv = 0.1;

/// Parent folders of drive_c as created by Wine and its front ends; * matches any name.
constexpr const char *kWinePrefixes[] = {
    ".wine",
    ".local/share/wineprefixes/*",
    ".PlayOnLinux/wineprefix/*",
    ".local/share/bottles/bottles/*",
    ".var/app/com.usebottles.bottles/data/bottles/bottles/*",
    "Games/*",
};
constexpr const char *kProfilesInPrefix[] = {
    "drive_c/ProgramData/Adobe/CameraRaw/LensProfiles",
    "drive_c/users/*/AppData/Roaming/Adobe/CameraRaw/LensProfiles",
    "drive_c/users/*/Application Data/Adobe/CameraRaw/LensProfiles",
};

/// Expands a pattern in which * matches whole names.
QStringList Expanded(const QString &base, const QStringList &parts)
{
    if (parts.isEmpty())
        return {base};
    const QStringList rest = parts.mid(1);
    if (parts.first() != QLatin1String("*")) {
        const QString folder = base + QLatin1Char('/') + parts.first();
        return QDir(folder).exists() ? Expanded(folder, rest) : QStringList();
    }
    QStringList found;
    const QStringList names = QDir(base).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &name : names)
        found += Expanded(base + QLatin1Char('/') + name, rest);
    return found;
}

/// Returns the profile folder in an XDG data folder. According to the XDG Base Directory Specification, relative paths
/// are invalid; the default of XDG_DATA_HOME replaces them.
QString ProfileFolderIn(const QString &data)
{
    const QString base = QDir::isRelativePath(data) ? QDir::homePath() + QLatin1String("/.local/share") : data;
    return base + QLatin1String("/vitrelux/profiles");
}

template <typename T> void Override(const T &typed, Fact<T> *fact)
{
    fact->value = typed;
    fact->source = QStringLiteral("typed");
}

PictureFacts WithTyped(PictureFacts facts, const TypedFacts &typed)
{
    if (!typed.lens.isEmpty()) {
        facts.lensNames = QVector<Fact<QString>>(1);
        Override(typed.lens, &facts.lensNames.first());
        facts.lensIds.clear();
        for (auto *number :
             {&facts.lensMinFocalMm, &facts.lensMaxFocalMm, &facts.lensMinApertureAtMin, &facts.lensMinApertureAtMax})
            *number = {};
    }
    if (!typed.body.isEmpty()) {
        const PictureBody body = BodyOf(facts, typed);
        if (body.make != facts.make.value)
            Override(body.make, &facts.make);
        Override(body.model, &facts.model);
    }
    if (typed.focalMm) {
        Override(*typed.focalMm, &facts.focalMm);
        facts.focal35Mm = {}; // belongs to the file's focal length
    }
    if (typed.aperture)
        Override(*typed.aperture, &facts.aperture);
    if (typed.distanceM)
        Override(*typed.distanceM, &facts.distanceM);
    return facts;
}

double Distance(const SourcePlaces::Point &a, const SourcePlaces::Point &b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

/// Returns whether two corrections of a picture nearly agree at its corners, the middles of its sides and its center.
bool AreAlike(const Correction &a, const Correction &b)
{
    const CorrectionTwin one(a), other(b);
    for (const double x : {0.0, 0.5, 1.0})
        for (const double y : {0.0, 0.5, 1.0}) {
            const SourcePlaces mine = one.At(x * (a.width - 1), y * (a.height - 1));
            const SourcePlaces theirs = other.At(x * (a.width - 1), y * (a.height - 1));
            if (mine.folded != theirs.folded || Distance(mine.red, theirs.red) > kAlikePx
                || Distance(mine.green, theirs.green) > kAlikePx || Distance(mine.blue, theirs.blue) > kAlikePx
                || std::fabs(std::log2(mine.gain / theirs.gain)) > kAlikeEv)
                return false;
        }
    return true;
}

} // namespace

QString UserProfileFolder()
{
    return ProfileFolderIn(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
}

QStringList DefaultProfileFolders()
{
    QStringList folders;
    const QStringList places = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (const QString &data : places)
        if (const QString folder = ProfileFolderIn(data); QDir(folder).exists())
            folders.append(folder);
    for (const char *prefix : kWinePrefixes)
        for (const char *place : kProfilesInPrefix)
            folders +=
                Expanded(QDir::homePath(),
                         (QLatin1String(prefix) + QLatin1Char('/') + QLatin1String(place)).split(QLatin1Char('/')));
    return folders;
}

QString ShownProfileName(const QString &profile)
{
    const QLatin1String lensfun("lensfun:");
    return profile.startsWith(lensfun) ? lensfun + QLatin1Char(' ') + profile.mid(lensfun.size())
                                       : QFileInfo(profile).fileName();
}

PictureFitter::PictureFitter(const QStringList &folders, const QString &cacheFile)
    : m_folders(folders), m_index(cacheFile)
{
}

FitResult PictureFitter::Fit(const PictureFacts &pictureFacts, const FitOptions &options)
{
    const PictureFacts facts = WithTyped(pictureFacts, options.typed);
    if (!options.profile.isEmpty()) {
        FitResult result = FitChosen(options.profile, facts, options);
        result.reason = QStringLiteral("chosen");
        return result;
    }
    FitResult none;
    if (options.source != ProfileSource::Lensfun) {
        const ProfileMatch match = Find(facts, options);
        if (!match.path.isEmpty()) {
            FitResult result = FitChosen(match.path, facts, options);
            result.reason = match.reason;
            result.assumed = match.notes + result.assumed;
            if (result.correction.ChangesAnything() || WasDoneBefore(facts, options))
                return result;
            none.profile = result.profile; // found but unusable: lensfun may have the lens
            none.why = result.why;
        } else {
            none.why = match.reason;
        }
        none.nearest = match.nearest;
        none.isAmbiguous = match.isAmbiguous;
    }
    if (options.source == ProfileSource::Lcp || none.isAmbiguous)
        return none;
    FitResult result = FitByLensfun(facts, options);
    if (result.profile.isEmpty() && !none.why.isEmpty()) {
        result.profile = none.profile;
        result.why = none.why.endsWith(result.why) ? none.why : none.why + QLatin1String("; ") + result.why;
        result.nearest = none.nearest + result.nearest;
    }
    return result;
}

FitResult PictureFitter::FitChosen(const QString &path, const PictureFacts &facts, const FitOptions &options)
{
    QString error;
    const Profile profile = Read(path, &error);
    if (profile)
        return ::Fit(*profile, facts, options);
    FitResult result;
    result.why = QStringLiteral("%1: %2").arg(path, error);
    return result;
}

PictureFitter::Profile PictureFitter::Read(const QString &path, QString *error)
{
    const QFileInfo info(path); // a host may run for days while users replace profiles
    const qint64 changed = info.lastModified().toMSecsSinceEpoch();
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (int i = 0; i < m_read.size(); ++i) {
        if (m_read[i].path == path && m_read[i].size == info.size() && m_read[i].changed == changed) {
            m_read.move(i, 0);
            return m_read.first().profile;
        }
    }
    const auto profile = std::make_shared<LensProfile>(ReadLensProfile(path, error));
    if (profile->entries.isEmpty())
        return nullptr;
    m_read.prepend({path, info.size(), changed, profile});
    m_read.resize(std::min(m_read.size(), kKeptProfiles));
    return profile;
}

ProfileMatch PictureFitter::Find(const PictureFacts &facts, const FitOptions &options)
{
    QVector<IndexedProfile> profiles;
    QVector<UnreadPath> unread;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_scanned)
            m_index.Scan(m_folders);
        m_scanned = true;
        profiles = m_index.Profiles(); // shared, not copied
        unread = m_index.UnreadFolders();
    }
    ProfileMatcher matcher({CameraFactor, Comparison(facts, options)});
    const PictureFacts named = WithFullLensName(facts);
    ProfileMatch match = matcher.Match(profiles, named);
    if (match.path.isEmpty() && !match.isAmbiguous && !unread.isEmpty()) // that folder may contain the profile
        match.reason += QStringLiteral("; %1: %2").arg(unread.first().path, unread.first().error);
    if (named.lensNames.size() > facts.lensNames.size())
        match.notes.prepend(QStringLiteral("its focal lengths and aperture identify the lens as \"%1\"")
                                .arg(named.lensNames.last().value));
    return match;
}

/// Returns MatchHelp::correctAlike. The matcher compares the same profile with many others, so that profile is read and
/// fitted only once; identical files aren't fitted at all.
std::function<bool(const QString &, const QString &)> PictureFitter::Comparison(const PictureFacts &facts,
                                                                                const FitOptions &options)
{
    FitOptions unframed = options;
    unframed.framing = Framing::Keep;
    unframed.again = true; // earlier corrections affect all profiles alike
    const auto content = [](const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.read(kMaxXmlBytes) : QByteArray();
    };
    return [=, last = QString(), bytes = QByteArray(), correction = Correction()](const QString &path,
                                                                                  const QString &otherPath) mutable {
        if (last != path) {
            last = path;
            bytes = content(path);
            correction = FitChosen(path, facts, unframed).correction;
        }
        return (!bytes.isEmpty() && bytes == content(otherPath))
            || AreAlike(correction, FitChosen(otherPath, facts, unframed).correction);
    };
}
