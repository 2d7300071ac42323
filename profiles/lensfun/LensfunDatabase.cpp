#include "LensfunDatabase.h"

#include "LensName.h"
#include "PictureFrame.h"
#include "ProfileMatch.h"

#include <lensfun/lensfun.h>

#include <QMutex>

#include <algorithm>
#include <memory>

namespace {

struct Camera {
    QString make, model;
    QString mount;           // begins with a lowercase letter if the lens is fixed
    double cropFactor = 0.0; // 0: unknown
};

/// A lens with one of its names.
struct NamedLens {
    const lfLens *lens = nullptr;
    LensName name;
    double score = 0.0;
};

/// Returns two of the names in @p strings: the default and the English one. The others are translations.
QStringList NamesOf(const lfMLstr strings)
{
    QStringList names;
    if (!strings)
        return names;
    names.append(QString::fromUtf8(strings));
    for (const char *next = strings + qstrlen(strings) + 1; *next;) {
        const char *text = next + qstrlen(next) + 1; // pairs of language and text, up to an empty language
        if (qstrcmp(next, "en") == 0)
            names.append(QString::fromUtf8(text));
        next = text + qstrlen(text) + 1;
    }
    return names;
}

QString NameOf(const lfMLstr strings)
{
    return NamesOf(strings).value(0);
}

QString TitleOf(const lfLens *lens)
{
    return NameOf(lens->Maker) + QLatin1Char('/') + NameOf(lens->Model);
}

/// Returns the names of a lens. The maker is added to those that omit it, as most do.
QVector<LensName> ParsedNames(const lfLens *lens)
{
    QVector<LensName> names;
    const QString maker = NameOf(lens->Maker);
    for (const QString &text : NamesOf(lens->Model)) {
        const QString whole = text.contains(maker.section(QLatin1Char(' '), 0, 0), Qt::CaseInsensitive)
            ? text
            : maker + QLatin1Char(' ') + text;
        names += ParseLensNames(whole);
    }
    QSet<QString> codes; // aliases without codes mean the same model
    for (const LensName &name : qAsConst(names))
        codes += name.codes;
    for (LensName &name : names)
        name.codes = codes;
    return names;
}

bool HasMount(const lfLens *lens, const QStringList &mounts)
{
    for (char *const *mount = lens->Mounts; mount && *mount; ++mount)
        if (mounts.contains(QString::fromUtf8(*mount), Qt::CaseInsensitive))
            return true;
    return false;
}

/// Removes the lenses that were measured on smaller sensors than the camera's.
QVector<NamedLens> LensesCoveringSensor(QVector<NamedLens> lenses, const Camera &camera)
{
    lenses.erase(std::remove_if(lenses.begin(), lenses.end(),
                                [&camera](const NamedLens &each) {
                                    return double(each.lens->CropFactor) > camera.cropFactor * kMaxFrameRatio;
                                }),
                 lenses.end());
    return lenses;
}

bool IsFixed(const Camera &camera)
{
    return !camera.mount.isEmpty() && camera.mount.at(0).isLower();
}

bool HasFocal(const lfLens *lens, const PictureFacts &facts)
{
    constexpr double kShare = 0.02;
    return !facts.focalMm.Known()
        || (facts.focalMm.value >= double(lens->MinFocal) * (1.0 - kShare)
            && facts.focalMm.value <= double(lens->MaxFocal) * (1.0 + kShare));
}

} // namespace

struct LensfunDatabase::Tables {
    std::unique_ptr<lfDatabase> database;
    QVector<NamedLens> lenses;

    Camera CameraOf(const PictureFacts &facts) const;
    QStringList MountsOf(const Camera &camera) const;
    QVector<NamedLens> LensesForCamera(const PictureFacts &facts, const Camera &camera) const;
};

const LensfunDatabase &LensfunDatabase::Instance()
{
    static const LensfunDatabase database;
    return database;
}

LensfunDatabase::LensfunDatabase() : m_tables(new Tables)
{
    m_tables->database = std::make_unique<lfDatabase>();
    if (m_tables->database->Load() != LF_NO_ERROR)
        return;
    for (const lfLens *const *lens = m_tables->database->GetLenses(); lens && *lens; ++lens, ++m_lensCount)
        for (const LensName &name : ParsedNames(*lens))
            m_tables->lenses.append({*lens, name, 0.0});
}

LensfunDatabase::~LensfunDatabase()
{
    delete m_tables;
}

