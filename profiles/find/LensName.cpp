#include "LensName.h"

#include "LensWords_p.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

using Pattern = QRegularExpression;

double Number(const QRegularExpressionMatch &match, const char *group)
{
    return match.captured(QLatin1String(group)).toDouble();
}

/// Removes the first match of @p pattern from @p text.
QRegularExpressionMatch Take(const Pattern &pattern, QString *text)
{
    const QRegularExpressionMatch match = Matched(pattern, *text);
    if (match.hasMatch())
        text->replace(match.capturedStart(), match.capturedLength(), QStringLiteral(" "));
    return match;
}

// Apertures have one or two digits before the point, focal lengths up to four; "F004" is a maker's code.
constexpr const char *kFocal = "(?<a>\\d{1,4}(?:\\.\\d+)?)\\s*(?:mm)?\\s*(?:-\\s*(?<b>\\d{1,4}(?:\\.\\d+)?))?";
constexpr const char *kStop = "(?<n>\\d{1,2}(?:\\.\\d+)?)(?:\\s*-\\s*f?(?<m>\\d{1,2}(?:\\.\\d+)?))?(?!\\d)";

Pattern Of(const QString &pattern)
{
    return Pattern(pattern);
}

/// Returns patterns that capture focal lengths a to b and apertures n to m, to be tried in order until a name has both.
const QVector<Pattern> &NumberPatterns()
{
    const QString focal = QLatin1String(kFocal), stop = QLatin1String(kStop);
    static const QVector<Pattern> patterns = {
        Of(focal + QLatin1String("\\s*mm\\s*f\\s*[/_]?\\s*") + stop),                // 18-55mm f/3.5-5.6, 23mmf1.4
        Of(focal + QLatin1String("\\s*/\\s*f\\s*") + stop),                          // 14-42/F3.5-5.6
        Of(QLatin1String("1\\s*:\\s*") + stop + QLatin1String("\\s*/\\s*") + focal), // 1:1.7/28
        Of(focal + QLatin1String("\\s*mm\\b")),                                      // separate from the aperture
        Of(QLatin1String("(?<![a-z])f\\s*[/_]?\\s*") + stop),
        Of(QLatin1String("(?<![a-z\\d.])(?<n>\\d(?:\\.\\d+)?)(?<m>)\\s*/\\s*(?<a>\\d{2,4})(?<b>)(?![\\d.])")), // 3.5/50
        Of(QLatin1String("1\\s*:\\s*(?!1(?![.\\d]))") + stop),
        Of(QLatin1String("(?<![\\d.])(?<a>\\d{1,3}(?:\\.\\d+)?)\\s*-\\s*(?<b>\\d{2,3}(?:\\.\\d+)?)(?![\\d.])")),
    };
    return patterns;
}

void TakeNumbers(QString *text, LensName *name)
{
    for (const Pattern &pattern : NumberPatterns()) {
        const bool hasFocal = pattern.namedCaptureGroups().contains(QStringLiteral("a"));
        const bool hasStop = pattern.namedCaptureGroups().contains(QStringLiteral("n"));
        if ((hasFocal && name->HasFocal()) || (hasStop && name->HasAperture()))
            continue;
        const QRegularExpressionMatch match = Take(pattern, text);
        if (!match.hasMatch())
            continue;
        if (hasFocal) {
            name->minFocalMm = Number(match, "a");
            name->maxFocalMm = match.captured(QStringLiteral("b")).isEmpty() ? name->minFocalMm : Number(match, "b");
        }
        if (hasStop) {
            name->maxAperture = Number(match, "n");
            name->maxApertureAtTele =
                match.captured(QStringLiteral("m")).isEmpty() ? name->maxAperture : Number(match, "m");
        }
    }
}

/// Removes the repetition of an aperture, as in "AT-X 11-20 F2.8 (AF 11-20mm f/2.8)".
void TakeRepeatedStop(QString *text, const LensName &name)
{
    static const Pattern stop(QLatin1String("(?<![a-z])f\\s*/?\\s*") + QLatin1String(kStop));
    QString rest = *text;
    if (name.HasAperture() && Number(Take(stop, &rest), "n") == name.maxAperture)
        *text = rest;
}

