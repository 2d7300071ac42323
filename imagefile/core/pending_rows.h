// Pictures whose rows are still being decoded while the caller already uses the first ones.
#pragma once

#include "row_sink.h"

#include <functional>

namespace imagefile {

/// Starts @p decode on another thread (on this one if no other can start). @p decode must pass all rows to its sink,
/// the top one first. Returns as soon as the bitmap exists; fails if decoding ends before that. The result is
/// registered until ForgetPending, which gflFreeBitmap calls. May throw what @p decode throws.
Status StartPending(const GFL_LOAD_PARAMS &params, std::function<Status(RowSink *)> decode, Owned<GFL_BITMAP> *bitmap);

/// Waits until the first @p rows rows are decoded (for all rows, until decoding has ended) and sets @p ready to the
/// number of decoded rows. Returns why decoding failed, or throws what decoding threw. Bitmaps that aren't registered
/// are complete.
Status WaitForRows(const GFL_BITMAP &bitmap, int rows, int *ready);

/// Ends the thread that decodes this bitmap, if there is one, and removes the bitmap from the registry.
void ForgetPending(const GFL_BITMAP *bitmap) noexcept;

} // namespace imagefile
