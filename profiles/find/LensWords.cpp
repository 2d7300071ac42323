#include "LensWords_p.h"

#include <QRegularExpression>
#include <QVector>

namespace {

using Pattern = QRegularExpression;

/// A pattern of spellings and their canonical form. All are applied, in order, to the case-folded text before it is
/// split into words.
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
    {"\\b(ts|mp)-e(?=[\\s\\d]|$)", " canon \\1e "}, // not Sony's mount
    {"\\bai-?s\\b", " ais "},
    {"\\baf-?([spi])\\b", " af\\1 "},
    {"\\bdi[\\s-]*iii(-?a)?\\b", " dithree "},
    {"\\bdi[\\s-]*ii\\b", " ditwo "},
    {"\\bd[ -]?fa\\b", " dfa "}, // not the older FA
    {"\\bda\\s?\\*|\\bstar-?da\\b", " dastar "},
    {"\\bfa\\s?\\*", " fastar "},
    {"\\bpentax-([afkm])\\b", " pentax pk\\1 "}, // the manual-focus mounts and the first autofocus mount
    {"\\b(summilux|summicron|elmarit|noctilux|summarit|elmar)-m\\b", " \\1 leicam "},
    {"\\bm\\.\\s?zuiko|\\bm\\s?zuiko|\\bolympus m\\.(?=\\d)", " olympus mzuiko "},
    {"\\bat-?x\\b", " atx "},
    {"\\bmark\\s+(?=i)|\\bmk\\.?\\s*(?=i)", " "}, // "Mark II" is "II"
    {"\\btype\\s*(\\d)\\b", " type\\1 "},
    {"\\|\\s*a\\b|\\[a\\]", " art "},
    {"\\|\\s*c\\b|\\[c\\]", " contemporary "},
    {"\\|\\s*s\\b|\\[s\\]", " sports "},
    {"\\bsport\\b", "sports"},
    {"\\basp(h(erical)?)?\\.?(?![a-z])", " asph "},
    {"\\bvario-?(elmar|elmarit|sonnar|tessar|summilux|summicron)\\b", " \\1 "},
    {"\\b(zoom|micro)-nikkor\\b", " \\1 nikkor "},
    {"\\bm1:[1-4]\\b", " "},                   // maximum magnification
    {"\\bs[ae]l[a-z]?\\d\\w*(-\\d)?\\b", " "}, // Sony's order numbers, "SAL2470Z2"
    {"\\(sdm (un|not )used\\)", " "},
    {"\\bsoft focus\\b", " soft "},
    {"\\(se\\)|\\b(special|anniversary) edition\\b", " "}, // only the finish differs
    {"\\bom system\\b", " olympus "},
    {"\\bpower\\s*zoom\\b|\\bpd-?zoom\\b", " pz "},
    {"\\bz mc\\b", " z micro "}, // Nikon's; elsewhere "MC" is a coating
    {"\\bmicro\\b|\\bmakro\\b", " macro "},
    {"\\bmacro\\s*(?:1:1\\b(?!\\.)|\\(1:[1-4]\\))", " macro "}, // maximum magnification
    {"\\bzf\\.2\\b", " zf "},
    {"\\bapo-?lanthar\\b", " apo lanthar "},
    {"\\bvoigtlander\\b", "voigtländer"},
    {"\\b((circular|diagonal)[ -]*)?fish-?eye\\b|\\bcircular\\b", " fisheye "},
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
    {"sdm", Group::Motor, nullptr},
    {"vcm", Group::Motor, nullptr},
    {"usd", Group::Motor, nullptr},
    {"pzd", Group::Motor, nullptr},
    {"osd", Group::Motor, nullptr},
    {"hld", Group::Motor, nullptr},
    {"rxd", Group::Motor, nullptr},
    {"vxd", Group::Motor, nullptr},
    {"ef", Group::Mount, nullptr},
    {"efs", Group::Mount, nullptr},
    {"efm", Group::Mount, nullptr},
    {"rf", Group::Mount, nullptr},
    {"rfs", Group::Mount, nullptr},
    {"fe", Group::Mount, nullptr},
    {"e", Group::Mount, nullptr},
    {"dt", Group::Mount, nullptr},
    {"ssm", Group::Mount, nullptr}, // SSM and SAM: focus motors of A-mount lenses only
    {"sam", Group::Mount, nullptr},
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
    {"afi", Group::Mount, nullptr},
    {"ai", Group::Mount, nullptr},
    {"ais", Group::Mount, nullptr},
    {"series", Group::Mount, nullptr}, // Nikon Lens Series E
    {"z", Group::Mount, nullptr},
    {"pka", Group::Mount, nullptr},
    {"pkf", Group::Mount, nullptr},
    {"pkk", Group::Mount, nullptr},
    {"pkm", Group::Mount, nullptr},
    {"takumar", Group::Mount, nullptr},
    {"lumix", Group::Mount, nullptr},
    {"dx", Group::Format, nullptr},
    {"dn", Group::Format, nullptr},
    {"di", Group::Format, nullptr},
    {"dithree", Group::Format, nullptr},
    {"ditwo", Group::Format, nullptr},
    {"dc", Group::Circle, nullptr},
    {"dg", Group::Circle, nullptr},
    {"d", Group::Distance, nullptr},
    {"g", Group::Letter, nullptr},
    {"l", Group::Purpose, nullptr},
    {"gm", Group::Line, nullptr},
    {"za", Group::Line, nullptr},
    {"art", Group::Line, nullptr},
    {"contemporary", Group::Line, nullptr},
    {"sports", Group::Line, nullptr},
    {"fisheye", Group::Purpose, nullptr},
    {"pz", Group::Purpose, nullptr},
    {"do", Group::Purpose, nullptr},
    {"wr", Group::Design, nullptr},
    {"lm", Group::Design, nullptr},
    {"apd", Group::Design, nullptr},
    {"apo", Group::Design, nullptr},
    {"umc", Group::Design, nullptr},
    {"tilt", Group::Purpose, nullptr},
    {"reflex", Group::Purpose, nullptr},
    {"ez", Group::Purpose, nullptr},
    {"le", Group::Purpose, nullptr},
    {"cine", Group::Purpose, nullptr},
    {"limited", Group::Purpose, nullptr},
    {"xs", Group::Line, nullptr},
    {"summilux", Group::Line, nullptr},
    {"summicron", Group::Line, nullptr},
    {"elmarit", Group::Line, nullptr},
    {"noctilux", Group::Line, nullptr},
    {"summarit", Group::Line, nullptr},
    {"elmar", Group::Line, nullptr},
    {"macro", Group::Purpose, nullptr},
    {"ze", Group::Mount, nullptr}, // Zeiss lenses for SLR cameras
    {"zf", Group::Mount, "ze"},
    {"zk", Group::Mount, "ze"},
    {"zm", Group::Mount, nullptr},
    {"contax", Group::Series, nullptr}, // later Zeiss lenses have different designs
    {"ex", Group::Series, nullptr},
    {"otus", Group::Series, nullptr},
    {"milvus", Group::Series, nullptr},
    {"loxia", Group::Series, nullptr},
    {"batis", Group::Series, nullptr},
    {"touit", Group::Series, nullptr},
    {"planar", Group::Formula, nullptr},
    {"distagon", Group::Formula, nullptr},
    {"sonnar", Group::Formula, nullptr},
    {"tessar", Group::Formula, nullptr},
    {"biogon", Group::Formula, nullptr},
    {"hologon", Group::Formula, nullptr},
    {"flektogon", Group::Formula, nullptr},
    {"pancolar", Group::Formula, nullptr},
    {"biotar", Group::Formula, nullptr},
    {"nokton", Group::Formula, nullptr},
    {"heliar", Group::Formula, nullptr},
    {"ultron", Group::Formula, nullptr},
    {"lanthar", Group::Formula, nullptr},
    {"skopar", Group::Formula, nullptr},
    {"hd", Group::Generation, nullptr},
    // Results of kConditionalMarks; they occur in no text.
    {"nikon-e", Group::Letter, nullptr},
    {"samyang-af", Group::Generation, nullptr},
    {"olympus-r", Group::Generation, nullptr},
    {"leicam-asph", Group::Generation, nullptr},
    {"hsm-contemporary", Group::Generation, nullptr},
    {"rf-z", Group::Purpose, nullptr},
};

