// A robust fit of one circle among outliers: the image circle of a fisheye photograph.
#pragma once

#include <QVector>

/// Finds a circle from points measured along rays that start near its centre, by random sampling and consensus
/// (Fischler and Bolles 1981). All lengths are in pixels, positions relative to the rays' origin.
///
/// Fill data, width, height, iterations and maxCenterOffset2, call process(), read best. Draws come from qrand(): a
/// caller that seeds with qsrand() gets the same circle for the same data. One thread a fit.
class RansacFisheye {
public:
    /// One measurement, on the ray of the unit vector (directionX, directionY).
    struct Data {
        double distance;
        double directionX;
        double directionY;
        bool inside; // false: an edge of the circle; true: a place known to lie inside, never drawn as a sample
    };

    struct Model {
        double centerX;
        double centerY;
        double radius;
    };

    QVector<Data> data;
    double bestScore = 0;        // 0: nothing found
    Model best = {0, 0, 0};      // the first model of that score
    int iterations = 0;          // trials at most
    double maxCenterOffset2 = 0; // the squared distance of the centre from the origin stays below
    double width = 0;            // of the image
    double height = 0;

    /// Runs the trials until one is good enough.
    void process();
    /// The circle through three edges drawn at random, in the linear model that holds close to the centre:
    /// distance = radius + centerX * directionX + centerY * directionY. All 0 where three directions don't determine
    /// it, or where there are no three edges; a circle about the origin through the first edge where the centre would
    /// lie too far out.
    Model computeOneModel();
    /// Scores a model as the share of edges within 0.5 % of the image's smaller side, more for places inside, less for
    /// edges missed where the circle lies beyond the image. Keeps it if it is the best so far and that share is above
    /// 5 %; true if the score is above 0.6.
    bool evaluateModel(Model model);

private:
    int DrawEdge() const;
};
