// How versions of images are read, reduced and freed: what the image cache knows of KImage.
#pragma once

#include "ImageCache.h"
#include "KImage.h"

using KImageCache = ImageCache<KImage, KImageLoader>;

/// Where the pixels of a version come from:
///
///   | image                | first time                                | after eviction       |
///   |----------------------|-------------------------------------------|----------------------|
///   | raw, above 8 bits    | full size: the file; others: the full one | its own disk copy    |
///   | any other            | a bigger version in memory, else the file | the file             |
///
/// All but LockPostProcess are called under the item's mutex; they throw KException, and then leave the version that
/// they were to fill without pixels.
class KImageLoader {
public:
    using Version = ImageVersion<KImage>;
    using Item = ImageCacheItem<KImage, KImageLoader>;

    /// Reads the file at its own depth.
    static void Load(ImageDef *def, Version *version);
    /// Fills a version that the item has and that was evicted.
    static void Load(ImageDef *def, Version *version, bool reloadFromSource, Item *item);
    /// Fills a new version. True: the item is to take it in. False: @p version is one that the item has already, locked
    /// once more, in the place of the caller's.
    static bool GetVersion(ImageDef *def, Version *&version, bool reloadFromSource, Item *item);
    static void Free(Version *version);
    /// Bytes of a version, as if it had four channels: an estimate that needs no look at the pixels.
    static qint64 memSize(Version *version);
    /// Makes the image's larger thumbnail of pixels that were just loaded, if it is still wanted.
    static void LockPostProcess(ImageDef *def, KImage *image, QMutex &cacheMutex);
};
