#include "LensName.h"

#include <QHash>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

using Pattern = QRegularExpression;

/// A spelling and its canonical form. Applied in order to the case-folded text, before it is split into words.
struct Spelling {
    const char *pattern;
    const char *replacement;
};

constexpr Spelling kSpellings[] = {
    {"ƒ", "f"},
    {"×", "x"},
    {"t\\*", " tstar "},
    {"(\\d),(\\d)", "\\1.\\2"}, // decimal commas
    {"[‐-―−~～]", "-"},         // dashes of all lengths
    {"\\bpower\\s*o\\.?i\\.?s\\.?\\b|\\bmega\\s*o\\.?i\\.?s\\.?\\b|\\bo\\.i\\.s\\.?", " ois "},
    {"\\b(ef|rf)-?s(?=[\\s\\d]|$)", " \\1s "}, // before a number or a space: a mount, not the end of a word
    {"\\bef-?m(?=[\\s\\d]|$)", " efm "},
    {"\\bai-?s\\b", " ais "},
    {"\\baf-?([spi])\\b", " af\\1 "},
    {"\\bdi\\s*iii-?a\\b|\\bdi\\s*iii\\b", " dithree "},
    {"\\bdi\\s*ii\\b", " ditwo "},
    {"\\bda\\s?\\*|\\bstar-?da\\b", " dastar "},
    {"\\bfa\\s?\\*", " fastar "},
    {"\\bm\\.\\s?zuiko|\\bm\\s?zuiko|\\bolympus m\\.(?=\\d)", " olympus mzuiko "},
    {"\\bat-?x\\b", " atx "},
    {"\\bmark\\s+(?=i)|\\bmk\\.?\\s*(?=i)", " "}, // "Mark II" is "II"
    {"\\btype\\s*(\\d)\\b", " type\\1 "},
    {"\\|\\s*a\\b", " art "},
    {"\\|\\s*c\\b", " contemporary "},
    {"\\|\\s*s\\b", " sports "},
    {"\\bsport\\b", "sports"},
    {"\\basph(erical)?\\.?(?![a-z])", " asph "},
    {"\\bvario-?(elmar|elmarit|sonnar|tessar|summilux|summicron)\\b", " \\1 "},
    {"\\b(zoom|micro)-nikkor\\b", " \\1 nikkor "},
    {"\\bmicro\\b", " macro "},
    {"\\bvoigtlander\\b", "voigtländer"},
    {"\\bfish-?eye\\b|\\bcircular(?! fish)\\b", " fisheye "},
};

enum class Group { Generation, Stabilizer, Motor, Mount, Format, Letter, Circle, Line, Design, Purpose };

/// Comparison rule for the marks of a group.
enum class Rule {
    Same,           // both names have the same marks of the group, or they contradict
    SameUnlessBare, // as Same, but a picture's name of only numbers matches either
    SameIfFull,     // as Same, but a picture's name of mount and numbers matches either too
    NotOther        // contradict only if both names have marks and they differ
};

struct GroupRule {
    Group group;
    Rule rule;
    const char *name;
};

constexpr GroupRule kGroupRules[] = {
    {Group::Generation, Rule::Same, "generation"},   {Group::Stabilizer, Rule::SameUnlessBare, "stabilizer"},
    {Group::Motor, Rule::NotOther, "focus motor"},   {Group::Mount, Rule::NotOther, "mount"},
    {Group::Format, Rule::SameIfFull, "format"},     {Group::Letter, Rule::NotOther, "type"},
    {Group::Circle, Rule::NotOther, "image circle"}, {Group::Line, Rule::NotOther, "line"},
    {Group::Design, Rule::SameIfFull, "design"},     {Group::Purpose, Rule::SameUnlessBare, "kind"},
};

struct Mark {
    const char *word;
    Group group;
    const char *canonical; // shared by synonyms; null: the word
};

