// Bands of a picture with a fitted correction, in the output file's pixel format.
#pragma once

#include "Fit.h"
#include "FittedWarp.h"
#include "FloatRows.h"
#include "ResultFile.h"
#include "ResultValues.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

/// Decisions about a correction, made before pixels are read.
struct FittedPlan {
    FitResult fit;
    TransferCurve light; // of the picture's values; used only for the vignetting gain
    PictureFacts facts;
    ResultFile file;
    ResultValues values; // conversions to the values in the file
};

/// Renderer of bands of the corrected picture. Only a few rows of source and result exist as floats at a time, and they
/// are converted while they are in the CPU caches.
class FittedBands {
public:
    /// Waits until the first @p rows rows of the source can be read, and returns the number of readable rows. May
    /// throw; waiting for all rows throws if the source is damaged.
    using WaitForRows = std::function<int(int rows)>;

    /// @p source must outlive the object and have the correction's size.
    /// @param wait  Null if the source is complete.
    FittedBands(const FittedPlan &plan, Sampling sampling, const KImage &source, WaitForRows wait = nullptr);

    /// Returns the type of the result: the source's channels, plus alpha if some pixels stay empty; gray pictures then
    /// become RGBA. There is no alpha if the file format can't store it.
    unsigned short ResultType() const;
    /// Returns the bits per channel of the result, which depend on source and file format: 8, 16, or 32 for float.
    int ResultBits() const;
    /// Returns whether pixels are blended onto black, because the file has no alpha.
    bool Flattens() const { return m_values.flattens; }

    /// Fills @p rows, which must have the type and depth returned above, with rows of the result, starting at @p
    /// firstRow. Efficient for whole bands of GFL_FAST_ROWS rows, and for consecutive parts of one. Any number of
    /// threads may call it at once.
    void Fill(KImage &rows, int firstRow);
    /// Fills @p image with the whole result. It must be float RGBA of the source's size, and not be the source.
    void FillFloat(KImage &image);

private:
    /// Working memory of one thread.
    struct Work {
        explicit Work(const KImage &picture) : source(picture, FloatRows::Walk::Leaps) { }

        FloatRows source;
        KImage band; // rows from firstRow on
        int firstRow = 0;
    };

    std::unique_ptr<Work> Take();
    void MakeBand(Work *work, int firstRow) const;
    void Render(FloatRows *source, KImage &band, int firstRow) const;
    bool RenderStored(KImage &band, int firstRow, int rows) const;
    int ReadableRows(int rows) const { return m_wait ? m_wait(rows) : m_picture.height(); }

    const KImage &m_picture;
    const WaitForRows m_wait;
    bool m_splitsColors;
    FittedWarp m_warp;
    ResultFile m_file;
    ResultValues m_values;
    std::mutex m_mutex;                        // guards m_idle
    std::vector<std::unique_ptr<Work>> m_idle; // not in use
};
