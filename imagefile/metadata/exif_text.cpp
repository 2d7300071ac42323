// Texts of EXIF values. Exiv2's print functions are unsuitable, because they depend on the locale.
#include "exif_lists.h"

#include "core/decimal.h"
#include "core/memory_check.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace imagefile {

namespace {

// Longer binary values, such as maker notes and tables, are listed as their length.
constexpr long kMaxListedBytes = 64;

double Quotient(const Exiv2::Rational &rational)
{
    return rational.second != 0 ? static_cast<double>(rational.first) / rational.second : 0.0;
}

// Avoids Exiv2's toLong for rationals, which traps on -2^31 / -1, and its toRational for unsigned ones, which makes
// numbers of 2^31 or more negative.
double ComponentAt(const Exiv2::Value &value, long index)
{
    if (const auto *rationals = dynamic_cast<const Exiv2::URationalValue *>(&value)) {
        const Exiv2::URational &rational = rationals->value_.at(static_cast<std::size_t>(index));
        return rational.second != 0 ? static_cast<double>(rational.first) / rational.second : 0.0;
    }
    if (value.typeId() == Exiv2::signedRational)
        return Quotient(value.toRational(index));
    if (value.typeId() == Exiv2::tiffFloat || value.typeId() == Exiv2::tiffDouble)
        return static_cast<double>(value.toFloat(index));
    return static_cast<double>(value.toLong(index));
}

long Integer(const Exiv2::Value &value, long index = 0)
{
    return static_cast<long>(std::clamp(ComponentAt(value, index), -1e15, 1e15));
}

std::string Decimals(const Exiv2::Value &value)
{
    std::string text;
    for (long i = 0; i < value.count(); ++i)
        text += (i > 0 ? " " : "") + Decimal(ComponentAt(value, i));
    return text;
}

// Returns "1/250", "-1/3", "2.5" or "2": a reduced fraction if the magnitude is below one, otherwise a decimal.
std::string Fraction(const Exiv2::Value &value)
{
    const Exiv2::Rational rational = value.toRational(0);
    const std::int64_t divisor = std::gcd(std::int64_t(rational.first), std::int64_t(rational.second));
    if (divisor == 0 || rational.second == 0 || rational.first == 0)
        return "0";
    const std::int64_t numerator = rational.first / divisor, denominator = rational.second / divisor;
    if (std::abs(numerator) >= std::abs(denominator))
        return Decimal(Quotient(rational));
    return std::to_string(denominator < 0 ? -numerator : numerator) + '/' + std::to_string(std::abs(denominator));
}

// Formats an angle with whole degrees and, if it has seconds, whole minutes, however the file splits it:
// "45° 30' 7.5\"".
std::string Degrees(const Exiv2::Value &value)
{
    if (value.count() < 3)
        return Decimals(value);
    double degrees = ComponentAt(value, 0), minutes = ComponentAt(value, 1), seconds = ComponentAt(value, 2);
    minutes += (degrees - std::floor(degrees)) * 60.0;
    degrees = std::floor(degrees);
    if (seconds != 0.0 || minutes >= 60.0) { // decimal minutes without seconds are common and stay unchanged
        seconds += (minutes - std::floor(minutes)) * 60.0;
        minutes = std::floor(minutes);
    }
    return FixedDecimal(degrees) + "° " + FixedDecimal(minutes) + "' " + FixedDecimal(seconds) + '"';
}

std::string NameOf(const Exiv2::Value &value, const char *const *names, long first, long count)
{
    const long number = Integer(value) - first;
    return number >= 0 && number < count ? names[number] : std::to_string(Integer(value));
}

std::string Orientation(const Exiv2::Value &value)
{
    static const char *const kNames[] = {"Top-left (1)", "Top-right (2)", "Bottom-right (3)", "Bottom-left (4)",
                                         "Left-top (5)", "Right-top (6)", "Right-bottom (7)", "Left-bottom (8)"};
    return NameOf(value, kNames, 1, 8);
}

std::string ResolutionUnit(const Exiv2::Value &value)
{
    static const char *const kNames[] = {"None", "Inch", "cm", "mm", "um"};
    return NameOf(value, kNames, 1, 5);
}

std::string Direction(const Exiv2::Value &value)
{
    std::string text = WholeText(value);
    constexpr std::pair<char, const char *> kNames[] = {{'N', "North"}, {'S', "South"}, {'E', "East"},
                                                        {'W', "West"},  {'T', "True"},  {'M', "Magnetic"}};
    for (const auto &[letter, name] : kNames)
        if (text[0] == letter)
            return name;
    return text;
}

std::string Comment(const Exiv2::Value &value)
{
    if (const auto *comment = dynamic_cast<const Exiv2::CommentValue *>(&value))
        return comment->comment();
    Bytes bytes(static_cast<std::size_t>(std::max(0L, value.size())));
    value.copy(bytes.data(), Exiv2::littleEndian);
    Exiv2::CommentValue comment;
    comment.read(bytes.data(), static_cast<long>(bytes.size()), Exiv2::littleEndian);
    return comment.comment();
}

std::string AsciiDigits(const Exiv2::Value &value) // versions: four digits as bytes
{
    std::string text;
    for (long i = 0; i < value.count() && i < 8; ++i)
        text += static_cast<char>(Integer(value, i));
    return text;
}

struct TextRule {
    const char *group;
    std::uint16_t tag;
    std::string (*text)(const Exiv2::Value &);
};
constexpr TextRule kRules[] = {
    {"Image", 274, Orientation}, {"Image", 296, ResolutionUnit},   {"Photo", 33434, Fraction},
    {"Photo", 37380, Fraction},  {"Photo", 36864, AsciiDigits},    {"Photo", 40960, AsciiDigits},
    {"Photo", 37510, Comment},   {"Photo", 41488, ResolutionUnit}, {"Iop", 2, AsciiDigits},
    {"GPSInfo", 1, Direction},   {"GPSInfo", 2, Degrees},          {"GPSInfo", 3, Direction},
    {"GPSInfo", 4, Degrees},     {"GPSInfo", 14, Direction},       {"GPSInfo", 16, Direction},
    {"GPSInfo", 19, Direction},  {"GPSInfo", 20, Degrees},         {"GPSInfo", 21, Direction},
    {"GPSInfo", 22, Degrees},    {"GPSInfo", 23, Direction},
};

std::string PlainText(const Exiv2::Value &value)
{
    switch (value.typeId()) {
    case Exiv2::asciiString: {
        std::string text = WholeText(value);
        text.resize(std::min(text.find('\0'), text.size()));
        text.resize(text.find_last_not_of(' ') + 1); // cameras pad names with spaces
        return text;
    }
    case Exiv2::undefined:
    case Exiv2::unsignedByte:
        return value.size() > kMaxListedBytes ? '(' + std::to_string(value.size()) + " bytes)" : WholeText(value);
    case Exiv2::unsignedRational:
    case Exiv2::signedRational:
    case Exiv2::tiffFloat:
    case Exiv2::tiffDouble:
        return Decimals(value);
    default:
        return WholeText(value);
    }
}

const Exiv2::Value *Find(const Exiv2::ExifData &exif, const char *key, long count = 1)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found != exif.end() && found->count() >= count ? &found->value() : nullptr;
}

