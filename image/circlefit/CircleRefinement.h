// The last step of a circle fit: least squares over the edges that lie near the robust one.
#pragma once

#include "RansacFisheye.h"

struct RefinedCircle {
    RansacFisheye::Model model;
    int support; // edges within 0.5 % of the image's smaller side of it
};

/// Moves the best model of a finished fit to where the squared distances of its edges from it are least (Gauss-Newton).
/// Needed where the centre lies far from the origin, since the linear model of a trial is off by up to
/// offset^2 / (2 radius) there. Edges count up to 2.5 % of the smaller side away at first, up to 0.5 % at last. The
/// model stays where it is when fewer than three edges are near.
RefinedCircle RefineCircle(const RansacFisheye &fit);
