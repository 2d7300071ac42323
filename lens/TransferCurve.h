// Conversion between stored values and light.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// Converter between a picture's stored values and light, per channel: exact in double, and by tables for every pixel.
///
/// Curves rise and pass through 0, so black stays black. For float pictures they continue above 1 and are odd functions
/// for negative values.
///
/// Value type: copies share tables. Several threads may call the functions of one object at the same time.
class TransferCurve {
public:
    /// Stored values are proportional to light.
    TransferCurve() = default;
    static TransferCurve Linear() { return {}; }
    /// IEC 61966-2-1.
    static TransferCurve Srgb();
    /// Light is the stored value to the power of @p gamma, which is above 0.
    static TransferCurve Power(double gamma);
    /// @param curves  light at stored values evenly spaced from 0 to 1, at least two points each; one curve for all
    /// channels, or three. Light is interpolated linearly between points and continues as a power above 1. Light at 0
    /// counts as black; where a curve falls, it counts as level.
    /// @return none if a curve never rises or contains NaN.
    static std::optional<TransferCurve> FromSamples(const std::vector<std::vector<double>> &curves);

    bool IsLinear() const { return !m_channels; }
    /// @p channel is 0 to 2.
    double Light(int channel, double stored) const;
    double Stored(int channel, double light) const;

    /// A function as linear segments, indexed by the leading bits of a float: they divide each octave evenly.
    struct Table {
        struct Segment {
            float start, slope; // of start + slope * x
        };
        float least, greatest; // range of x; the outermost segments continue beyond it
        int shift, first;      // the segment of x is (bits of x >> shift) - first
        std::vector<Segment> segments;
    };
    const Table &LightTable(int channel) const { return (*m_channels)[Index(channel)].lightTable; }
    const Table &StoredTable(int channel) const { return (*m_channels)[Index(channel)].storedTable; }

private:
    using Function = std::function<double(double)>; // for arguments above 0
    struct Channel {
        Channel(Function toLight, Function toStored);

        Function light, stored;
        Table lightTable, storedTable;
    };
    using Channels = std::vector<Channel>;

    explicit TransferCurve(Channels channels) : m_channels(std::make_shared<const Channels>(std::move(channels))) { }
    size_t Index(int channel) const { return m_channels->size() == 1 ? 0 : static_cast<size_t>(channel); }

    std::shared_ptr<const Channels> m_channels; // none: linear
};