void AddCode(const QString &word, LensName *name)
{
    // Tamron lenses report names without a maker: "E 20mm F2.8 F050".
    static const Pattern tamron(QStringLiteral("^[abf]0\\d\\d$"));
    static const Pattern sigma(QStringLiteral("^([acs])(0\\d\\d)$")); // "A014"; cameras write "Art 014"
    const QRegularExpressionMatch line = Matched(sigma, word);
    if (name->maker == QLatin1String("sigma") && line.hasMatch()) {
        const QChar letter = word.at(0);
        name->marks.insert(letter == QLatin1Char('a')       ? QStringLiteral("art")
                               : letter == QLatin1Char('c') ? QStringLiteral("contemporary")
                                                            : QStringLiteral("sports"));
        name->codes.insert(line.captured(2));
        return;
    }
    // "A16N" and "A16NII" are the A16 for Nikon.
    static const Pattern mount(QStringLiteral("(?<=^\\w\\d\\d|^\\d\\d\\d)n(ii)?$"));
    name->codes.insert(word.left(word.size() - Matched(mount, word).capturedLength()));
    if (name->maker.isEmpty() && Matched(tamron, word).hasMatch())
        name->maker = QStringLiteral("tamron");
}

void AddWord(const QString &text, LensName *name)
{
    const bool isLine = name->maker == QLatin1String("sigma") && text == QLatin1String("c"); // "DC DN C"
    const QString word = isLine ? QStringLiteral("contemporary") : text;
    static const Pattern code(QStringLiteral("^[a-z]{0,4}\\d{2,5}[a-z]{0,3}$"));
    if (const QString maker = FindMaker(word); !maker.isEmpty()) {
        const bool weak = IsMountFamily(word);
        if (name->maker.isEmpty() || (!weak && !FindMark(word)))
            name->maker = maker;
    }
    if (const Mark *mark = FindMark(word))
        name->marks.insert(QLatin1String(mark->canonical ? mark->canonical : mark->word));
    else if (Matched(code, word).hasMatch())
        AddCode(word, name);
    else if (!IsIdleWord(word) && FindMaker(word).isEmpty())
        name->words.insert(word);
}

/// Replaces words that are marks only in names like this one; see ConditionalMark.
void TakeConditionalMarks(LensName *name)
{
    for (const ConditionalMark &mark : kConditionalMarks) {
        const QString with = QLatin1String(mark.with), word = QLatin1String(mark.word);
        const bool applies = name->maker == with || name->words.contains(with) || name->marks.contains(with);
        if (applies && (name->words.remove(word) || name->marks.remove(word)))
            name->marks.insert(with + QLatin1Char('-') + word);
    }
}

/// Returns the factor, without trailing zeros, from the part of a name that describes a converter; the part itself if
/// it has no factor.
QString ConverterOf(const QString &part)
{
    static const Pattern factor(QStringLiteral("(\\d(?:\\.\\d+)?)\\s*x\\b"));
    static const Pattern code(QStringLiteral("\\b(?:tc|mc)-?(1[1-9]|20)(?!\\d{3})")); // "MC-14", "TC-20E", "TC-1401"
    if (const QRegularExpressionMatch match = Matched(factor, part); match.hasMatch())
        return QString::number(match.captured(1).toDouble());
    if (const QRegularExpressionMatch match = Matched(code, part); match.hasMatch())
        return QString::number(match.captured(1).toDouble() / 10.0);
    return part.simplified();
}

LensName ParseLensName(const QString &text)
{
    static const Pattern converter(QStringLiteral("\\s\\+.*$|\\bwith\\b.*$|\\b\\d(?:\\.\\d+)?\\s*x\\b.*$"));
    static const Pattern maybeGeneration(QStringLiteral("\\[(i+)\\]"));
    static const Pattern between(QStringLiteral("[^\\p{L}\\d]+"), Pattern::UseUnicodePropertiesOption);
    LensName name;
    name.text = text.simplified();
    QString rest = FoldedLensName(text);
    name.maybeGeneration = Take(maybeGeneration, &rest).captured(1);
    name.converter = ConverterOf(Take(converter, &rest).captured());
    TakeNumbers(&rest, &name);
    TakeRepeatedStop(&rest, name);
    static_cast<void>(Matched(between, rest)); // throws if memory runs out; split() would return the name as one word
    const QStringList words = rest.split(between, Qt::SkipEmptyParts);
    for (const QString &word : words)
        AddWord(word, &name);
    TakeConditionalMarks(&name);
    return name;
}

bool IsNear(double a, double b, double tolerance)
{
    return std::fabs(a - b) <= tolerance * std::max(a, b);
}

QString RangeText(double from, double to, const QString &unit)
{
    const QString first = QString::number(from);
    return IsNear(from, to, 1e-6) ? unit.arg(first) : unit.arg(first + QLatin1Char('-') + QString::number(to));
}

/// Returns the words that identify a lens.
QSet<QString> DistinctiveWords(const LensName &name)
{
    QSet<QString> words;
    for (const QString &word : name.words)
        if (!IsDescription(word))
            words.insert(word);
    return words;
}

