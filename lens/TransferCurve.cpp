#include "TransferCurve.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

using Table = TransferCurve::Table;

std::int32_t BitsOf(float value)
{
    std::int32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

float FloatOf(std::int32_t bits)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// Returns a table from 2^@p firstOctave to 2^@p endOctave, with 2^@p splitBits segments per octave.
Table TableOf(const std::function<double(double)> &function, int firstOctave, int endOctave, int splitBits)
{
    constexpr int kMantissaBits = 23;
    Table table;
    table.least = std::ldexp(1.0F, firstOctave);
    table.greatest = std::nextafter(std::ldexp(1.0F, endOctave), 0.0F);
    table.shift = kMantissaBits - splitBits;
    table.first = BitsOf(table.least) >> table.shift;
    const int count = (BitsOf(table.greatest) >> table.shift) - table.first + 1;
    for (int i = 0; i < count; ++i) {
        const double from = i == 0 ? 0.0 : double(FloatOf((table.first + i) << table.shift));
        const double to = double(FloatOf((table.first + i + 1) << table.shift));
        const double atFrom = i == 0 ? 0.0 : function(from), slope = (function(to) - atFrom) / (to - from);
        // Shift the chord by half of its error in the middle, so that the error is the same on both sides.
        const double lift = i == 0 ? 0.0 : (function((from + to) / 2.0) - (atFrom + function(to)) / 2.0) / 2.0;
        table.segments.push_back({static_cast<float>(atFrom + lift - slope * from), static_cast<float>(slope)});
    }
    return table;
}

double Odd(const std::function<double(double)> &function, double value)
{
    return value > 0.0 ? function(value) : value < 0.0 ? -function(-value) : 0.0;
}

using Formula = TransferCurve::Formula;

constexpr Formula kSrgb = {2.4, 0.055, 0.04045, 1.0 / 12.92};

/// Formulas of curves that some profiles store as rounded points.
constexpr Formula kKnown[] = {
    kSrgb,
    {1.8, 0.0, 1.0 / 32.0, 1.0 / 16.0},        // ROMM RGB, ISO 22028-2
    {3.0, 0.16, 0.08, 27.0 / 24389.0 * 100.0}, // L*, CIE 15
    {1.0 / 0.45, 0.099, 0.081, 1.0 / 4.5},     // ITU-R BT.709
};

/// Returns whether light at evenly spaced stored values matches the formula within one 16-bit code.
bool Follows(const std::vector<double> &light, const Formula &formula)
{
    constexpr double kCode = 1.0 / 65535.0;
    for (size_t i = 1; i < light.size(); ++i) {
        const double wanted = formula.Light(double(i) / double(light.size() - 1));
        if (!(std::abs(light[i] / light.back() - wanted) <= kCode))
            return false;
    }
    return true;
}

/// Range of exponents in real curves, with a margin. A higher one, from a damaged profile, would overflow for floats
/// above 1.
constexpr double kFlattest = 0.25, kSteepest = 4.0;

/// One 16-bit code: white this close to black comes from a damaged profile, and the inverse curve would overflow.
constexpr double kLeastContrast = 1.0 / 65535.0;

/// Returns the formula that the points follow, if there are enough of them to recognize it.
std::optional<Formula> FormulaOf(const std::vector<double> &light)
{
    constexpr size_t kFewest = 64;
    if (light.size() < kFewest)
        return std::nullopt;
    const size_t middle = light.size() / 2;
    const double gamma = std::log(light[middle] / light.back()) / std::log(double(middle) / double(light.size() - 1));
    if (const Formula power = {gamma, 0.0, 0.0, 0.0}; kFlattest <= gamma && gamma <= kSteepest && Follows(light, power))
        return power;
    const auto known = std::find_if(std::begin(kKnown), std::end(kKnown),
                                    [&](const Formula &formula) { return Follows(light, formula); });
    return known == std::end(kKnown) ? std::nullopt : std::make_optional(*known);
}

/// Curve through non-decreasing points that aren't all equal.
class SampledCurve {
public:
    explicit SampledCurve(std::vector<double> light) : m_light(std::move(light))
    {
        const double last = m_light.back(), before = m_light[m_light.size() - 2];
        const double slope = (last - before) * double(m_light.size() - 1) / last;
        m_power = std::clamp(slope, kFlattest, kSteepest);
        const auto white = std::lower_bound(m_light.begin(), m_light.end(), last);
        m_white = double(white - m_light.begin()) / double(m_light.size() - 1);
    }

    double Light(double stored) const
    {
        if (stored >= 1.0)
            return m_light.back() * std::pow(stored, m_power);
        const double at = stored * double(m_light.size() - 1);
        const auto before = static_cast<size_t>(at);
        return m_light[before] + (at - double(before)) * (m_light[before + 1] - m_light[before]);
    }

    /// Returns the stored value of @p light; where the curve is level, the lowest one.
    double Stored(double light) const
    {
        if (light >= m_light.back())
            return m_white * std::pow(light / m_light.back(), 1.0 / m_power);
        const auto after = std::lower_bound(m_light.begin(), m_light.end(), light); // not the first, which is 0
        const double above = *after, below = *(after - 1);
        return (double(after - m_light.begin()) - 1.0 + (light - below) / (above - below)) / double(m_light.size() - 1);
    }

private:
    std::vector<double> m_light;
    double m_power; // exponent for stored values above 1
    double m_white; // lowest stored value with maximum light
};

} // namespace