constexpr Mark kMarks[] = {
    {"ii", Group::Generation, nullptr},
    {"iii", Group::Generation, nullptr},
    {"iv", Group::Generation, nullptr},
    {"v", Group::Generation, nullptr},
    {"vi", Group::Generation, nullptr},
    {"g2", Group::Generation, nullptr},
    {"type2", Group::Generation, "ii"},
    {"new", Group::Generation, nullptr},
    {"mkii", Group::Generation, "ii"},
    {"is", Group::Stabilizer, "stabilized"},
    {"vr", Group::Stabilizer, "stabilized"},
    {"os", Group::Stabilizer, "stabilized"},
    {"vc", Group::Stabilizer, "stabilized"},
    {"oss", Group::Stabilizer, "stabilized"},
    {"ois", Group::Stabilizer, "stabilized"},
    {"usm", Group::Motor, nullptr},
    {"stm", Group::Motor, nullptr},
    {"hsm", Group::Motor, nullptr},
    {"ssm", Group::Motor, nullptr},
    {"sam", Group::Motor, nullptr},
    {"sdm", Group::Motor, nullptr},
    {"vcm", Group::Motor, nullptr},
    {"usd", Group::Motor, nullptr},
    {"pzd", Group::Motor, nullptr},
    {"ef", Group::Mount, nullptr},
    {"efs", Group::Mount, nullptr},
    {"efm", Group::Mount, nullptr},
    {"rf", Group::Mount, nullptr},
    {"rfs", Group::Mount, nullptr},
    {"fe", Group::Mount, nullptr},
    {"e", Group::Mount, nullptr},
    {"dt", Group::Mount, nullptr},
    {"xf", Group::Mount, nullptr},
    {"xc", Group::Mount, nullptr},
    {"gf", Group::Mount, nullptr},
    {"mzuiko", Group::Mount, nullptr},
    {"zuiko", Group::Mount, nullptr},
    {"da", Group::Mount, nullptr},
    {"dastar", Group::Mount, nullptr},
    {"fa", Group::Mount, nullptr},
    {"fastar", Group::Mount, nullptr},
    {"dfa", Group::Mount, nullptr},
    {"afs", Group::Mount, nullptr},
    {"afp", Group::Mount, nullptr},
    {"af", Group::Mount, nullptr},
    {"ais", Group::Mount, nullptr},
    {"z", Group::Mount, nullptr},
    {"dx", Group::Format, nullptr},
    {"dn", Group::Format, nullptr},
    {"di", Group::Format, nullptr},
    {"dithree", Group::Format, nullptr},
    {"ditwo", Group::Format, nullptr},
    {"dc", Group::Circle, nullptr},
    {"dg", Group::Circle, nullptr},
    {"d", Group::Letter, nullptr},
    {"g", Group::Letter, nullptr},
    {"l", Group::Purpose, nullptr},
    {"gm", Group::Line, nullptr},
    {"za", Group::Line, nullptr},
    {"art", Group::Line, nullptr},
    {"contemporary", Group::Line, nullptr},
    {"sports", Group::Line, nullptr},
    {"ex", Group::Line, nullptr},
    {"fisheye", Group::Purpose, nullptr},
    {"pz", Group::Purpose, nullptr},
    {"do", Group::Purpose, nullptr},
    {"wr", Group::Design, nullptr},
    {"lm", Group::Design, nullptr},
    {"apd", Group::Design, nullptr},
    {"apo", Group::Design, nullptr},
    {"ez", Group::Design, nullptr},
    {"umc", Group::Design, nullptr},
    {"tilt", Group::Purpose, nullptr},
    {"reflex", Group::Purpose, nullptr},
};

struct Family {
    const char *word;
    const char *maker;
};

/// Makers by name and by lens families that only they make.
constexpr Family kFamilies[] = {
    {"canon", "canon"},
    {"nikon", "nikon"},
    {"nikkor", "nikon"},
    {"sony", "sony"},
    {"minolta", "minolta"},
    {"olympus", "olympus"},
    {"zuiko", "olympus"},
    {"mzuiko", "olympus"},
    {"om", "olympus"},
    {"pentax", "pentax"},
    {"panasonic", "panasonic"},
    {"lumix", "panasonic"},
    {"fujifilm", "fujifilm"},
    {"fujinon", "fujifilm"},
    {"sigma", "sigma"},
    {"tamron", "tamron"},
    {"tokina", "tokina"},
    {"samyang", "samyang"},
    {"rokinon", "samyang"},
    {"zeiss", "zeiss"},
    {"leica", "leica"},
    {"voigtländer", "voigtländer"},
    {"viltrox", "viltrox"},
    {"laowa", "laowa"},
    {"samsung", "samsung"},
    {"schneider", "schneider"},
    {"hasselblad", "hasselblad"},
    {"ricoh", "ricoh"},
    {"meike", "meike"},
    {"ttartisan", "ttartisan"},
    {"7artisans", "7artisans"},
    {"efs", "canon"},
    {"ef", "canon"},
    {"efm", "canon"},
    {"rf", "canon"},
    {"rfs", "canon"},
    {"fe", "sony"},
    {"art", "sigma"},
    {"contemporary", "sigma"},
    {"sports", "sigma"},
    {"ditwo", "tamron"},
    {"dithree", "tamron"},
    {"atx", "tokina"},
    {"gm", "sony"},
    {"za", "sony"},
    {"dastar", "pentax"},
    {"smc", "pentax"},
    {"yongnuo", "yongnuo"},
    {"pentacon", "pentacon"},
    {"xf", "fujifilm"},
    {"xc", "fujifilm"},
    {"gf", "fujifilm"},
};

