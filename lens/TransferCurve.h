// What stored values mean as light.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// Turns stored values of a picture into light and back, per channel: exactly in double, and by tables for every pixel.
///
/// Curves grow and go through 0, so that black stays black. They go on above 1, for float pictures, and are odd
/// functions, for negative values there.
///
/// A value: copies share tables. Any thread may call the functions of one object at the same time.
class TransferCurve {
public:
    /// Stored values are proportional to light.
    TransferCurve() = default;
    static TransferCurve Linear() { return {}; }
    /// IEC 61966-2-1.
    static TransferCurve Srgb();
    /// Light is the stored value to the power of @p gamma, which is above 0.
    static TransferCurve Power(double gamma);
    /// @p curves: light at stored values evenly spaced from 0 to 1, at least two each; one curve for all channels, or
    /// three. Between them light is interpolated linearly; above 1 it goes on as a power. Light at 0 counts as black,
    /// and values that fall count as level. Nothing if a curve doesn't rise at all or holds what is not a number.
    static std::optional<TransferCurve> FromSamples(const std::vector<std::vector<double>> &curves);

    bool IsLinear() const { return !m_channels; }
    /// @p channel is 0 to 2.
    double Light(int channel, double stored) const;
    double Stored(int channel, double light) const;

    /// A function as straight segments over the bits of a float, which divide each octave evenly.
    struct Table {
        struct Segment {
            float start, slope; // of start + slope * x
        };
        float least, greatest; // of x that have segments of their own; the outermost ones go on
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
