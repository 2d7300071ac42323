// Lens models as functions of the radius in pixels of the picture, and tables of such functions.
#pragma once

#include "FitOptions.h"
#include "LensProfile.h"
#include "RadialCurve.h"

#include <functional>

/// Returns the factor by which a perspective model moves a point: 1 + k1 x + k2 x^2 + k3 x^3 at the squared radius @p
/// x, in focal lengths.
double PerspectiveFactor(const ProfileModel &model, double x);

/// Returns the share of light at the squared radius @p x in focal lengths: 1 + a1 x + a2 x^2 + a3 x^3.
double LightShare(const ProfileModel &model, double x);

/// Returns the angle from the axis, in radians, that a projection has at @p radius, in focal lengths, and the inverse.
double AngleOf(Projection projection, double radius);
double RadiusOf(Projection projection, double angle);

/// Returns the factor by which a fisheye model moves a point of the corrected picture. @p radius is in focal lengths:
/// (t + k1 t^3 + k2 t^5 + k3 t^7) / radius, with t the angle from the axis that the projection has there.
double FisheyeFactor(const ProfileModel &model, Projection projection, double radius);
/// Returns the radius up to which the factor is valid, in focal lengths; may be infinite. Rectilinear pictures end at
/// 85 degrees, all others where the polynomial folds back.
double FisheyeEnd(const ProfileModel &model, Projection projection);

/// Returns the first radius, up to @p endRadius, where radius times @p factor stops increasing; @p endRadius if it
/// never stops.
double FoldRadius(const std::function<double(double radius)> &factor, double endRadius);

/// Tabulates @p value up to @p endRadius, with as many nodes as the tolerance needs.
/// @param tolerance  the allowed error at a radius.
RadialCurve Tabulate(const std::function<double(double radius)> &value, double endRadius,
                     const std::function<double(double radius)> &tolerance);