/// Returns whether @p name has all distinctive words of @p unnamed, which has no known maker: a word that @p name lacks
/// could be an unknown maker.
bool HasWordsOf(const LensName &name, const LensName &unnamed)
{
    return name.words.contains(DistinctiveWords(unnamed));
}

bool MayHaveSameMaker(const LensName &wanted, const LensName &offered)
{
    const QString mount = MakerOfMount(offered.marks);
    if (!wanted.maker.isEmpty() && offered.maker.isEmpty())
        return HasWordsOf(wanted, offered) && (mount.isEmpty() || mount == wanted.maker);
    if (!wanted.maker.isEmpty())
        return wanted.maker == offered.maker;
    const QString wantedMount = MakerOfMount(wanted.marks);
    if (!offered.maker.isEmpty() || !mount.isEmpty()) {
        const bool isOfMount = wantedMount.isEmpty() || wantedMount == offered.maker || wantedMount == mount;
        return isOfMount && HasWordsOf(offered, wanted);
    }
    return wantedMount.isEmpty() || HasWordsOf(wanted, offered);
}

/// Returns the first number of @p offered that contradicts @p wanted, as text; empty if none does.
QString NumberContradiction(const LensName &wanted, const LensName &offered)
{
    // Numbers in names are rounded: 4.25 mm is "4.3mm", f/1.68 is "f/1.7".
    constexpr double kFocalTolerance = 0.015, kStopTolerance = 0.03;
    if (wanted.HasFocal() && offered.HasFocal()
        && !(IsNear(wanted.minFocalMm, offered.minFocalMm, kFocalTolerance)
             && IsNear(wanted.maxFocalMm, offered.maxFocalMm, kFocalTolerance)))
        return RangeText(offered.minFocalMm, offered.maxFocalMm, QStringLiteral("%1 mm"));
    if (wanted.HasAperture() && offered.HasAperture()
        && !(IsNear(wanted.maxAperture, offered.maxAperture, kStopTolerance)
             && IsNear(wanted.maxApertureAtTele, offered.maxApertureAtTele, kStopTolerance)))
        return RangeText(offered.maxAperture, offered.maxApertureAtTele, QStringLiteral("f/%1"));
    return QString();
}

/// Returns the lens codes that are specific enough to compare: "b028" or "013", not "11".
QSet<QString> DistinctiveCodes(const LensName &name)
{
    QSet<QString> codes;
    for (const QString &code : name.codes)
        if (code.size() >= 3)
            codes.insert(code);
    return codes;
}

QSet<QString> MarksOf(const LensName &name, Group group)
{
    return MarksOfGroup(name.marks, group);
}

/// Returns whether a name has more than numbers, a mount and the hints that cameras add.
bool IsFull(const LensName &name)
{
    constexpr Group kDistinctive[] = {Group::Motor,  Group::Format,  Group::Line,
                                      Group::Series, Group::Formula, Group::Purpose};
    return !name.words.isEmpty() || std::any_of(std::begin(kDistinctive), std::end(kDistinctive), [&name](Group group) {
        return !MarksOf(name, group).isEmpty();
    });
}

bool Contradict(Rule rule, const QSet<QString> &wanted, const QSet<QString> &offered, const LensName &name)
{
    if (wanted == offered)
        return false;
    if (rule == Rule::NotOther)
        return !wanted.isEmpty() && !offered.isEmpty() && !wanted.intersects(offered);
    return rule == Rule::Same || IsFull(name) || !wanted.isEmpty();
}

/// Returns the rule for focus motors, which distinguish versions of Canon and Tamron lenses. Canon cameras always name
/// them.
Rule MotorRule(const LensName &name)
{
    for (const char *mount : {"ef", "efs", "efm", "rf", "rfs"})
        if (name.marks.contains(QLatin1String(mount)))
            return name.maker == QLatin1String("canon") ? Rule::Same : Rule::NotOther;
    return name.maker == QLatin1String("tamron") ? Rule::SameIfFull : Rule::NotOther;
}

bool MayBeGeneration(const LensName &name, const QSet<QString> &marks)
{
    return !name.maybeGeneration.isEmpty() && (marks.isEmpty() || marks == QSet<QString>{name.maybeGeneration});
}

/// Returns whether the maker's cameras, and users, often omit the stabilizer from names. Olympus cameras write "OLYMPUS
/// M.12-100mm F4.0", without any details.
bool OmitsStabilizer(const LensName &name)
{
    return name.maker == QLatin1String("panasonic") || name.maker == QLatin1String("leica")
        || (name.maker == QLatin1String("olympus") && name.marks.contains(QStringLiteral("mzuiko")) && !IsFull(name));
}