Camera LensfunDatabase::Tables::CameraOf(const PictureFacts &facts) const
{
    for (const bool translated : {false, true}) // default names first: they may equal other cameras' translated names
        for (const lfCamera *const *camera = database->GetCameras(); camera && *camera; ++camera) {
            const lfCamera &known = **camera;
            const QString make = NameOf(known.Maker);
            const QStringList models = translated ? NamesOf(known.Model).mid(1) : QStringList{NameOf(known.Model)};
            for (const QString &model : models)
                if (IsSameCamera(facts.make.value, facts.model.value, make, model))
                    return {make, model, QString::fromUtf8(known.Mount), double(known.CropFactor)};
        }
    return {facts.make.value, facts.model.value, QString(), CameraFactor(facts.make.value, facts.model.value)};
}

/// Returns the camera's mount and the other mounts whose lenses fit it.
QStringList LensfunDatabase::Tables::MountsOf(const Camera &camera) const
{
    QStringList mounts{camera.mount};
    const lfMount *mount = database->FindMount(camera.mount.toUtf8().constData());
    for (char *const *other = mount ? mount->Compat : nullptr; other && *other; ++other)
        mounts.append(QString::fromUtf8(*other));
    return mounts;
}

QVector<NamedLens> LensfunDatabase::Tables::LensesForCamera(const PictureFacts &facts, const Camera &camera) const
{
    const QStringList mounts = MountsOf(camera);
    QVector<NamedLens> fitting;
    std::copy_if(lenses.begin(), lenses.end(), std::back_inserter(fitting), [&](const NamedLens &each) {
        return (camera.mount.isEmpty() || HasMount(each.lens, mounts)) && HasFocal(each.lens, facts);
    });
    return fitting;
}

namespace {

bool AreBare(const QVector<LensName> &names)
{
    return std::all_of(names.begin(), names.end(), [](const LensName &name) { return name.IsBare(); });
}

/// Returns whether a lens may be the requested one. A name with only numbers may mean any lens that has them.
bool MayBeRequested(const LensName &wanted, const NamedLens &offered, const NameMatch &match)
{
    const bool isMaker = wanted.maker.isEmpty() || wanted.maker == offered.name.maker;
    return wanted.IsBare() ? match.sameFocal && isMaker && wanted.converter == offered.name.converter : match.fits;
}

/// Returns the entries of a fixed lens. If attachments and macro settings have separate entries, that of the lens
/// itself is named "(Standard)".
QVector<NamedLens> StandardLenses(const QVector<NamedLens> &lenses)
{
    QVector<NamedLens> plain, standard;
    for (const NamedLens &each : lenses) {
        if (each.name.converter.isEmpty() && !each.name.text.contains(QLatin1String("lens-to-subject")))
            plain.append(each);
        if (each.name.words.contains(QStringLiteral("standard")))
            standard.append(each);
    }
    return standard.isEmpty() ? plain : standard;
}

QVector<NamedLens> LensesWithName(QVector<NamedLens> lenses, const QVector<LensName> &wanted, QStringList *nearest)
{
    QVector<NamedLens> alike;
    for (NamedLens &each : lenses) {
        bool fits = false;
        for (const LensName &name : wanted) {
            const NameMatch match = CompareLensNames(name, each.name);
            const bool fitsName = MayBeRequested(name, each, match);
            if (fitsName)
                each.score = fits ? std::max(each.score, match.score) : match.score;
            else if (match.sameFocal && nearest->size() < 3)
                nearest->append(TitleOf(each.lens) + QLatin1String(": ") + match.why);
            fits = fits || fitsName;
        }
        if (fits)
            alike.append(each);
    }
    std::stable_sort(alike.begin(), alike.end(), [](const NamedLens &a, const NamedLens &b) {
        return a.score != b.score ? a.score > b.score : a.lens->CropFactor > b.lens->CropFactor;
    });
    return alike;
}

/// Returns whether two entries are the same lens, measured on two sensors or named in two ways.
bool IsOneLens(const NamedLens &a, const NamedLens &b)
{
    return a.lens == b.lens || TitleOf(a.lens) == TitleOf(b.lens);
}

} // namespace

