#include "ProfileMatch.h"

#include "PictureFrame.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr double kFocalTolerance = 0.02; // EXIF rounds focal lengths
constexpr double kStopTolerance = 0.06;  // EXIF rounds f-numbers to thirds of a stop, as in "3.5" for 3.6

enum class Body { Other, SameMaker, Same };

struct Candidate {
    const IndexedProfile *profile = nullptr;
    LensName name; // the profile's best matching name
    double score = 0.0;
    Body body = Body::Other;
    bool rawFits = true;
};

struct Miss {
    double score;
    QString text;
};

QString Folded(const QString &text)
{
    QString folded;
    for (const QChar c : text.toCaseFolded())
        if (c.isLetterOrNumber())
            folded += c;
    return folded;
}

QString MakerOf(const QString &make)
{
    return make.toCaseFolded().section(QLatin1Char(' '), 0, 0, QString::SectionSkipEmpty);
}

bool IsSubset(const LensName &name, const LensName &whole)
{
    return whole.marks.contains(name.marks) && whole.words.contains(name.words)
        && (whole.marks != name.marks || whole.words != name.words)
        && (name.maker.isEmpty() || name.maker == whole.maker);
}

void CompleteNumbers(const PictureFacts &facts, LensName *name)
{
    if (!name->HasFocal() && facts.lensMinFocalMm.Known()) {
        name->minFocalMm = facts.lensMinFocalMm.value;
        name->maxFocalMm = facts.lensMaxFocalMm.Known() ? facts.lensMaxFocalMm.value : name->minFocalMm;
    }
    if (!name->HasAperture() && facts.lensMinApertureAtMin.Known()) {
        name->maxAperture = facts.lensMinApertureAtMin.value;
        name->maxApertureAtTele =
            facts.lensMinApertureAtMax.Known() ? facts.lensMinApertureAtMax.value : name->maxAperture;
    }
}

bool ContainsFocal(double minFocal, double maxFocal, double focal)
{
    return focal >= minFocal * (1.0 - kFocalTolerance) && focal <= maxFocal * (1.0 + kFocalTolerance);
}

/// Returns why a profile's LensInfo contradicts the picture's focal length or aperture; empty if it doesn't.
QString WhyOutOfRange(const ProfileHead &head, const PictureFacts &facts)
{
    if (head.minFocalMm > 0.0 && facts.focalMm.Known()
        && !ContainsFocal(head.minFocalMm, std::max(head.minFocalMm, head.maxFocalMm), facts.focalMm.value))
        return QStringLiteral("its lens has no %1 mm").arg(facts.focalMm.value);
    const double widest = std::min(head.minAperture, head.maxAperture);
    if (widest > 0.0 && facts.aperture.Known() && facts.aperture.value < widest * (1.0 - kStopTolerance))
        return QStringLiteral("its lens doesn't open to f/%1").arg(facts.aperture.value);
    return QString();
}

/// Quickly rejects nearly all of thousands of profiles, before names are parsed and bodies compared.
bool MayBeLens(const ProfileHead &head, const QVector<LensName> &wanted)
{
    return std::any_of(wanted.begin(), wanted.end(), [&head](const LensName &name) {
        return !name.HasFocal() || head.minFocalMm <= 0.0
            || (std::fabs(head.minFocalMm - name.minFocalMm) <= kFocalTolerance * name.minFocalMm
                && std::fabs(head.maxFocalMm - name.maxFocalMm) <= kFocalTolerance * name.maxFocalMm);
    });
}

/// Returns the name of a profile for messages.
QString Title(const IndexedProfile &profile)
{
    const QString lens = profile.head.lensNames.isEmpty() ? QString() : profile.head.lensNames.first();
    return QStringLiteral("\"%1\" on %2 (%3)").arg(lens, profile.head.model, profile.path);
}

bool IsSameLens(const LensName &a, const LensName &b)
{
    return CompareLensNames(a, b).fits || CompareLensNames(b, a).fits;
}

NameMatch Contradicted(NameMatch match, const QString &why)
{
    match.fits = false;
    match.why = why;
    return match;
}

