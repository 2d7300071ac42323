#include "linear_algebra.h"

#include <algorithm>
#include <cmath>

namespace primitives {

namespace {

int LargestPivotRow(const Ipp32f *lu, Step luStep, int column, int n)
{
    int best = column;
    for (int row = column + 1; row < n; ++row) {
        if (std::fabs(RowAt(lu, luStep, row)[column]) > std::fabs(RowAt(lu, luStep, best)[column]))
            best = row;
    }
    return best;
}

void Eliminate(Ipp32f *lu, Step luStep, int column, int n)
{
    const Ipp32f *pivotRow = RowAt(lu, luStep, column);
    for (int row = column + 1; row < n; ++row) {
        Ipp32f *target = RowAt(lu, luStep, row);
        target[column] /= pivotRow[column];
        for (int k = column + 1; k < n; ++k)
            target[k] -= target[column] * pivotRow[k];
    }
}

bool IsUsablePivot(Ipp32f value)
{
    return std::isfinite(value) && value != 0.0f;
}

} // namespace

Status LuDecompose(const Ipp32f *matrix, Step step, int *pivot, Ipp32f *lu, Step luStep, int n)
{
    if (!matrix || !pivot || !lu)
        return Status::NullPointer;
    if (n < 1)
        return Status::BadSize;
    for (int row = 0; row < n; ++row)
        std::copy_n(RowAt(matrix, step, row), n, RowAt(lu, luStep, row));
    Status status = Status::Ok;
    for (int column = 0; column < n; ++column) {
        pivot[column] = LargestPivotRow(lu, luStep, column, n);
        if (Ipp32f *row = RowAt(lu, luStep, column); pivot[column] != column)
            std::swap_ranges(row, row + n, RowAt(lu, luStep, pivot[column]));
        if (IsUsablePivot(RowAt(lu, luStep, column)[column]))
            Eliminate(lu, luStep, column, n);
        else
            status = Status::Singular;
    }
    return status;
}

Status LuBackSubstitute(const Ipp32f *lu, Step luStep, const int *pivot, const Ipp32f *right, Step rightStep, Ipp32f *x,
                        Step xStep, int n, int count)
{
    if (!lu || !pivot || !right || !x)
        return Status::NullPointer;
    if (n < 1 || count < 1)
        return Status::BadSize;
    for (int row = 0; row < n; ++row) {
        if (!IsUsablePivot(RowAt(lu, luStep, row)[row]) || pivot[row] < row || pivot[row] >= n)
            return Status::Singular;
    }
    for (int vector = 0; vector < count; ++vector) {
        Ipp32f *out = RowAt(x, xStep, vector);
        std::copy_n(RowAt(right, rightStep, vector), n, out);
        for (int row = 0; row < n; ++row)
            std::swap(out[row], out[pivot[row]]);
        for (int row = 1; row < n; ++row) {
            for (int k = 0; k < row; ++k)
                out[row] -= RowAt(lu, luStep, row)[k] * out[k];
        }
        for (int row = n - 1; row >= 0; --row) {
            for (int k = row + 1; k < n; ++k)
                out[row] -= RowAt(lu, luStep, row)[k] * out[k];
            out[row] /= RowAt(lu, luStep, row)[row];
        }
    }
    return Status::Ok;
}

} // namespace primitives