struct Family {
    const char *word;
    const char *maker;
};

/// Makers, by their names and by lens families that only they make.
constexpr Family kFamilies[] = {
    {"canon", "canon"},
    {"nikon", "nikon"},
    {"nikkor", "nikon"},
    {"sony", "sony"},
    {"minolta", "minolta"},
    {"konica", "minolta"},
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
    {"summilux", "leica"},
    {"summicron", "leica"},
    {"elmarit", "leica"},
    {"noctilux", "leica"},
    {"summarit", "leica"},
    {"elmar", "leica"},
    {"contax", "contax"},
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
    {"apple", "apple"},
    {"casio", "casio"},
    {"dji", "dji"},
    {"gopro", "gopro"},
    {"kodak", "kodak"},
    {"google", "google"},
    {"venus", "laowa"},
    {"mitakon", "mitakon"},
    {"zhongyi", "mitakon"},
    {"irix", "irix"},
    {"kamlan", "kamlan"},
    {"sirui", "sirui"},
    {"astrhori", "astrhori"},
    {"kipon", "kipon"},
    {"handevision", "handevision"},
    {"opteka", "opteka"},
    {"vivitar", "vivitar"},
    {"soligor", "soligor"},
    {"cosina", "cosina"},
    {"chinon", "chinon"},
    {"mamiya", "mamiya"},
    {"petri", "petri"},
    {"miranda", "miranda"},
    {"beroflex", "beroflex"},
    {"efs", "canon"},
    {"ef", "canon"},
    {"efm", "canon"},
    {"rf", "canon"},
    {"rfs", "canon"},
    {"fe", "sony"},
    {"art", "sigma"},
    {"contemporary", "sigma"},
    {"sports", "sigma"},
    {"dn", "sigma"},
    {"ditwo", "tamron"},
    {"dithree", "tamron"},
    {"atx", "tokina"},
    {"gm", "sony"},
    {"za", "sony"},
    {"dastar", "pentax"},
    {"smc", "pentax"},
    {"yongnuo", "yongnuo"},
    {"yn", "yongnuo"},
    {"ze", "zeiss"},
    {"zf", "zeiss"},
    {"zk", "zeiss"},
    {"zm", "zeiss"},
    {"otus", "zeiss"},
    {"milvus", "zeiss"},
    {"loxia", "zeiss"},
    {"batis", "zeiss"},
    {"touit", "zeiss"},
    {"nokton", "voigtländer"},
    {"bower", "bower"},
    {"nx", "samsung"},
    {"dt", "sony"},
    {"da", "pentax"},
    {"dfa", "pentax"},
    {"fa", "pentax"},
    {"fastar", "pentax"},
    {"afs", "nikon"},
    {"afp", "nikon"},
    {"pentacon", "pentacon"},
    {"xf", "fujifilm"},
    {"xc", "fujifilm"},
    {"gf", "fujifilm"},
};

