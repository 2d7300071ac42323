// The last step of a circle fit: least squares over the edges near the robust circle.
#pragma once

#include "RansacFisheye.h"

struct RefinedCircle {
    RansacFisheye::Model model;
    int support; // number of edges closer to the circle than 0.5 % of the image's smaller side
};

/// Refines the best model of a finished fit by least squares over the distances of its edges (Gauss-Newton). Needed if
/// the center is far from the origin, because a trial's linear model is off by up to offset^2 / (2 radius) there. The
/// first iterations use edges up to 2.5 % of the smaller side away, the last ones up to 0.5 %. With fewer than three
/// edges in range, the model stays unchanged.
RefinedCircle RefineCircle(const RansacFisheye &fit);
