// Where a codec puts decoded rows: straight into a new bitmap, or into a reduction of the picture.
#pragma once

#include "allocator.h"
#include "pixel_form.h"
#include "status.h"

#include <memory>
#include <vector>

namespace imagefile {

/// A box in pixels that a thumbnail has to fit into.
struct Box {
    int width;
    int height;
};

/// The size of a @p width by @p height picture reduced to fit into @p box: in proportion, from 1, never enlarged.
Box FitInto(const Box &box, int width, int height);

/// Whether a @p preview of a @p picture can stand for it in @p box: large enough, and of its proportions but for the
/// few rows and columns that cameras cut off. Bars at the sides are more than that.
bool CanStandFor(const Box &picture, const Box &preview, const Box &box);

/// Takes a picture row by row from the top. May throw std::bad_alloc.
class RowSink {
public:
    virtual ~RowSink() = default;
    /// Before any row: the size and the form in which rows will come. Again, to begin anew.
    virtual Status Start(int width, int height, const PixelForm &form) = 0;
    /// Memory for row @p y in the form that was announced; valid until Done.
    virtual std::uint8_t *Row(int y) = 0;
    /// Whether Row gives the place where a row stays, so that rows may be filled in several passes before any is Done.
    virtual bool KeepsRows() const { return false; }
    /// Row @p y has been filled.
    virtual void Done(int y) = 0;
};

/// The form in which a caller wants a picture that a file holds in @p stored.
PixelForm DeliveredForm(const PixelForm &stored, const GFL_LOAD_PARAMS &params);

/// A new record of a form, pixels uninitialised and rows aligned to 4 bytes. GFL_ERROR_NO_MEMORY or a record in @p
/// bitmap.
Status NewBitmap(int width, int height, const PixelForm &form, Owned<GFL_BITMAP> *bitmap);

/// Whether a caller's record is what the layer takes: GFL_GREY, GFL_RGB or GFL_RGBA of 8, 16 or 32 bits, rows from the
/// top, long enough. Otherwise GFL_ERROR_BAD_BITMAP. CheckShape: but for its pixels, which it may not have.
Status CheckBitmap(const GFL_BITMAP &bitmap);
Status CheckShape(const GFL_BITMAP &bitmap);

/// A bitmap in the form that the load parameters ask for. Rows of that form are decoded right into it.
class BitmapRows : public RowSink {
public:
    explicit BitmapRows(const GFL_LOAD_PARAMS &params);
    Status Start(int width, int height, const PixelForm &form) override;
    std::uint8_t *Row(int y) override;
    bool KeepsRows() const override { return !m_convert; }
    void Done(int y) override;
    GFL_BITMAP *Take() { return m_bitmap.release(); }

private:
    const GFL_LOAD_PARAMS &m_params;
    Owned<GFL_BITMAP> m_bitmap;
    RowConverter m_convert = nullptr; // null when rows come as they are wanted
    std::vector<std::uint8_t> m_row;
};

/// The picture reduced to fit into a box: each target pixel is the mean of the source pixels that it covers, to whole
/// pixels. Needs memory for a row and the result only.
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
    int m_rowsAdded = 0; // to the target row
    std::vector<std::uint8_t> m_row;
    std::vector<double> m_sums; // exact for integers: a box holds fewer than 2^37 samples of 16 bits
};

} // namespace imagefile
