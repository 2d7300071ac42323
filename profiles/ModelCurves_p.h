// Lens models as functions of the radius, and tables of such functions.
#pragma once

#include "FitOptions.h"
#include "LensProfile.h"
#include "RadialCurve.h"

#include <functional>

/// Returns the factor by which a perspective model scales a point's radius: 1 + k1 x + k2 x^2 + k3 x^3, where @p x is
/// the square of that radius in focal lengths.
double PerspectiveFactor(const ProfileModel &model, double x);

/// Returns the share of light that reaches a point: 1 + a1 x + a2 x^2 + a3 x^3, where @p x is the square of its radius
/// in focal lengths.
double LightShare(const ProfileModel &model, double x);

/// Converts a radius of a projection, in focal lengths, to the angle from the axis, in radians, and back.
double AngleOf(Projection projection, double radius);
double RadiusOf(Projection projection, double angle);

/// Returns the factor by which a fisheye model scales the radius of a point in the corrected picture:
/// (t + k1 t^3 + k2 t^5 + k3 t^7) / radius, where t is the projection's angle from the axis at @p radius, in focal
/// lengths.
double FisheyeFactor(const ProfileModel &model, Projection projection, double radius);
/// Returns the radius up to which the factor is valid, in focal lengths; may be infinite: where the polynomial
/// folds back or, in rectilinear pictures, at 85 degrees from the axis if that is nearer.
double FisheyeEnd(const ProfileModel &model, Projection projection);

/// Returns the first radius, up to @p endRadius, where radius times @p factor stops increasing; @p endRadius if it
/// never stops.
double FoldRadius(const std::function<double(double radius)> &factor, double endRadius);

/// Tabulates @p value up to @p endRadius, with as many nodes as the tolerance requires, within limits.
/// @param tolerance  the error allowed at a radius.
RadialCurve Tabulate(const std::function<double(double radius)> &value, double endRadius,
                     const std::function<double(double radius)> &tolerance);
