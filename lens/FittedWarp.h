// Fast warp for fitted corrections, which renders float RGBA in bands of rows.
#pragma once

#include "CorrectionTwin.h"
#include "FloatWarp.h"
#include "TransferCurve.h"

#include <memory>

class KImage;

/// Renderer of a Correction. CorrectionTwin defines the sampling positions; those of this class differ by at most 0.005
/// pixels, plus the rounding of the sampling tables. Results are bit-identical on every processor.
///
/// Neighbors outside the picture repeat its edge. Pixels that the correction leaves empty become transparent black; all
/// others are opaque or get the source's alpha.
///
/// Render may run on several threads for different rows. Each running call needs about 1 MB of working memory, which
/// the object keeps for later calls. Calls throw only std::bad_alloc.
class FittedWarp {
public:
    enum class Sampling { Bilinear, Sharp };
    /// Properties of the pixels that the float rows were converted from.
    struct Source {
        bool isFloat = false;  ///< values may lie outside 0 to 1 and are not clamped
        bool hasAlpha = false; ///< not premultiplied, used to weight colors; if false, alpha is ignored
    };
    using Instructions = FloatWarp::Instructions;
    using RowRange = FloatWarp::RowRange;

    /// @param light  Converts stored values to light, which the gain multiplies.
    FittedWarp(const Correction &correction, Sampling sampling, const TransferCurve &light, Source source);

    /// Returns whether any pixel of the result is empty. If so, the result needs alpha.
    bool LeavesEmpty() const { return m_leavesEmpty; }

    /// Estimates which source rows a band of @p rows rows, starting at @p firstRow, needs. Evaluates positions only in
    /// the band's first and last row. The estimate is too small only where a map isn't monotonic.
    RowRange RowsFor(int firstRow, int rows) const;

    /// Returns whether Render also accepts the unconverted rows of @p picture, RGB at 8 or 16 bits, with the same
    /// result.
    bool ReadsStored(const KImage &picture) const;

    /// Fills @p rows with rows of the corrected picture, starting at @p firstRow.
    ///
    /// @param window  Rows of the source, starting at @p windowRow, as wide as the correction; float RGBA
    ///                (FloatWarp::Serves), or as stored if ReadsStored.
    /// @param rows    Float RGBA, at most as wide as the correction; must not be the window.
    /// @return false if other rows of the source are needed; @p rows then has undefined content.
    [[nodiscard]] bool Render(const KImage &window, int windowRow, KImage &rows, int firstRow,
                              Instructions instructions = FloatWarp::BestInstructions()) const;

    /// Arguments of one call to Render, in the form that the loops need.
    struct Band;
    /// Working memory that no call is using.
    class IdleMemory;

private:
    CorrectionTwin m_twin;
    Sampling m_sampling;
    TransferCurve m_light;
    Source m_source;
    int m_cellSide;
    bool m_leavesEmpty;
    std::shared_ptr<IdleMemory> m_idleMemory;
};