/// Returns whether a name belongs to a fixed lens, as in profiles of compact cameras.
bool IsFixedLensName(const LensName &name, const QString &model)
{
    return name.converter.isEmpty()
        && ((name.IsBare() && name.maker.isEmpty()) || Folded(name.text).contains(Folded(model)));
}

/// Returns whether a fixed lens's name has the focal range of the picture's lens, as far as both are known.
bool HasFocalRangeOf(const PictureFacts &facts, const LensName &name)
{
    const auto near = [](double a, double b) { return std::fabs(a - b) <= kFocalTolerance * b; };
    return !facts.lensMinFocalMm.Known() || !facts.lensMaxFocalMm.Known() || !name.HasFocal()
        || (near(name.minFocalMm, facts.lensMinFocalMm.value) && near(name.maxFocalMm, facts.lensMaxFocalMm.value));
}

} // namespace

QString LensMakerOf(const QString &make)
{
    static const QHash<QString, QString> others = {
        {QStringLiteral("om"), QStringLiteral("olympus")}, // OM Digital Solutions
        {QStringLiteral("ricoh"), QStringLiteral("pentax")},
        {QStringLiteral("konica"), QStringLiteral("minolta")},
    };
    const QString maker = MakerOf(make);
    return others.value(maker, maker);
}

bool IsSameModel(const QString &make, const QString &model, const QString &otherMake, const QString &otherModel)
{
    const QString makers[] = {MakerOf(make), MakerOf(otherMake)};
    const auto withoutMaker = [&makers](const QString &name) {
        const QString folded = name.simplified().toCaseFolded();
        for (const QString &maker : makers) {
            const bool isPrefix = !maker.isEmpty() && folded.startsWith(maker) && folded.size() > maker.size()
                && !folded.at(maker.size()).isLetterOrNumber(); // a whole word
            if (isPrefix)
                return Folded(folded.mid(maker.size()));
        }
        return Folded(folded);
    };
    const QString mine = withoutMaker(model);
    return !mine.isEmpty() && mine == withoutMaker(otherModel);
}

bool IsSameCamera(const QString &make, const QString &model, const QString &otherMake, const QString &otherModel)
{
    return (make.isEmpty() || otherMake.isEmpty() || LensMakerOf(make) == LensMakerOf(otherMake))
        && IsSameModel(make, model, otherMake, otherModel);
}

/// Returns whether a name from a less trusted source may be used: if it matches the trusted one or only adds details.
static bool Agrees(const LensName &trusted, const LensName &name)
{
    return CompareLensNames(trusted, name).fits || CompareLensNames(name, trusted).fits || IsSubset(trusted, name);
}

QVector<LensName> WantedLenses(const PictureFacts &facts)
{
    QVector<LensName> all, trusted;                     // trusted: from the first source that names a lens
    for (const Fact<QString> &fact : facts.lensNames) { // most trustworthy first
        QVector<LensName> ofSource;
        for (LensName name : ParseLensNames(fact.value)) {
            CompleteNumbers(facts, &name);
            if (name.maker.isEmpty() && facts.lensMake.Known())
                name.maker = MakerOf(facts.lensMake.value);
            const bool isAccepted = trusted.isEmpty()
                || std::any_of(trusted.begin(), trusted.end(),
                               [&](const LensName &each) { return Agrees(each, name); });
            if (isAccepted && (name.HasFocal() || !name.IsBare()))
                ofSource.append(name);
        }
        all += ofSource;
        if (trusted.isEmpty() && std::any_of(ofSource.begin(), ofSource.end(), [](const LensName &name) {
                return !name.IsBare() || name.HasAperture();
            }))
            trusted = ofSource;
    }
    QVector<LensName> specific;
    for (const LensName &name : qAsConst(all)) {
        const bool isLessSpecific = std::any_of(all.begin(), all.end(), [&name](const LensName &other) {
            return !(name.isAlternative && other.isAlternative) && IsSubset(name, other)
                && CompareLensNames(name, other).why.indexOf(QLatin1String("mm")) < 0;
        });
        if (!isLessSpecific)
            specific.append(name);
    }
    return specific;
}

