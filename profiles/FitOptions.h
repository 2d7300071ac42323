// Options of a fitted correction, set by a host or a user; options that are not set keep their defaults.
#pragma once

#include <QString>

#include <optional>

enum class Framing { Fill, Keep, All, Factor };
enum class Sampling { Sharp, Bilinear };
enum class Projection { Rectilinear, Equidistant, Stereographic, Equisolid };
enum class ProfileSource { Auto, Lcp, Lensfun };

/// Facts typed by the user, for lenses that report none; each overrides the file's value.
struct TypedFacts {
    QString lens;                    // empty: not given
    QString body;                    // model name; empty: not given
    std::optional<double> focalMm;   // > 0
    std::optional<double> aperture;  // f-number, > 0
    std::optional<double> distanceM; // > 0; may be infinite
};

constexpr double kMinZoom = 0.5, kMaxZoom = 2.0; // of the framing
constexpr double kMaxAmount = 2.0;               // enough for any use, and keeps all values finite

struct FitOptions {
    bool distortion = true, chromatic = true, vignetting = true;
    QString profile; // path chosen by the user; empty: found automatically
    Framing framing = Framing::Fill;
    double framingFactor = 1.0; // for Framing::Factor, kMinZoom to kMaxZoom
    Sampling sampling = Sampling::Sharp;
    Projection projection = Projection::Rectilinear; // for fisheyes
    // Factors by which the profile's corrections are scaled, 0 to kMaxAmount.
    double amountDistortion = 1.0, amountChromatic = 1.0, amountVignetting = 1.0;
    ProfileSource source = ProfileSource::Auto;
    bool again = false; // correct even if the picture was corrected before
    TypedFacts typed;
};
