// The warp of fitted corrections over float RGBA rows: fast, and in bands of rows.
#pragma once

#include "CorrectionTwin.h"
#include "FloatWarp.h"
#include "TransferCurve.h"

class KImage;

/// Renders a Correction. CorrectionTwin is the definition of the positions; they are within 0.005 pixels of it, more
/// only through the rounding of sampling tables. Every processor gives the same bits.
///
/// Neighbors outside the picture repeat its edge. Pixels that the correction leaves empty become transparent black,
/// all others opaque or what the source's alpha says.
///
/// The object holds no pixels. Render may run on several threads for different rows; it takes some memory for itself
/// and may throw std::bad_alloc, nothing else.
class FittedWarp {
public:
    enum class Sampling { Bilinear, Sharp };
    /// What the float rows were made of.
    struct Source {
        bool isFloat = false;  ///< values may lie outside 0 to 1 and keep doing so
        bool hasAlpha = false; ///< not premultiplied; colors are weighted by it. Without, alpha isn't looked at
    };
    using Instructions = FloatWarp::Instructions;
    using RowRange = FloatWarp::RowRange;

    /// @param light  how stored values mean light: the gain multiplies light. Linear: it multiplies stored values.
    FittedWarp(const Correction &correction, Sampling sampling, const TransferCurve &light, Source source);

    /// Whether any pixel of the result stays empty, so that the result needs alpha.
    bool LeavesEmpty() const { return m_leavesEmpty; }

    /// The rows of the source that a band of @p rows rows from @p firstRow on reads, by an estimate from positions in
    /// its first and last row. Too few only where a map isn't monotonic.
    RowRange RowsFor(int firstRow, int rows) const;

    /// Fills @p rows with the rows of the corrected picture from @p firstRow on, as many as it has.
    ///
    /// @param window  Rows of the source from @p windowRow on, as wide as the correction; float RGBA
    /// (FloatWarp::Serves).
    /// @param rows    Likewise; not the window.
    /// @return false if other rows of the source are needed; what was filled is then of no use.
    [[nodiscard]] bool Render(const KImage &window, int windowRow, KImage &rows, int firstRow,
                              Instructions instructions = FloatWarp::BestInstructions()) const;

    /// One call of Render, as the loops need it.
    struct Band;

private:
    CorrectionTwin m_twin;
    Sampling m_sampling;
    TransferCurve m_light;
    Source m_source;
    int m_cellSide;
    bool m_leavesEmpty;
};