QString MarkContradiction(const LensName &wanted, const LensName &offered)
{
    for (const GroupRule &rule : kGroupRules) {
        const QSet<QString> mine = MarksOf(wanted, rule.group), theirs = MarksOf(offered, rule.group);
        if (rule.group == Group::Generation && (MayBeGeneration(wanted, theirs) || MayBeGeneration(offered, mine)))
            continue;
        if (rule.group == Group::Stabilizer && OmitsStabilizer(wanted) && (mine.isEmpty() || theirs.isEmpty()))
            continue;
        if (Contradict(rule.group == Group::Motor ? MotorRule(wanted) : rule.rule, mine, theirs, wanted))
            return QLatin1String("another ") + QLatin1String(rule.name);
    }
    const QSet<QString> myCodes = DistinctiveCodes(wanted), theirCodes = DistinctiveCodes(offered);
    if (Contradict(Rule::NotOther, myCodes, theirCodes, wanted))
        return QStringLiteral("another model number");
    return QString();
}

QString Contradiction(const LensName &wanted, const LensName &offered)
{
    if (wanted.converter != offered.converter)
        return wanted.converter.isEmpty() || offered.converter.isEmpty()
            ? QStringLiteral("with and without a converter")
            : QStringLiteral("another converter");
    if (!MayHaveSameMaker(wanted, offered))
        return QLatin1String("another maker");
    if (const QString number = NumberContradiction(wanted, offered); !number.isEmpty())
        return number;
    // Phones use the same name for all their cameras.
    if (wanted.words.contains(QStringLiteral("camera"))
        && (wanted.words != offered.words || wanted.codes != offered.codes))
        return QStringLiteral("another camera");
    if (const QString mark = MarkContradiction(wanted, offered); !mark.isEmpty())
        return mark;
    const QSet<QString> mine = DistinctiveWords(wanted), theirs = DistinctiveWords(offered);
    return mine == theirs ? QString() : QStringLiteral("other words");
}

int SharedCount(const QSet<QString> &a, const QSet<QString> &b)
{
    return QSet<QString>(a).intersect(b).size();
}

int UnmatchedCount(const QSet<QString> &a, const QSet<QString> &b)
{
    return a.size() + b.size() - 2 * SharedCount(a, b);
}

} // namespace

bool LensName::IsBare() const
{
    constexpr Group kMore[] = {Group::Mount, Group::Circle, Group::Generation};
    return !IsFull(*this) && std::all_of(std::begin(kMore), std::end(kMore), [this](Group group) {
        return MarksOf(*this, group).isEmpty();
    });
}

QVector<LensName> ParseLensNames(const QString &text)
{
    // Exiv2 writes "A | B", but also "35mm F1.4 DG HSM | Art 012".
    static const Pattern either(QStringLiteral("\\s+or\\s+|\\s+\\|\\s+(?=[^|]*(\\d\\s*mm|[fF]/?\\d))"));
    static_cast<void>(Matched(either, text)); // throws if memory runs out
    QVector<LensName> names;
    const QStringList parts = text.split(either, Qt::SkipEmptyParts);
    for (const QString &part : parts)
        names.append(ParseLensName(part));
    for (LensName &name : names)
        name.isAlternative = names.size() > 1;
    return names;
}

NameMatch CompareLensNames(const LensName &wanted, const LensName &offered)
{
    NameMatch match;
    match.why = Contradiction(wanted, offered);
    const bool numbers = wanted.HasFocal() && offered.HasFocal();
    const bool stops = wanted.HasAperture() && offered.HasAperture();
    const bool sharesWords = wanted.words == offered.words
        && std::any_of(wanted.words.begin(), wanted.words.end(), [](const QString &word) { return word.size() > 1; });
    if (match.why.isEmpty() && (wanted.IsBare() ? !(numbers && stops) : !numbers && !sharesWords))
        match.why = QStringLiteral("too little in common");
    match.fits = match.why.isEmpty();
    match.sameFocal = numbers && NumberContradiction(wanted, offered).isEmpty();
    constexpr double kMark = 2.0, kCode = 2.0, kWord = 1.0, kMiss = 0.5;
    match.score = kMark * SharedCount(wanted.marks, offered.marks) + kCode * SharedCount(wanted.codes, offered.codes)
        + kWord * SharedCount(wanted.words, offered.words)
        - kMiss * (UnmatchedCount(wanted.marks, offered.marks) + UnmatchedCount(wanted.words, offered.words))
        + (numbers ? kMark : 0.0) + (stops ? kMark : 0.0)
        + (!wanted.maker.isEmpty() && wanted.maker == offered.maker ? kMark : 0.0);
    return match;
}

bool IsMakerName(const QString &word)
{
    const QString folded = word.toCaseFolded();
    return FindMaker(folded) == folded;
}
