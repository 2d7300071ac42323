#include "SharpKernel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kUpToFrequency = 0.37; // cycles per pixel
constexpr int kTaps = SharpKernel::kTaps;
constexpr int kUnknowns = kTaps + 2; // weights and the Lagrange multipliers of two conditions

using Weights = std::array<double, kTaps>;
using IntegerWeights = std::array<int, kTaps>;
using Equations = std::array<std::array<double, kUnknowns + 1>, kUnknowns>; // last column: right-hand sides

/// Returns the integral of cos(2 pi f d) over f from 0 to kUpToFrequency.
double Overlap(double d)
{
    return d == 0.0 ? kUpToFrequency : std::sin(2.0 * kPi * kUpToFrequency * d) / (2.0 * kPi * d);
}

/// Solves by Gauss-Jordan elimination with partial pivoting; the last column receives the solution.
void Solve(Equations *equations)
{
    Equations &e = *equations;
    for (size_t i = 0; i < e.size(); ++i) {
        size_t pivot = i;
        for (size_t row = i + 1; row < e.size(); ++row)
            if (std::abs(e[row][i]) > std::abs(e[pivot][i]))
                pivot = row;
        std::swap(e[i], e[pivot]);
        const double scale = 1.0 / e[i][i];
        for (double &value : e[i])
            value *= scale;
        for (size_t row = 0; row < e.size(); ++row) {
            const double times = row == i ? 0.0 : e[row][i];
            for (size_t column = 0; column <= kUnknowns; ++column)
                e[row][column] -= times * e[i][column];
        }
    }
}

/// Returns the weights for a position @p phase, 0 to 1, after the pixel of tap kBefore.
Weights LeastSquares(double phase)
{
    Equations e = {};
    for (int i = 0; i < kTaps; ++i) {
        const double offset = i - SharpKernel::kBefore;
        for (int j = 0; j < kTaps; ++j)
            e[i][j] = Overlap(i - j);
        e[i][kTaps] = e[kTaps][i] = 1.0;
        e[i][kTaps + 1] = e[kTaps + 1][i] = offset;
        e[i][kUnknowns] = Overlap(offset - phase);
    }
    e[kTaps][kUnknowns] = 1.0;
    e[kTaps + 1][kUnknowns] = phase;
    Solve(&e);
    Weights weights;
    for (int i = 0; i < kTaps; ++i)
        weights[i] = e[i][kUnknowns];
    return weights;
}

/// Returns the integers nearest to @p weights times kOne whose sum is kOne and whose first moment is @p moment. Each
/// differs by at most one from the rounded weight.
IntegerWeights Rounded(const Weights &weights, int moment)
{
    IntegerWeights rounded, best = {};
    int sum = SharpKernel::kOne;
    for (int i = 0; i < kTaps; ++i) {
        rounded[i] = static_cast<int>(std::lround(weights[i] * SharpKernel::kOne));
        sum -= rounded[i];
        moment -= rounded[i] * (i - SharpKernel::kBefore);
    }
    double least = std::numeric_limits<double>::infinity();
    constexpr int kChoices = 729; // 3^6: -1, 0 or 1 for each of six
    for (int choice = 0; choice < kChoices; ++choice) {
        IntegerWeights trial = rounded;
        int restOfSum = sum, restOfMoment = moment;
        double error = 0.0;
        for (int i = 0, digits = choice; i < kTaps; ++i, digits /= 3) {
            const int change = digits % 3 - 1;
            trial[i] += change;
            restOfSum -= change;
            restOfMoment -= change * (i - SharpKernel::kBefore);
            error += std::pow(trial[i] - weights[i] * SharpKernel::kOne, 2);
        }
        if (restOfSum == 0 && restOfMoment == 0 && error < least) {
            least = error;
            best = trial;
        }
    }
    return best;
}

} // namespace

const SharpKernel &SharpKernel::Get()
{
    static const SharpKernel s_kernel;
    return s_kernel;
}

SharpKernel::SharpKernel() : m_shares(), m_weights()
{
    for (int phase = 0; phase < kPhases; ++phase) {
        const IntegerWeights weights = Rounded(LeastSquares(double(phase) / kPhases), phase * (kOne / kPhases));
        for (int i = 0; i < kTaps; ++i) {
            m_weights[phase * kPadded + i] = static_cast<std::int16_t>(weights[i]);
            m_shares[phase * kPadded + i] = static_cast<float>(weights[i]) / kOne;
        }
    }
}
