// Reads, reduces and frees versions of images; links the image cache to KImage.
#pragma once

#include "ImageCache.h"
#include "KImage.h"

using KImageCache = ImageCache<KImage, KImageLoader>;

/// Source of a version's pixels:
///
///   | image             | first time                                           | after eviction |
///   |-------------------|------------------------------------------------------|----------------|
///   | raw, above 8 bits | full size and depth: the file; smaller: that version | its disk copy  |
///   | any other         | a bigger version in memory, else the file            | the file       |
///
/// All functions except LockPostProcess are called with the item's mutex held. On failure they throw KException and
/// leave the requested version without pixels.
class KImageLoader {
public:
    using Version = ImageVersion<KImage>;
    using Item = ImageCacheItem<KImage, KImageLoader>;

    /// Reads the file at its native depth.
    static void Load(ImageDef *def, Version *version);
    /// Fills an evicted version of the item.
    static void Load(ImageDef *def, Version *version, bool reloadFromSource, Item *item);
    /// Fills a new version and returns true: the caller must then add it to the item. If the item already has such a
    /// version, sets @p version to that one, locks it and returns false.
    static bool GetVersion(ImageDef *def, Version *&version, bool reloadFromSource, Item *item);
    static void Free(Version *version);
    /// Returns whether decoding failed after the version was handed out (gflAcceptPendingRows).
    static bool HasFailed(const Version *version);
    /// Returns the size in bytes of a version, as if it had four channels: an estimate that doesn't access the pixels.
    static qint64 memSize(Version *version);
    /// Makes the image's larger thumbnail from newly loaded pixels, if it is still needed.
    static void LockPostProcess(ImageDef *def, KImage *image, QMutex &cacheMutex);
};
