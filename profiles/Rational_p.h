// Parser of numbers and fractions in metadata and profiles.
#pragma once

#include <QString>

#include <cmath>
#include <optional>

/// Parses "1.4" or "14/10", regardless of the locale; nullopt if the text is not a number or the result is not finite.
inline std::optional<double> ParseRational(const QString &text)
{
    const int slash = text.indexOf(QLatin1Char('/'));
    bool isNumber = false, isDivisor = true;
    double value = text.left(slash).trimmed().toDouble(&isNumber);
    if (slash >= 0)
        value /= text.mid(slash + 1).trimmed().toDouble(&isDivisor);
    if (!isNumber || !isDivisor || !std::isfinite(value))
        return std::nullopt;
    return value;
}