const LensName *OtherLens(const QVector<LensName> &wanted, const LensName &found, const PictureFacts &facts)
{
    for (const LensName &name : wanted) {
        const bool fits = name.isAlternative && !name.IsBare() && name.HasFocal()
            && (!facts.focalMm.Known() || ContainsFocal(name.minFocalMm, name.maxFocalMm, facts.focalMm.value));
        if (fits && !IsSameLens(name, found))
            return &name;
    }
    return nullptr;
}

const QVector<LensName> &ProfileMatcher::Parsed(const QString &text)
{
    auto parsed = m_parsed.find(text);
    if (parsed == m_parsed.end())
        parsed = m_parsed.insert(text, ParseLensNames(text));
    return *parsed;
}

namespace {

/// Search for the profile of one picture.
class Search {
public:
    using Parser = std::function<const QVector<LensName> &(const QString &)>;

    Search(const PictureFacts &facts, const MatchHelp &help, Parser parsed)
        : m_facts(facts), m_help(help), m_parsed(std::move(parsed)), m_wanted(WantedLenses(facts))
    {
        m_pictureFactor = help.cropFactor(facts.make.value, facts.model.value);
    }

    ProfileMatch Run(const QVector<IndexedProfile> &profiles)
    {
        for (const IndexedProfile &profile : profiles)
            if (profile.error.isEmpty())
                Consider(profile);
        ProfileMatch match = m_candidates.isEmpty() ? None() : Choose();
        if (!match.path.isEmpty() || !match.nearest.isEmpty())
            return match;
        std::sort(m_misses.begin(), m_misses.end(), [](const Miss &a, const Miss &b) { return a.score > b.score; });
        for (int i = 0; i < std::min(m_misses.size(), 3); ++i)
            match.nearest.append(m_misses[i].text);
        return match;
    }

private:
    bool IsFixedLens() const
    {
        return std::all_of(m_wanted.begin(), m_wanted.end(),
                           [](const LensName &name) { return name.IsBare() && !name.HasAperture(); });
    }

    Body BodyOf(const ProfileHead &head) const
    {
        if (IsSameCamera(m_facts.make.value, m_facts.model.value, head.make, head.model))
            return Body::Same;
        return !head.make.isEmpty() && LensMakerOf(head.make) == LensMakerOf(m_facts.make.value) ? Body::SameMaker
                                                                                                 : Body::Other;
    }

    void Consider(const IndexedProfile &profile)
    {
        const bool isFixed = IsFixedLens();
        if (!isFixed && !MayBeLens(profile.head, m_wanted))
            return;
        Candidate candidate;
        candidate.profile = &profile;
        candidate.body = BodyOf(profile.head);
        candidate.rawFits = profile.head.raw == m_facts.raw;
        if (isFixed ? !MatchFixedLens(&candidate) : !MatchNames(&candidate))
            return;
        QString why = WhyOutOfRange(profile.head, m_facts);
        if (why.isEmpty() && candidate.body != Body::Same)
            why = WhyFrameTooSmall(profile.head);
        if (why.isEmpty())
            m_candidates.append(candidate);
        else
            AddMiss(candidate, why);
    }

    bool MatchFixedLens(Candidate *candidate) const
    {
        const ProfileHead &head = candidate->profile->head;
        if (candidate->body != Body::Same || !m_facts.focalMm.Known())
            return false;
        for (const QString &text : head.lensNames)
            for (const LensName &name : m_parsed(text)) {
                if (!IsFixedLensName(name, head.model) || !HasFocalRangeOf(m_facts, name))
                    return false;
                if (candidate->name.text.isEmpty() || name.HasFocal())
                    candidate->name = name;
            }
        // The profile must show that it is for a fixed lens: the lens has the camera's name, or it is a zoom, or the
        // sensor is too small for most cameras with interchangeable lenses. A bare name such as "50mm f/1.4" could mean
        // any prime; users can still choose such a profile.
        const bool isNamedByCamera = Folded(candidate->name.text).contains(Folded(head.model));
        const bool zooms = head.maxFocalMm > head.minFocalMm || candidate->name.maxFocalMm > candidate->name.minFocalMm;
        return isNamedByCamera || zooms || head.sensorFormatFactor > 2.0;
    }