std::string CanonLens(const Exiv2::ExifData &exif)
{
    const Exiv2::Value *focal = Find(exif, "Exif.CanonCs.Lens", 3); // longest, shortest, units per millimeter
    const Exiv2::Value *type = Find(exif, "Exif.CanonCs.LensType");
    constexpr long kNoLens = 65535;
    if (!focal || !type || Integer(*focal, 2) == 0 || Integer(*type) == kNoLens)
        return std::string();
    const auto unit = static_cast<double>(Integer(*focal, 2));
    return Decimal(static_cast<double>(Integer(*focal, 1)) / unit) + ' '
        + Decimal(static_cast<double>(Integer(*focal, 0)) / unit) + ' ' + std::to_string(Integer(*type));
}

// Nikon stores focal lengths and f-numbers as base-2 logarithms, in units of 1/24.
double NikonFocalMm(long raw)
{
    return 5.0 * std::exp2(static_cast<double>(raw) / 24.0);
}

double NikonFNumber(long raw)
{
    return std::exp2(static_cast<double>(raw) / 24.0);
}

std::string OneDecimal(double value)
{
    return Decimal(std::round(value * 10.0) / 10.0);
}

std::string NikonLens(const Exiv2::ExifData &exif)
{
    for (const std::string group : {"Exif.NikonLd1.", "Exif.NikonLd2.", "Exif.NikonLd3."}) {
        const Exiv2::Value *number = Find(exif, (group + "LensIDNumber").c_str());
        const Exiv2::Value *shortest = Find(exif, (group + "MinFocalLength").c_str());
        const Exiv2::Value *longest = Find(exif, (group + "MaxFocalLength").c_str());
        const Exiv2::Value *apertureShort = Find(exif, (group + "MaxApertureAtMinFocal").c_str());
        const Exiv2::Value *apertureLong = Find(exif, (group + "MaxApertureAtMaxFocal").c_str());
        if (number && shortest && longest && apertureShort && apertureLong)
            return Decimal(std::round(NikonFocalMm(Integer(*shortest)))) + ' '
                + Decimal(std::round(NikonFocalMm(Integer(*longest)))) + ' ' + std::to_string(Integer(*number)) + ' '
                + OneDecimal(NikonFNumber(Integer(*apertureShort))) + ' '
                + OneDecimal(NikonFNumber(Integer(*apertureLong)));
    }
    return std::string();
}

} // namespace

std::string ExifText(const Exiv2::Exifdatum &datum)
{
    if (datum.count() == 0)
        return std::string();
    const std::string group = datum.groupName();
    for (const TextRule &rule : kRules)
        if (rule.tag == datum.tag() && group == rule.group)
            return rule.text(datum.value());
    return PlainText(datum.value());
}

std::string LensId(const Exiv2::ExifData &exif)
{
    std::string id = NikonLens(exif);
    return id.empty() ? CanonLens(exif) : id;
}

} // namespace imagefile