/// Families whose names other makers use for the mount: they identify the maker only if nothing else does.
constexpr const char *kMountFamilies[] = {"ef", "efs", "efm", "rf",  "rfs", "fe",     "xf",  "xc", "gf",
                                          "nx", "dt",  "da",  "dfa", "fa",  "fastar", "afs", "afp"};

/// Like kMountFamilies, but also used in other makers' lens names that omit the maker ("E 28-75mm F2.8-2.8").
constexpr Family kSharedMounts[] = {{"e", "sony"}, {"z", "nikon"}};

/// Words that many makers use for glass, coatings, motors and equipment.
constexpr const char *kDescriptions[] = {
    "ed",      "if",    "al",         "ld",      "xr",  "xld",       "sld",     "ad",         "mc",
    "uw",      "hri",   "zoom",       "digital", "pro", "sp",        "tstar",   "vario",      "fl",
    "auto",    "asph",  "ultrasonic", "n",       "as",  "ae",        "ncs",     "cs",         "carl",
    "pf",      "super", "ssc",        "pancake", "smc", "coating",   "multi",   "t",          "r",
    "compact", "cf",    "fx",         "km",      "kmz", "motorized", "firefly", "blackstone", "dragonfly",
};

/// Words that do not help to identify a lens.
constexpr const char *kIdleWords[] = {"lens",  "mm",        "f",       "for",    "and",  "n",
                                      "the",   "objective", "unknown", "a",      "no",   "none",
                                      "other", "adapted",   "mount",   "manual", "model"};

template <std::size_t kCount> bool IsOneOf(const char *const (&words)[kCount], const QString &word)
{
    for (const char *each : words)
        if (word == QLatin1String(each))
            return true;
    return false;
}

} // namespace

QString FoldedLensName(const QString &text)
{
    QString folded = text.normalized(QString::NormalizationForm_KC).simplified().toCaseFolded(); // "Ⅱ" is "II"
    static const QVector<QPair<Pattern, QString>> spellings = [] {
        QVector<QPair<Pattern, QString>> all;
        for (const Spelling &spelling : kSpellings)
            all.append({Pattern(QString::fromUtf8(spelling.pattern), Pattern::UseUnicodePropertiesOption),
                        QString::fromUtf8(spelling.replacement)});
        return all;
    }();
    for (const auto &spelling : spellings)
        if (Matched(spelling.first, folded).hasMatch())
            folded.replace(spelling.first, spelling.second);
    return folded;
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

QSet<QString> MarksOfGroup(const QSet<QString> &marks, Group group)
{
    QSet<QString> found;
    for (const Mark &mark : kMarks) {
        const QString word = QLatin1String(mark.canonical ? mark.canonical : mark.word);
        if (mark.group == group && marks.contains(word))
            found.insert(word);
    }
    return found;
}

bool IsMountFamily(const QString &word)
{
    return IsOneOf(kMountFamilies, word);
}

bool IsDescription(const QString &word)
{
    return IsOneOf(kDescriptions, word);
}

QString MakerOfMount(const QSet<QString> &marks)
{
    for (const Family &mount : kSharedMounts)
        if (marks.contains(QLatin1String(mount.word)))
            return QLatin1String(mount.maker);
    return QString();
}

bool IsIdleWord(const QString &word)
{
    return IsOneOf(kIdleWords, word);
}