    bool MatchNames(Candidate *candidate)
    {
        const ProfileHead &head = candidate->profile->head;
        NameMatch best;
        for (const QString &text : head.lensNames)
            for (const LensName &offered : m_parsed(text))
                for (const LensName &wanted : qAsConst(m_wanted)) {
                    const NameMatch match = CompareOnBody(wanted, offered, *candidate);
                    const bool better = match.fits != best.fits ? match.fits : match.score > best.score;
                    if (candidate->name.text.isEmpty() || better) {
                        best = match;
                        candidate->name = offered;
                    }
                }
        candidate->score = best.score;
        if (!best.fits && best.sameFocal)
            AddMiss(*candidate, best.why);
        return best.fits;
    }

    /// Compares lens names. Names with few details fit only under further conditions, such as the same body.
    NameMatch CompareOnBody(const LensName &wanted, const LensName &offered, const Candidate &candidate) const
    {
        NameMatch match = CompareLensNames(wanted, offered);
        const bool isOfDevice = wanted.words.contains(QStringLiteral("camera")) || !wanted.HasFocal();
        if (match.fits && isOfDevice && candidate.body != Body::Same)
            match = Contradicted(match, QStringLiteral("another device"));
        const bool isForeign = !offered.maker.isEmpty() && offered.maker != LensMakerOf(m_facts.make.value);
        if (match.fits && wanted.maker.isEmpty() && isForeign)
            match = Contradicted(match, QStringLiteral("another maker"));
        const bool saysMore = !offered.IsBare()
            && !(candidate.body == Body::Same && IsFixedLensName(offered, candidate.profile->head.model));
        if (match.fits && wanted.IsBare() && saysMore)
            match = Contradicted(match, QStringLiteral("the picture gives only the numbers of its lens"));
        if (match.fits && offered.IsBare() && !wanted.IsBare())
            match = Contradicted(match, QStringLiteral("the profile gives only the numbers of its lens"));
        if (match.fits && wanted.IsBare() && candidate.body == Body::Other)
            match = Contradicted(match, QStringLiteral("another maker's camera"));
        return match;
    }

    /// Returns why a profile made on another body cannot be used; empty if it can.
    QString WhyFrameTooSmall(const ProfileHead &head) const
    {
        const double tableFactor = m_help.cropFactor(head.make, head.model);
        const double factor = tableFactor > 0.0 ? tableFactor : head.sensorFormatFactor;
        if (m_pictureFactor <= 0.0)
            return QStringLiteral("made on another camera, and the sensor of %1 is unknown").arg(m_facts.model.value);
        if (factor <= 0.0)
            return QStringLiteral("made on another camera, of unknown sensor size");
        const double ratio = factor / m_pictureFactor;
        return ratio <= kMaxFrameRatio
            ? QString()
            : QStringLiteral("made on a smaller sensor, which shows only %1 % of the field").arg(qRound(100.0 / ratio));
    }

    void AddMiss(const Candidate &candidate, const QString &why)
    {
        m_misses.append({candidate.score, Title(*candidate.profile) + QLatin1String(": ") + why});
    }

    ProfileMatch None() const
    {
        ProfileMatch match;
        if (!m_facts.model.Known() && m_facts.lensNames.isEmpty())
            match.reason = QStringLiteral("the picture doesn't say which camera and lens took it");
        else if (IsFixedLens())
            match.reason =
                QStringLiteral(
                    "no profile for the camera \"%1\", and the picture doesn't name its lens; name it with --lens")
                    .arg(m_facts.model.value);
        else
            match.reason = QStringLiteral("no profile for the lens \"%1\"").arg(m_wanted.first().text);
        return match;
    }