/// Families that other makers use as the name of a mount: they identify the maker only if nothing else does.
constexpr const char *kMountFamilies[] = {"ef", "efs", "efm", "rf", "rfs", "fe", "xf", "xc", "gf"};

/// Words that do not help to identify a lens.
constexpr const char *kIdleWords[] = {"lens", "mm", "f", "for", "and", "n", "the", "objective", "unknown", "a"};

QString Folded(const QString &text)
{
    QString folded = text.simplified().toCaseFolded();
    static const QVector<QPair<Pattern, QString>> spellings = [] {
        QVector<QPair<Pattern, QString>> all;
        for (const Spelling &spelling : kSpellings)
            all.append({Pattern(QString::fromUtf8(spelling.pattern), Pattern::UseUnicodePropertiesOption),
                        QString::fromUtf8(spelling.replacement)});
        return all;
    }();
    for (const auto &spelling : spellings)
        folded.replace(spelling.first, spelling.second);
    return folded;
}

double Number(const QRegularExpressionMatch &match, const char *group)
{
    return match.captured(QLatin1String(group)).toDouble();
}

/// Removes the first match of @p pattern from @p text.
QRegularExpressionMatch Take(const Pattern &pattern, QString *text)
{
    const QRegularExpressionMatch match = pattern.match(*text);
    if (match.hasMatch())
        text->replace(match.capturedStart(), match.capturedLength(), QStringLiteral(" "));
    return match;
}

// Apertures have one or two digits before the point, focal lengths up to four; "F004" is a maker's code.
constexpr const char *kFocal = "(?<a>\\d{1,4}(?:\\.\\d+)?)\\s*(?:mm)?\\s*(?:-\\s*(?<b>\\d{1,4}(?:\\.\\d+)?))?";
constexpr const char *kStop = "(?<n>\\d{1,2}(?:\\.\\d+)?)(?:\\s*-\\s*(?<m>\\d{1,2}(?:\\.\\d+)?))?(?!\\d)";

Pattern Of(const QString &pattern)
{
    return Pattern(pattern);
}

/// Patterns with the focal lengths a to b and the apertures n to m, tried in order until a name has both.
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

const Mark *FindMark(const QString &word)
{
    for (const Mark &mark : kMarks)
        if (word == QLatin1String(mark.word))
            return &mark;
    return nullptr;
}

QString FindMaker(const QString &word)
{
    for (const Family &family : kFamilies)
        if (word == QString::fromUtf8(family.word))
            return QString::fromUtf8(family.maker);
    return QString();
}

template <std::size_t kCount> bool Among(const char *const (&words)[kCount], const QString &word)
{
    for (const char *each : words)
        if (word == QLatin1String(each))
            return true;
    return false;
}

void AddCode(const QString &word, LensName *name)
{
    static const Pattern tamron(
        QStringLiteral("^[abf]0\\d\\d$")); // as in "E 20mm F2.8 F050", the name that the lens reports
    name->codes.insert(word);
    if (name->maker.isEmpty() && tamron.match(word).hasMatch())
        name->maker = QStringLiteral("tamron");
}

