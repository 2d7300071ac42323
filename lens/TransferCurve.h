// Conversion between stored values and linear light.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// Conversion between a picture's stored values and linear light, per channel: exact in double precision, or with
/// tables for pixel loops.
///
/// Curves never decrease, and pass through 0, so black stays black. For float pictures, they continue above 1 and are
/// odd functions.
///
/// Value type: copies share tables. Several threads may call the functions of one object at the same time.
class TransferCurve {
public:
    /// Constructs a linear curve: stored values are proportional to light.
    TransferCurve() = default;
    static TransferCurve Linear() { return {}; }
    /// Returns the curve of sRGB (IEC 61966-2-1).
    static TransferCurve Srgb();
    /// Returns the curve in which light is the stored value to the power of @p gamma, which must be above 0.
    static TransferCurve Power(double gamma);
    /// Returns the curve through points; nullopt if a curve never increases or contains infinity or NaN.
    ///
    /// @param curves  Light at stored values evenly spaced from 0 to 1, at least two points each; one curve for all
    /// channels, or three. Light is interpolated linearly between points and continues as a power above 1. Light at
    /// stored value 0 counts as black; where a curve falls, it is treated as level.
    static std::optional<TransferCurve> FromSamples(const std::vector<std::vector<double>> &curves);

    bool IsLinear() const { return !m_data; }
    /// @p channel is 0 to 2.
    double Light(int channel, double stored) const;
    double Stored(int channel, double light) const;

    /// Line followed by a power:
    ///
    ///     light = slope v                                for v below toe
    ///     light = ((v + offset) / (1 + offset)) ^ gamma  above
    ///
    /// A gain g >= 1 maps v to (v + offset) g^(1 / gamma) - offset, or to g v on the line, so pixels need no power
    /// function.
    struct Formula {
        double gamma, offset, toe, slope;  // a toe of 0: no line
        double Light(double stored) const; // for values above 0
        double Stored(double light) const;
    };
    /// Returns the formula for all channels; null if the curves are known only as points.
    const Formula *ByFormula() const { return m_data && m_data->formula ? &*m_data->formula : nullptr; }

    /// Piecewise linear function, indexed by the leading bits of a float, which divide each octave evenly.
    struct Table {
        struct Segment {
            float start, slope; // of start + slope * x
        };
        float least, greatest; // range of x; the outermost segments continue beyond it
        int shift, first;      // the segment of x is (bits of x >> shift) - first
        std::vector<Segment> segments;

        float At(float x) const; // for x >= 0
    };
    const Table &LightTable(int channel) const { return m_data->channels[Index(channel)].lightTable; }
    const Table &StoredTable(int channel) const { return m_data->channels[Index(channel)].storedTable; }
    /// Returns the table of gain^(1 / gamma), for gains from 1/16 to kMaxGain; null without a formula.
    const Table *RootTable() const { return ByFormula() ? &m_data->rootTable : nullptr; }

private:
    using Function = std::function<double(double)>; // for arguments above 0
    struct Channel {
        Channel(Function toLight, Function toStored);

        Function light, stored;
        Table lightTable, storedTable;
    };
    struct Data {
        std::vector<Channel> channels;
        std::optional<Formula> formula;
        Table rootTable;
    };

    explicit TransferCurve(std::vector<Channel> channels);
    explicit TransferCurve(const Formula &formula);
    size_t Index(int channel) const { return m_data->channels.size() == 1 ? 0 : static_cast<size_t>(channel); }

    std::shared_ptr<const Data> m_data; // null: linear
};