TransferCurve::Channel::Channel(Function toLight, Function toStored)
    : light(std::move(toLight)),
      stored(std::move(toStored)),
      // From below the first 16-bit code to three octaves above white; only float pictures exceed white. The errors are
      // below 1/60,000 of the value.
      lightTable(TableOf(light, -17, 3, 7)),
      storedTable(TableOf(stored, -40, 12, 6))
{
}

double TransferCurve::Formula::Light(double stored) const
{
    return stored < toe ? slope * stored : std::pow((stored + offset) / (1.0 + offset), gamma);
}

double TransferCurve::Formula::Stored(double light) const
{
    return light < slope * toe ? light / slope : (1.0 + offset) * std::pow(light, 1.0 / gamma) - offset;
}

float TransferCurve::Table::At(float x) const
{
    const Segment &segment = segments[static_cast<size_t>((BitsOf(std::clamp(x, least, greatest)) >> shift) - first)];
    return segment.start + segment.slope * x;
}

TransferCurve::TransferCurve(std::vector<Channel> channels)
    : m_data(std::make_shared<const Data>(Data{std::move(channels), std::nullopt, {}}))
{
}

TransferCurve::TransferCurve(const Formula &formula)
    : m_data(std::make_shared<const Data>(
        Data{{Channel([=](double v) { return formula.Light(v); }, [=](double l) { return formula.Stored(l); })},
             formula,
             TableOf([=](double gain) { return std::pow(gain, 1.0 / formula.gamma); }, -4, 5, 8)}))
{
}

TransferCurve TransferCurve::Srgb()
{
    static const TransferCurve s_curve(kSrgb);
    return s_curve;
}

TransferCurve TransferCurve::Power(double gamma)
{
    if (gamma == 1.0)
        return Linear();
    return TransferCurve(Formula{gamma, 0.0, 0.0, 0.0});
}

std::optional<TransferCurve> TransferCurve::FromSamples(const std::vector<std::vector<double>> &curves)
{
    std::vector<Channel> channels;
    std::vector<std::optional<Formula>> formulas;
    for (std::vector<double> light : curves) {
        if (light.size() < 2 || !std::all_of(light.begin(), light.end(), [](double l) { return std::isfinite(l); }))
            return std::nullopt;
        const double black = light.front();
        double greatest = 0.0;
        for (double &value : light)
            value = greatest = std::max(greatest, value - black);
        if (!(greatest >= kLeastContrast))
            return std::nullopt;
        formulas.push_back(FormulaOf(light));
        const auto curve = std::make_shared<const SampledCurve>(std::move(light));
        channels.emplace_back([=](double v) { return curve->Light(v); }, [=](double l) { return curve->Stored(l); });
    }
    if (channels.size() != 1 && channels.size() != 3)
        return std::nullopt;
    const auto isFirst = [&](const std::optional<Formula> &formula) {
        return formula && formula->gamma == formulas[0]->gamma && formula->offset == formulas[0]->offset;
    };
    if (formulas[0] && std::all_of(formulas.begin(), formulas.end(), isFirst)) {
        const bool isLinear = std::abs(formulas[0]->gamma - 1.0) < 1e-6 && formulas[0]->toe == 0.0;
        return isLinear ? Linear() : TransferCurve(*formulas[0]);
    }
    return TransferCurve(std::move(channels));
}

double TransferCurve::Light(int channel, double stored) const
{
    return m_data ? Odd(m_data->channels[Index(channel)].light, stored) : stored;
}

double TransferCurve::Stored(int channel, double light) const
{
    return m_data ? Odd(m_data->channels[Index(channel)].stored, light) : light;
}