void AddWord(const QString &word, LensName *name)
{
    static const Pattern code(QStringLiteral("^[a-z]{0,4}\\d{2,5}[a-z]{0,2}$"));
    if (const QString maker = FindMaker(word); !maker.isEmpty()) {
        const bool weak = Among(kMountFamilies, word);
        if (name->maker.isEmpty() || (!weak && !FindMark(word)))
            name->maker = maker;
    }
    if (const Mark *mark = FindMark(word))
        name->marks.insert(QLatin1String(mark->canonical ? mark->canonical : mark->word));
    else if (code.match(word).hasMatch())
        AddCode(word, name);
    else if (!Among(kIdleWords, word) && FindMaker(word).isEmpty())
        name->words.insert(word);
}

LensName ParseLensName(const QString &text)
{
    static const Pattern converter(QStringLiteral("\\s\\+.*$|\\bwith\\b.*$|\\b\\d(?:\\.\\d+)?\\s*x\\b.*$"));
    static const Pattern maybeGeneration(QStringLiteral("\\[i+\\]"));
    static const Pattern between(QStringLiteral("[^\\p{L}\\d]+"), Pattern::UseUnicodePropertiesOption);
    LensName name;
    name.text = text.simplified();
    QString rest = Folded(text);
    name.anyGeneration = Take(maybeGeneration, &rest).hasMatch();
    name.converter = Take(converter, &rest).hasMatch();
    TakeNumbers(&rest, &name);
    const QStringList words = rest.split(between, Qt::SkipEmptyParts);
    for (const QString &word : words)
        AddWord(word, &name);
    return name;
}

bool Near(double a, double b, double share)
{
    return std::fabs(a - b) <= share * std::max(a, b);
}

QString Range(double from, double to, const QString &unit)
{
    const QString first = QString::number(from);
    return Near(from, to, 1e-6) ? unit.arg(first) : unit.arg(first + QLatin1Char('-') + QString::number(to));
}

/// If the picture names a maker and the other name none, its words must match the picture's.
bool MayBeOfMaker(const LensName &wanted, const LensName &offered)
{
    if (wanted.maker.isEmpty() || wanted.maker == offered.maker)
        return true;
    return offered.maker.isEmpty() && wanted.words.contains(offered.words);
}

/// Returns the first number in which the names differ, readable; empty if all numbers that both have agree.
QString NumberContradiction(const LensName &wanted, const LensName &offered)
{
    constexpr double kFocalShare = 0.015, kStopShare = 0.03; // names are rounded: 4.25 mm is "4.3mm", f/1.68 "f/1.7"
    if (wanted.HasFocal() && offered.HasFocal()
        && !(Near(wanted.minFocalMm, offered.minFocalMm, kFocalShare)
             && Near(wanted.maxFocalMm, offered.maxFocalMm, kFocalShare)))
        return Range(offered.minFocalMm, offered.maxFocalMm, QStringLiteral("%1 mm"));
    if (wanted.HasAperture() && offered.HasAperture()
        && !(Near(wanted.maxAperture, offered.maxAperture, kStopShare)
             && Near(wanted.maxApertureAtTele, offered.maxApertureAtTele, kStopShare)))
        return Range(offered.maxAperture, offered.maxApertureAtTele, QStringLiteral("f/%1"));
    return QString();
}

/// Whether a lens code is specific enough to compare: "b028" or "013", not "11".
QSet<QString> TellingCodes(const LensName &name)
{
    QSet<QString> codes;
    for (const QString &code : name.codes)
        if (code.size() >= 3)
            codes.insert(code);
    return codes;
}

QSet<QString> MarksOf(const LensName &name, Group group)
{
    QSet<QString> marks;
    for (const Mark &mark : kMarks) {
        const QString word = QLatin1String(mark.canonical ? mark.canonical : mark.word);
        if (mark.group == group && name.marks.contains(word))
            marks.insert(word);
    }
    return marks;
}

/// Whether a name has more than numbers, a mount and the hints that cameras add.
bool IsFull(const LensName &name)
{
    constexpr Group kTelling[] = {Group::Motor, Group::Format, Group::Line, Group::Purpose};
    return !name.words.isEmpty() || std::any_of(std::begin(kTelling), std::end(kTelling), [&name](Group group) {
        return !MarksOf(name, group).isEmpty();
    });
}

bool Contradict(Rule rule, const QSet<QString> &wanted, const QSet<QString> &offered, const LensName &name)
{
    if (wanted == offered)
        return false;
    if (rule == Rule::NotOther)
        return !wanted.isEmpty() && !offered.isEmpty() && !wanted.intersects(offered);
    const bool open = (rule == Rule::SameUnlessBare && name.IsBare()) || (rule == Rule::SameIfFull && !IsFull(name));
    return !open || !wanted.isEmpty();
}

