// Bands of a fitted picture in the form in which they are written.
#pragma once

#include "Fit.h"
#include "FittedWarp.h"
#include "FloatRows.h"

/// All that is known of a correction before pixels are read.
struct FittedPlan {
    FitResult fit;
    TransferCurve light; // of the picture's values; counts for the gain alone
};

/// Makes bands of the corrected picture. Float pixels of source and result never need more than the memory of some
/// rows, and are converted while they are in the caches. One thread at a time.
class FittedBands {
public:
    /// @p source must outlive the object and be as large as the correction says.
    FittedBands(const FittedPlan &plan, Sampling sampling, const KImage &source);

    /// The source's channels, and alpha if something stays empty, which gray pictures become RGB for.
    unsigned short ResultType() const;
    /// The source's depth: 8, 16, or 32 for float.
    int ResultBits() const;

    /// Fills @p rows, of the form above, with the rows of the result from @p firstRow on.
    void Fill(KImage &rows, int firstRow);
    /// The whole result as float RGBA, into an image of that form and the source's size; not the source.
    void FillFloat(KImage &image);

private:
    void MakeBand(int firstRow);
    void Render(KImage &band, int firstRow);

    const KImage &m_picture;
    FloatRows m_source;
    bool m_splitsColors;
    FittedWarp m_warp;
    KImage m_band; // rows from m_firstRow on
    int m_firstRow = 0;
};