LensfunMatch LensfunDatabase::Find(const PictureFacts &facts) const
{
    LensfunMatch match;
    const auto none = [&match](const QString &why) {
        match.reason = why;
        return match;
    };
    if (m_lensCount == 0)
        return none(QStringLiteral("lensfun's data is not installed"));
    const Camera camera = m_tables->CameraOf(facts);
    if (camera.cropFactor <= 0.0)
        return none(facts.model.value.isEmpty()
                        ? QStringLiteral("lensfun needs the camera's name; give it with --body")
                        : QStringLiteral("lensfun doesn't know the camera \"%1\"").arg(facts.model.value));
    match.cropFactor = camera.cropFactor;
    QVector<NamedLens> lenses = m_tables->LensesForCamera(facts, camera);
    const QVector<LensName> wanted = WantedLenses(facts);
    // Names with only numbers are compared with all lenses: the picture's lens may be one whose data doesn't cover the
    // sensor.
    if (IsFixed(camera) || !AreBare(wanted))
        lenses = LensesCoveringSensor(lenses, camera);
    if (IsFixed(camera))
        lenses = StandardLenses(lenses);
    else if (wanted.isEmpty())
        return none(QStringLiteral("the picture doesn't name its lens; name it with --lens"));
    else if (AreBare(wanted) && camera.mount.isEmpty())
        return none(QStringLiteral("lensfun doesn't know the camera \"%1\", and the lens's name is not specific enough")
                        .arg(facts.model.value));
    else
        lenses = LensesWithName(lenses, wanted, &match.nearest);
    if (lenses.isEmpty())
        return none(wanted.isEmpty()
                        ? QStringLiteral("lensfun doesn't know the lens of the camera \"%1\"").arg(facts.model.value)
                        : QStringLiteral("lensfun doesn't know the lens \"%1\"").arg(wanted.first().text));
    const NamedLens &best = lenses.first();
    constexpr double kSlack = 1.0; // lenses whose scores differ by no more count as fitting equally well
    // If only the numbers are known, scores don't matter: they count other details, which the picture doesn't give.
    const bool byNumbers = !IsFixed(camera) && AreBare(wanted) && !best.name.IsBare();
    for (const NamedLens &other : qAsConst(lenses))
        if (!IsOneLens(best, other) && (byNumbers || other.score >= best.score - kSlack)
            && !CompareLensNames(best.name, other.name).fits)
            return none(QStringLiteral("two lenses in lensfun fit equally well: \"%1\" and \"%2\"")
                            .arg(TitleOf(best.lens), TitleOf(other.lens)));
    if (const LensName *other = IsFixed(camera) ? nullptr : OtherLens(wanted, best.name, facts))
        return none(QStringLiteral("the picture's lens is \"%1\" or \"%2\"").arg(TitleOf(best.lens), other->text));
    if (byNumbers && best.name.maker != LensMakerOf(camera.make)) // other makers' lenses may share the numbers
        return none(QStringLiteral("the picture gives only the numbers of its lens, which \"%1\" may share by chance")
                        .arg(TitleOf(best.lens)));
    const QVector<NamedLens> covering = LensesCoveringSensor(lenses, camera);
    if (covering.isEmpty())
        return none(QStringLiteral("lensfun's data for \"%1\" was measured on a smaller sensor").arg(best.name.text));
    match.lens = covering.first().lens;
    match.title = TitleOf(match.lens);
    match.name = IsFixed(camera) ? QString() : covering.first().name.text;
    if (byNumbers)
        match.notes.append(QStringLiteral(
            "the picture gives only its lens's focal lengths and aperture, which only this lens in lensfun has"));
    match.nearest.clear();
    match.reason = QStringLiteral("lensfun's data for \"%1\"").arg(covering.first().name.text);
    if (camera.mount.isEmpty())
        match.notes.append(
            QStringLiteral("lensfun doesn't know the camera; its sensor size is from the table of cameras"));
    return match;
}

QStringList LensfunDatabase::Search(const QStringList &words) const
{
    QStringList found;
    for (const NamedLens &each : qAsConst(m_tables->lenses)) {
        const QString title = TitleOf(each.lens);
        const bool holdsAll = std::all_of(words.begin(), words.end(), [&](const QString &word) {
            return title.contains(word, Qt::CaseInsensitive) || each.name.text.contains(word, Qt::CaseInsensitive);
        });
        if (holdsAll && !found.contains(title))
            found.append(title);
    }
    return found;
}

PictureFacts WithFullLensName(PictureFacts facts)
{
    const QVector<LensName> wanted = WantedLenses(facts);
    const bool hasNumbers = std::any_of(wanted.begin(), wanted.end(),
                                        [](const LensName &name) { return name.HasFocal() && name.HasAperture(); });
    if (!hasNumbers || !AreBare(wanted))
        return facts;
    const QString name = LensfunDatabase::Instance().Find(facts).name;
    if (!name.isEmpty())
        facts.lensNames.append({name, QStringLiteral("the only lens in lensfun with its focal lengths and aperture")});
    return facts;
}