/// Canon's cameras always name the focus motor.
bool NamesCanonMount(const LensName &name)
{
    for (const char *mount : {"ef", "efs", "efm", "rf", "rfs"})
        if (name.marks.contains(QLatin1String(mount)))
            return name.maker == QLatin1String("canon");
    return false;
}

/// Panasonic's cameras often omit it, and so do users.
bool LeavesStabilizerOut(const LensName &name)
{
    return name.maker == QLatin1String("panasonic") || name.maker == QLatin1String("leica");
}

QString MarkContradiction(const LensName &wanted, const LensName &offered)
{
    for (const GroupRule &rule : kGroupRules) {
        if (rule.group == Group::Generation && (wanted.anyGeneration || offered.anyGeneration))
            continue;
        const QSet<QString> mine = MarksOf(wanted, rule.group), theirs = MarksOf(offered, rule.group);
        if (rule.group == Group::Stabilizer && LeavesStabilizerOut(wanted) && (mine.isEmpty() || theirs.isEmpty()))
            continue;
        const bool canonMotor = rule.group == Group::Motor && NamesCanonMount(wanted);
        if (Contradict(canonMotor ? Rule::Same : rule.rule, mine, theirs, wanted))
            return QLatin1String("another ") + QLatin1String(rule.name);
    }
    const QSet<QString> myCodes = TellingCodes(wanted), theirCodes = TellingCodes(offered);
    if (Contradict(Rule::NotOther, myCodes, theirCodes, wanted))
        return QStringLiteral("another model number");
    return QString();
}

QString Contradiction(const LensName &wanted, const LensName &offered)
{
    if (wanted.converter != offered.converter)
        return QStringLiteral("with and without a converter");
    if (!MayBeOfMaker(wanted, offered))
        return QLatin1String("another maker");
    if (const QString number = NumberContradiction(wanted, offered); !number.isEmpty())
        return number;
    // Phones use the same name for all their cameras.
    if (wanted.words.contains(QStringLiteral("camera"))
        && (wanted.words != offered.words || wanted.codes != offered.codes))
        return QStringLiteral("another camera");
    return MarkContradiction(wanted, offered);
}

int Shared(const QSet<QString> &a, const QSet<QString> &b)
{
    return QSet<QString>(a).intersect(b).size();
}

int Unmatched(const QSet<QString> &a, const QSet<QString> &b)
{
    return a.size() + b.size() - 2 * Shared(a, b);
}

} // namespace

bool LensName::IsBare() const
{
    return !IsFull(*this) && MarksOf(*this, Group::Mount).isEmpty();
}

QVector<LensName> ParseLensNames(const QString &text)
{
    QVector<LensName> names;
    const QStringList parts = text.split(QStringLiteral(" or "), Qt::SkipEmptyParts);
    for (const QString &part : parts)
        names.append(ParseLensName(part));
    return names;
}

NameMatch CompareLensNames(const LensName &wanted, const LensName &offered)
{
    NameMatch match;
    match.why = Contradiction(wanted, offered);
    const bool numbers = wanted.HasFocal() && offered.HasFocal();
    const bool stops = wanted.HasAperture() && offered.HasAperture();
    if (match.why.isEmpty() && (wanted.IsBare() ? !(numbers && stops) : !numbers && wanted.words != offered.words))
        match.why = QStringLiteral("too little in common");
    match.fits = match.why.isEmpty();
    match.sameFocal = numbers && NumberContradiction(wanted, offered).isEmpty();
    constexpr double kMark = 2.0, kCode = 2.0, kWord = 1.0, kMiss = 0.5;
    match.score = kMark * Shared(wanted.marks, offered.marks) + kCode * Shared(wanted.codes, offered.codes)
        + kWord * Shared(wanted.words, offered.words)
        - kMiss * (Unmatched(wanted.marks, offered.marks) + Unmatched(wanted.words, offered.words))
        + (numbers ? kMark : 0.0) + (stops ? kMark : 0.0)
        + (!wanted.maker.isEmpty() && wanted.maker == offered.maker ? kMark : 0.0);
    return match;
}
