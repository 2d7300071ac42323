// Fast bilinear warp of float RGBA pictures, in bands of rows; used for all plain corrections.
#pragma once

#include "Corrections.h"

#include <cstdint>

enum class LensModel;
class KImage;
class LensParam;
class newLCP;

/// Equivalent of InterpolatorKim<float, float> with bilinear samplers for four channels, in blocks of pixels that fit
/// in the L1 cache. InterpolatorKim::DoPlainly is its plain twin and defines the result to the last bit, so every
/// processor gives the same result.
///
/// The source must outlive the object; other threads may read it meanwhile. Render may run on several threads for
/// different rows. Nothing here throws or allocates.
class FloatWarp {
public:
    /// Orientation of the corrected picture relative to the profile's landscape frame. Turned is for portrait pictures:
    /// in the models' frame they are rotated counterclockwise by a right angle, so that their right-hand column is on
    /// top.
    enum class Frame { Landscape, Turned };
    /// Content of channels that no model writes (see InterpolatorKim), and of all channels if there is nothing to
    /// correct.
    enum class Unwritten { Stays, Cleared, FromSource };
    /// Instruction set to use; one that the CPU lacks crashes the program. Baseline is SSE2 on x86-64, plain code
    /// elsewhere.
    enum class Instructions { Baseline, Avx2, Avx512 };

    /// Returns whether an image can be source or target: float RGBA, rows at least as long as their pixels.
    static bool Serves(const KImage &image);
    /// Returns the best instruction set of this CPU.
    static Instructions BestInstructions();

    /// @p source must satisfy Serves; if only RenderFrom is called, it may have any form, because only its size is
    /// used.
    FloatWarp(const newLCP &lcp, Corrections corrections, Frame frame, const KImage &source);

    /// Fills @p rows with rows of the corrected picture, starting at @p firstRow.
    ///
    /// @param rows  Must satisfy Serves and not be the source. Without distortion, in the turned frame or with
    ///              FromSource, pixels are read at their own position, so the corrected picture must not be larger than
    ///              the source. In the turned frame it must be as wide as the source.
    void Render(KImage &rows, int firstRow, Unwritten unwritten, Instructions instructions = BestInstructions()) const;

    /// Rows [first, end).
    struct RowRange {
        int first, end;

        /// Returns the range extended by its length on both sides, within a picture of @p height rows.
        RowRange Widened(int height) const;
    };
    /// Estimates which source rows a band of @p rows rows, starting at @p firstRow, needs. Evaluates 64 positions in
    /// each of the band's first and last rows. The estimate is too small only if a model isn't smooth.
    RowRange RowsFor(int firstRow, int rows) const;
    /// Like Render, but reads the source rows from @p window, which must satisfy Serves and starts at row @p windowRow.
    /// Returns false if other rows are needed; the filled rows are then invalid. With all rows of the source, it always
    /// returns true, so callers that retry with more rows terminate.
    [[nodiscard]] bool RenderFrom(const KImage &window, int windowRow, KImage &rows, int firstRow, Unwritten unwritten,
                                  Instructions instructions = BestInstructions()) const;

    /// One radial model, ready for positions in pixels.
    struct Radial {
        Radial(const LensParam &model, LensModel kind, float scale);

        enum class Form { Perspective, Tangential, Fisheye };
        Form form;
        int terms; // 0 to 3; 0 also for a number of coefficients that the model doesn't support
        float cx, cy, f;
        float c[3];
        double t1, t2;
    };
    /// Vignetting model, expanded into a series.
    struct Vignette {
        Vignette(const LensParam &model, bool found, float scale, int longSide);

        bool found;
        float cx, cy, fx, fy;
        float a1, a2, a3, a4;
    };
    /// Pixels in the models' frame: the one at (x, y) is at base + x * stepX + y * stepY.
    struct Pixels {
        const unsigned char *base;
        std::int64_t stepX, stepY; // bytes
        std::int64_t rowBytes;     // from one row in memory to the next
        float width, height;
        float betweenX, betweenY; // positions above -1 and below these have four neighbors
        float fromX, fromY;       // positions above these and below toX, toY
        float toX, toY;           // have their neighbors in memory
    };
    enum class Path { Nothing, GainOnly, OneWarp, RedAndBlue, ThreeWarps };
    /// Arguments of one call to Render, prepared for the loops.
    struct Band;

private:
    Radial m_main; // distortion or green
    Radial m_red, m_blue;
    Vignette m_vignette;
    Path m_path;
    Frame m_frame;
    const KImage &m_source;
};
