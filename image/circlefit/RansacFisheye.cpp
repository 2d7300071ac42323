#include "RansacFisheye.h"

#include "ippi.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kInlierDistance = 0.005; // relative to the smaller side
constexpr double kMinScore = 0.05;
constexpr double kGoodScore = 0.6;

/// Solves three linear equations and overwrites @p matrix. Returns false if there is no unique solution.
bool Solve(float matrix[3][3], const float right[3], float solution[3])
{
    constexpr primitives::Step kRowBytes = 3 * sizeof(float);
    int pivot[3];
    ippmLUDecomp_m_32f(matrix[0], kRowBytes, pivot, matrix[0], kRowBytes, 3);
    return ippmLUBackSubst_mva_32f(matrix[0], kRowBytes, pivot, right, kRowBytes, solution, kRowBytes, 3, 1)
        == primitives::Status::Ok;
}

/// Returns the smaller side in whole pixels.
int SmallerSide(double width, double height)
{
    const double side = std::min(width, height);
    return side > 0 ? static_cast<int>(std::min(side, double(std::numeric_limits<int>::max()))) : 0;
}

} // namespace

void RansacFisheye::process()
{
    bestScore = 0;
    for (int i = 0; i < iterations; ++i) {
        if (evaluateModel(computeOneModel()))
            break;
    }
}

int RansacFisheye::DrawEdge() const
{
    int index;
    do
        index = qrand() % data.size();
    while (data[index].inside);
    return index;
}

RansacFisheye::Model RansacFisheye::computeOneModel()
{
    const auto isEdge = [](const Data &measurement) { return !measurement.inside; };
    if (std::count_if(data.cbegin(), data.cend(), isEdge) < 3)
        return {0, 0, 0}; // drawing three different edges would never end

    int drawn[3];
    float matrix[3][3], right[3], solution[3];
    for (int row = 0; row < 3; ++row) {
        do
            drawn[row] = DrawEdge();
        while (std::find(drawn, drawn + row, drawn[row]) != drawn + row);
        const Data &edge = data[drawn[row]];
        matrix[row][0] = 1;
        matrix[row][1] = static_cast<float>(edge.directionX);
        matrix[row][2] = static_cast<float>(edge.directionY);
        right[row] = static_cast<float>(edge.distance);
    }
    if (!Solve(matrix, right, solution))
        return {0, 0, 0};
    const Model model = {solution[1], solution[2], solution[0]};
    if (maxCenterOffset2 > model.centerX * model.centerX + model.centerY * model.centerY)
        return model;
    return {0, 0, data[drawn[0]].distance};
}

bool RansacFisheye::evaluateModel(Model model)
{
    const int smallerSide = SmallerSide(width, height);
    int inliers = 0, bonus = 0;
    for (const Data &measurement : qAsConst(data)) {
        const double fromCenterX = measurement.distance * measurement.directionX - model.centerX;
        const double fromCenterY = measurement.distance * measurement.directionY - model.centerY;
        const double residual =
            (std::sqrt(fromCenterX * fromCenterX + fromCenterY * fromCenterY) - model.radius) / smallerSide;
        if (measurement.inside) {
            bonus += residual < 0 ? 1 : 0;
        } else if (std::fabs(residual) < kInlierDistance) {
            ++inliers;
        } else {
            const double onCircleX = model.centerX + model.radius * measurement.directionX;
            const double onCircleY = model.centerY + model.radius * measurement.directionY;
            bonus -= onCircleX < width && onCircleY < height ? 0 : 1;
        }
    }
    if (data.isEmpty())
        return false;
    double score = static_cast<double>(inliers) / data.size();
    if (score > kMinScore) {
        score = static_cast<double>(inliers + bonus) / data.size();
        if (score > bestScore) {
            bestScore = score;
            best = model;
        }
    }
    return score > kGoodScore;
}
