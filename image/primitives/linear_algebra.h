// LU decomposition of small matrices and back-substitution.
#pragma once

#include "types.h"

namespace primitives {

/// Decomposes an @p n by @p n matrix, rows @p step bytes apart, into a unit lower and an upper triangular one, both
/// stored in @p lu, with the row exchanges in @p pivot (n numbers). @p lu may be the matrix itself. Returns Singular if
/// a pivot is 0 or not finite; LuBackSubstitute rejects such an lu.
Status LuDecompose(const Ipp32f *matrix, Step step, int *pivot, Ipp32f *lu, Step luStep, int n);

/// Solves matrix * x = right, given the matrix's decomposition, for @p count right-hand sides, each a vector of n
/// floats @p rightStep bytes after the previous one. Returns Singular, with nothing written, if the matrix has no
/// inverse.
Status LuBackSubstitute(const Ipp32f *lu, Step luStep, const int *pivot, const Ipp32f *right, Step rightStep, Ipp32f *x,
                        Step xStep, int n, int count);

} // namespace primitives
