// Robust fit of a circle to points with outliers: the image circle of a fisheye photograph.
#pragma once

#include <QVector>

/// Fit of a circle to points measured along rays that start near its center, by random sample consensus (Fischler and
/// Bolles 1981). All lengths are in pixels, positions relative to the rays' origin.
///
/// Fill data, width, height, iterations and maxCenterOffset2, call process(), read best. Random numbers come from
/// qrand(): a caller that seeds it with qsrand() gets the same circle for the same data. Use each fit on one thread.
class RansacFisheye {
public:
    /// One measurement, on the ray of the unit vector (directionX, directionY).
    struct Data {
        double distance;
        double directionX;
        double directionY;
        bool inside; // false: an edge of the circle; true: a point known to lie inside, never drawn as a sample
    };

    struct Model {
        double centerX;
        double centerY;
        double radius;
    };

    QVector<Data> data;
    double bestScore = 0;        // 0: nothing found
    Model best = {0, 0, 0};      // the first model with that score
    int iterations = 0;          // maximum number of trials
    double maxCenterOffset2 = 0; // upper limit of the center's squared distance from the origin
    double width = 0;            // of the image
    double height = 0;

    /// Runs at most `iterations` trials, until one is good enough.
    void process();
    /// Returns the circle through three edges drawn at random, by a linear model that holds for centers near the
    /// origin: distance = radius + centerX * directionX + centerY * directionY. All 0 if the three directions don't
    /// determine it or there are fewer than three edges. If the center would be too far out, returns the circle about
    /// the origin through the first edge.
    Model computeOneModel();
    /// Scores a model: (edges on the circle + points inside it - edges counted against it) / measurements. An edge is
    /// on the circle if it is closer to it than 0.5 % of the image's smaller side. Any other edge counts against the
    /// model if the circle, in the edge's direction, lies at least the image's width to the right of the origin or at
    /// least its height below it. Keeps the model if its score is the highest so far and more than 5 % of the
    /// measurements are edges on the circle; returns true if the score is above 0.6.
    bool evaluateModel(Model model);

private:
    int DrawEdge() const;
};
