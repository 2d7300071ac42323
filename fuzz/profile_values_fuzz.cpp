// Applies profiles in every valid XML form, with values that are plausible, extreme, missing or not numbers.
#include "ProfileUses.h"
#include "SpelledProfile.h"
#include "Target.h"

namespace {

const char *const kWild[] = {"0",    "-0",   "-1",     "1e-38", "1e38", "-1e38", "1e308",      "1e999", "nan",
                             "-inf", "1/0",  "0/0",    "1/-3",  "0x10", "1,5",   "4294967296", "",      "true",
                             "16",   "1e-9", "1e-300", " 2 ",   "--1",  "+.5e1", "9999999999", "10000", "2147483648"};

/// Returns a value near @p usual, @p usual times a factor from -8 to 8, an arbitrary float, or a value from kWild.
QByteArray AnyValue(Input &input, double usual)
{
    const int kind = input.Below(6);
    if (kind == 0)
        return kWild[input.Below(sizeof kWild / sizeof *kWild)];
    if (kind == 1)
        return QByteArray::number(static_cast<double>(input.Next<float>()), 'g', 9);
    if (kind == 2)
        return QByteArray::number(usual * (input.Below(256) - 128) / 16.0);
    return QByteArray::number(usual * (1.0 + input.Next<std::int8_t>() / 512.0));
}

struct Value {
    const char *name;
    double usual;
};

void AddValues(Input &input, const std::vector<Value> &rows, QList<SpelledValue> *to)
{
    for (const Value &row : rows)
        for (int count = input.Below(16); count < 15; count += 14) // usually once, rarely never or twice
            to->append({row.name, AnyValue(input, row.usual)});
}

SpelledNode AnyModel(Input &input, const char *name, const char *coefficients)
{
    SpelledNode node;
    node.name = name;
    AddValues(input,
              {{"FocalLengthX", 1.2},
               {"FocalLengthY", 1.2},
               {"ImageXCenter", 0.5},
               {"ImageYCenter", 0.5},
               {"ScaleFactor", 1.0}},
              &node.values);
    for (int i = 1, count = input.Below(5); i <= count; ++i)
        node.values.append({coefficients + QByteArray::number(i), AnyValue(input, i == 1 ? -0.1 : 0.02)});
    if (input.Below(4) == 0)
        AddValues(input, {{"TangentialDistortParam1", 0.001}, {"TangentialDistortParam2", -0.001}}, &node.values);
    return node;
}

SpelledNode AnyEntry(Input &input)
{
    SpelledNode entry;
    entry.values = {{"Make", "Maker"}, {"Model", "BODY"}};
    AddValues(input,
              {{"ImageWidth", 6000.0},
               {"ImageLength", 4000.0},
               {"SensorFormatFactor", 1.5},
               {"FocalLength", 24.0},
               {"FocusDistance", 3.0},
               {"ApertureValue", 4.0}},
              &entry.values);
    const bool isFisheye = input.Below(3) == 0;
    SpelledNode lens = AnyModel(input, isFisheye ? "FisheyeModel" : "PerspectiveModel", "RadialDistortParam");
    const int models = input.Below(16);
    const char *const kColors[] = {"ChromaticGreenModel", "ChromaticRedGreenModel", "ChromaticBlueGreenModel"};
    for (int i = 0; i < 3; ++i)
        if (models >> i & 1)
            lens.models.append(AnyModel(input, kColors[i], "RadialDistortParam"));
    if (models & 8)
        lens.models.append(AnyModel(input, "VignetteModel", "VignetteModelParam"));
    entry.models = {lens};
    return entry;
}

} // namespace

FUZZ_TARGET(profile_values)
{
    Input input(data, size);
    const auto spelling = static_cast<Spelling>(input.Below(kSpellings));
    QList<SpelledNode> entries;
    for (int count = 1 + input.Below(4); count > 0; --count)
        entries.append(AnyEntry(input));
    const QByteArray content = SpelledProfile(entries, spelling);
    CorrectPlainly(content);
    CorrectFitted(content);
}
