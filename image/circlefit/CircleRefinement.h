// The last step of a circle fit: least squares over the edges near the robust circle.
#pragma once

#include "RansacFisheye.h"

struct RefinedCircle {
    RansacFisheye::Model model;
    int support; // number of edges closer to the circle than 0.5 % of the image's smaller side
};

/// Refines the best model of a finished fit by least squares over the edges' distances from the circle (Gauss-Newton).
/// Needed if the center is far from the origin, because the linear model of a trial is then off by up to
/// offset^2 / (2 radius). The first iterations use edges at most 2.5 % of the image's smaller side from the circle, the
/// last ones 0.5 %. With fewer than three such edges, the model stays unchanged.
RefinedCircle RefineCircle(const RansacFisheye &fit);
