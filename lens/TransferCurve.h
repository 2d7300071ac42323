// How stored values mean light.
#pragma once

/// Stored values of a picture to light and back.
///
/// A value: copies are independent. Any thread may call const functions.
class TransferCurve {
public:
    /// Stored values are proportional to light.
    static TransferCurve Linear() { return {}; }
    bool IsLinear() const { return true; }
};
