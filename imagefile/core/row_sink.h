// Destinations of decoded rows: a new bitmap, or a reduced version of the picture.
#pragma once

#include "allocator.h"
#include "pixel_form.h"
#include "status.h"

#include <memory>
#include <vector>

namespace imagefile {

/// A size in pixels, such as that of the box that a thumbnail must fit into.
struct Box {
    int width;
    int height;
};

/// Returns the size of a @p width by @p height picture reduced to fit into @p box: proportions are kept, sides are at
/// least 1, and the picture is never enlarged.
Box FitInto(const Box &box, int width, int height);

/// Returns whether @p preview can replace @p picture in @p box: it must be at least as large as the picture fitted into
/// the box and have its proportions, except for the few rows and columns that cameras crop.
/// Previews with bars at the sides are thus excluded.
bool CanReplace(const Box &picture, const Box &preview, const Box &box);

/// Receiver of a picture's rows, from top to bottom. May throw std::bad_alloc.
class RowSink {
public:
    virtual ~RowSink() = default;
    /// Sets the size and form of the rows. Call it before the first row; a second call starts over.
    virtual Status Start(int width, int height, const PixelForm &form) = 0;
    /// Returns memory for row @p y in the form given to Start; valid until Done.
    virtual std::uint8_t *Row(int y) = 0;
    /// Returns whether Row returns a row's final location, so that rows may be filled in several passes before Done.
    /// Several threads may then call Row and Done, each for different rows.
    virtual bool KeepsRows() const { return false; }
    /// Marks row @p y as filled.
    virtual void Done(int y) = 0;
};

/// Returns the pixel form that a caller requests for a picture stored as @p stored.
PixelForm DeliveredForm(const PixelForm &stored, const GFL_LOAD_PARAMS &params);

/// Creates a bitmap with uninitialized pixels and rows aligned to 4 bytes. Returns GFL_ERROR_NO_MEMORY, or sets @p
/// bitmap.
Status NewBitmap(int width, int height, const PixelForm &form, Owned<GFL_BITMAP> *bitmap);

/// Checks that the layer accepts a caller's bitmap: GFL_GREY, GFL_RGB or GFL_RGBA of 8, 16 or 32 bits, with rows stored
/// from the top down and long enough. Otherwise returns GFL_ERROR_BAD_BITMAP. CheckShape doesn't check the pixels,
/// which may be absent.
Status CheckBitmap(const GFL_BITMAP &bitmap);
Status CheckShape(const GFL_BITMAP &bitmap);

/// A bitmap in the form that the load parameters request. Rows of that form are decoded directly into it.
class BitmapRows : public RowSink {
public:
    explicit BitmapRows(const GFL_LOAD_PARAMS &params);
    Status Start(int width, int height, const PixelForm &form) override;
    std::uint8_t *Row(int y) override;
    bool KeepsRows() const override { return !m_convert; }
    void Done(int y) override;
    GFL_BITMAP *Take() { return m_bitmap.release(); }
    /// Returns the bitmap, which the object still owns; null before Start.
    GFL_BITMAP *Bitmap() const { return m_bitmap.get(); }

private:
    const GFL_LOAD_PARAMS &m_params;
    Owned<GFL_BITMAP> m_bitmap;
    RowConverter m_convert = nullptr; // null if rows already have the delivered form
    std::vector<std::uint8_t> m_row;
};

/// The picture reduced to fit into a box: each target pixel is the mean of a block of source pixels; blocks don't
/// overlap. Needs memory only for one row and the result.
class ReducedRows : public RowSink {
public:
    ReducedRows(const GFL_LOAD_PARAMS &params, const Box &box);
    Status Start(int width, int height, const PixelForm &form) override;
    std::uint8_t *Row(int y) override;
    void Done(int y) override;
    GFL_BITMAP *Take() { return m_result.Take(); }

private:
    template <class T> void AddRow();
    template <class T> void FinishRow();

    const Box m_box;
    BitmapRows m_result;
    PixelForm m_form;
    int m_width = 0, m_height = 0; // of the source
    int m_targetWidth = 0, m_targetHeight = 0;
    int m_targetRow = 0;
    int m_rowsAdded = 0; // source rows added to m_sums for the current target row
    std::vector<std::uint8_t> m_row;
    std::vector<double> m_sums; // exact for integers: fewer than 2^37 samples of 16 bits each
};

} // namespace imagefile
