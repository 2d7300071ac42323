// The bilinear warp of float RGBA pictures, which is what every real run uses: fast, and in bands of rows.
#pragma once

#include "Corrections.h"

#include <cstdint>

class KImage;
class LensParam;
class newLCP;

/// InterpolatorKim<float, float> with bilinear samplers for four channels, in blocks of pixels that stay in the first
/// cache. InterpolatorKim::DoPlainly is its plain twin and the definition of what comes out, to the last bit; so every
/// processor gives the same bits.
///
/// The source must outlive the object and may be read by others meanwhile. Render may run on several threads for
/// different rows. Nothing here throws or takes memory.
class FloatWarp {
public:
    /// How the corrected picture lies to the frame of the profile, which is landscape. Turned: by a right angle, for
    /// upright pictures; the models then see the picture turned counter-clockwise, its right-hand column on top.
    enum class Frame { Landscape, Turned };
    /// What becomes of channels that no model writes (see InterpolatorKim), and of all when nothing is to be done.
    enum class Unwritten { Stays, Cleared, FromSource };
    /// The instructions to use; those that the processor lacks crash the program. Baseline is SSE2 on x86-64, plain
    /// code elsewhere.
    enum class Instructions { Baseline, Avx2, Avx512 };

    /// Whether an image can be source or target: float RGBA, rows as long as their pixels.
    static bool Serves(const KImage &image);
    /// The best that this processor has.
    static Instructions BestInstructions();

    /// @p source is served; for RenderFrom alone it may be of any form, since only its size counts.
    FloatWarp(const newLCP &lcp, Corrections corrections, Frame frame, const KImage &source);

    /// Fills @p rows with the rows of the corrected picture from @p firstRow on, as many as it has.
    ///
    /// @param rows  Served, not the source. Without distortion, in the turned frame and with FromSource the corrected
    ///              picture is no larger than the source: pixels are then read at their own position. In the turned
    ///              frame it is exactly as wide.
    void Render(KImage &rows, int firstRow, Unwritten unwritten, Instructions instructions = BestInstructions()) const;

    /// Rows from @c first to before @c end.
    struct RowRange {
        int first, end;
    };
    /// The rows of the source that a band of @p rows rows from @p firstRow on reads, by an estimate from 64 positions
    /// in its first and last row. Too few only where a model isn't smooth.
    RowRange RowsFor(int firstRow, int rows) const;
    /// As Render, of a source of which only some rows are in memory: those of @p window, served, whose first is row
    /// @p windowRow. False if others are needed; what was filled is then of no use.
    [[nodiscard]] bool RenderFrom(const KImage &window, int windowRow, KImage &rows, int firstRow, Unwritten unwritten,
                                  Instructions instructions = BestInstructions()) const;

    /// One radial model, ready for positions in pixels.
    struct Radial {
        Radial(const LensParam &model, bool fisheye, float scale);

        enum class Form { Perspective, Tangential, Fisheye };
        Form form;
        int terms; // 0 to 3; 0 also for a number of coefficients that the model doesn't know
        float cx, cy, f;
        float c[3];
        double t1, t2;
    };
    /// The vignette model, its series multiplied out.
    struct Vignette {
        Vignette(const LensParam &model, bool found, float scale, int longSide);

        bool found;
        float cx, cy, fx, fy;
        float a1, a2, a3, a4;
    };
    /// Pixels in the frame of the models: the one at (x, y) stands at base + x * stepX + y * stepY.
    struct Pixels {
        const unsigned char *base;
        std::int64_t stepX, stepY; // bytes
        std::int64_t rowBytes;     // from a row in memory to the next
        float width, height;
        float betweenX, betweenY; // positions from above -1 to below these have all four neighbours
        float fromX, fromY;       // positions from above these
        float toX, toY;           // to below these have them in memory
    };
    enum class Path { Nothing, GainOnly, OneWarp, RedAndBlue, ThreeWarps };
    /// One call of Render, as the loops need it.
    struct Band;

private:
    Radial m_main; // distortion or green
    Radial m_red, m_blue;
    Vignette m_vignette;
    Path m_path;
    Frame m_frame;
    const KImage &m_source;
};