    ProfileMatch Choose()
    {
        const auto better = [](const Candidate &a, const Candidate &b) { return a.score > b.score; };
        std::stable_sort(m_candidates.begin(), m_candidates.end(), better);
        const Candidate top = m_candidates.first();
        QVector<Candidate> same, rivals;
        constexpr double kSlack = 1.0; // the penalty of two marks or words that only one of the names has
        for (const Candidate &candidate : qAsConst(m_candidates)) {
            if (candidate.profile != top.profile && candidate.score < top.score - kSlack)
                continue; // the spelling differs so much that it may be another lens
            if (IsFixedLens() || candidate.profile == top.profile || IsSameLens(top.name, candidate.name))
                same.append(candidate);
            else
                rivals.append(candidate);
        }
        PreferByLensId(&same, &rivals);
        std::stable_sort(same.begin(), same.end(), [](const Candidate &a, const Candidate &b) {
            return a.body != b.body ? a.body > b.body : a.rawFits && !b.rawFits;
        });
        const Candidate &best = same.first();
        for (const Candidate &other : qAsConst(same))
            if (&other != &best && other.body == best.body && other.rawFits == best.rawFits)
                rivals.append(other);
        if (const LensName *other = OtherLens(m_wanted, best.name, m_facts))
            return EqualNames(best, *other);
        for (const Candidate &rival : qAsConst(rivals))
            if (!m_help.correctAlike(best.profile->path, rival.profile->path))
                return Equal(best, rival);
        return Chosen(best);
    }

    /// Prefers candidates with the picture's lens ID if they are all for one lens.
    void PreferByLensId(QVector<Candidate> *same, QVector<Candidate> *rivals) const
    {
        const auto hasId = [this](const Candidate &candidate) {
            if (candidate.body == Body::Other) // IDs are unique only per maker
                return false;
            return std::any_of(m_facts.lensIds.begin(), m_facts.lensIds.end(), [&candidate](const Fact<QString> &id) {
                return candidate.profile->head.lensIds.contains(id.value);
            });
        };
        QVector<Candidate> named;
        for (const QVector<Candidate> *list : {same, rivals})
            std::copy_if(list->begin(), list->end(), std::back_inserter(named), hasId);
        if (named.isEmpty())
            return;
        const LensName first = named.first().name;
        const bool oneLens = std::all_of(named.begin(), named.end(),
                                         [&first](const Candidate &each) { return IsSameLens(first, each.name); });
        if (oneLens && !rivals->isEmpty()) {
            *same = named;
            rivals->clear();
        }
    }

    static ProfileMatch Equal(const Candidate &best, const Candidate &rival)
    {
        ProfileMatch match;
        match.isAmbiguous = true;
        match.reason = QStringLiteral("two profiles fit equally well: %1 and %2; choose one with --profile")
                           .arg(Title(*best.profile), Title(*rival.profile));
        match.nearest = QStringList{Title(*best.profile), Title(*rival.profile)};
        return match;
    }

    static ProfileMatch EqualNames(const Candidate &best, const LensName &other)
    {
        ProfileMatch match;
        match.isAmbiguous = true;
        match.reason =
            QStringLiteral("the picture's lens is %1 or \"%2\"; name it with --lens or choose with --profile")
                .arg(Title(*best.profile), other.text);
        match.nearest = QStringList{Title(*best.profile), other.text};
        return match;
    }

    ProfileMatch Chosen(const Candidate &best) const
    {
        ProfileMatch match;
        const ProfileHead &head = best.profile->head;
        match.path = best.profile->path;
        match.reason = IsFixedLens() ? QStringLiteral("made for the camera \"%1\"").arg(head.model)
                                     : QStringLiteral("made for the lens \"%1\"").arg(best.name.text);
        if (best.body != Body::Same)
            match.notes.append(QStringLiteral("made on another camera, %1").arg(head.model));
        if (!best.rawFits)
            match.notes.append(head.raw ? QStringLiteral("made for raw pictures")
                                        : QStringLiteral("made for rendered pictures"));
        return match;
    }

    const PictureFacts &m_facts;
    const MatchHelp &m_help;
    Parser m_parsed;
    QVector<LensName> m_wanted;
    double m_pictureFactor = 0.0;
    QVector<Candidate> m_candidates;
    QVector<Miss> m_misses;
};

} // namespace

ProfileMatch ProfileMatcher::Match(const QVector<IndexedProfile> &profiles, const PictureFacts &facts)
{
    return Search(facts, m_help, [this](const QString &text) -> const QVector<LensName> & { return Parsed(text); })
        .Run(profiles);
}
