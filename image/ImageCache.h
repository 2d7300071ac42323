// Pixels of all described images that are in use or were used recently, within a memory limit.
#pragma once

#include "ImageCacheItem.h"

#include <QHash>

#include <vector>

/// One item per image file, keyed by ImageDef::IdOf of the file name, so copies of a description share an item. An item
/// holds any number of versions: whole decoded pictures, each at one size and depth. Locked versions are never evicted.
/// When the total exceeds the limit, images lose all their unlocked versions, the least recently used image first; each
/// unlock checks the limit.
///
/// KImage::init creates the process's cache or adopts a host's; a use before init creates it. KImage::exit deletes it
/// unless it is a host's. Any thread may lock and unlock. The cache's mutex guards the items and is never held during a
/// load.
template <typename Image, typename Loader> class ImageCache {
public:
    using Item = ImageCacheItem<Image, Loader>;

    ImageCache() = default;
    /// Frees everything, including the images' descriptions: no pixels may still be in use.
    ~ImageCache()
    {
        qDeleteAll(m_items);
        qDeleteAll(m_orphanedPixels);
    }
    ImageCache(const ImageCache &) = delete;
    ImageCache &operator=(const ImageCache &) = delete;

    /// Returns the process's cache, created if there is none.
    static ImageCache &Instance();
    /// Makes @p cache the process's cache; null removes it. Call it on the main thread while the cache is unused.
    static void SetInstance(ImageCache *cache)
    {
        ms_instance = cache;
        Item::pImageDefCache = cache; // the cache's clock also stamps items that another copy of the kernel made
    }

    // Call these with the mutex held.

    /// Returns the item of an image, or null.
    Item *Find(ImageDef *def) { return m_items.value(KeyOf(def)); }
    /// Returns the cached image with that path, or null if there is none or it was destroyed.
    ImageDef *Find(QString fileName)
    {
        const Item *const item = m_items.value(ImageDef::IdOf(fileName));
        return item ? item->m_def.data() : nullptr;
    }
    /// Returns the item of an image, creating it if there is none. An item whose image was destroyed adopts @p def.
    Item *FindOrMake(ImageDef *def);
    /// Evicts unlocked versions until memory use is within the limit. Skips images that are being loaded, and the one
    /// requested last.
    void AdjustCacheMemory_unlocked();

    // Call these without the mutex.

    /// Releases a lock, if there is one, then enforces the limit.
    void Unlock(ImageDef *def, int width, int height, int depth);
    /// Removes the item of @p def's path. The cache no longer owns the image; its locked pixels stay until the cache is
    /// destroyed.
    void Remove(ImageDef *def);

    static inline ImageCache *ms_instance = nullptr;

    QHash<QString, Item *> m_items; // owned
    QMutex m_mutex;
    std::atomic<qint64> m_accessCount{0};   // the cache's clock; items read it without the mutex
    std::atomic<qint64> m_bytesInMemory{0}; // the sum of the items' memUsed()
    int m_maxMemoryMo = 256;                // MiB; hosts may set it to KSystemInfo::maxCacheSize()

private:
    /// Doesn't use m_id: a copied description has none, and an assigned one keeps that of its previous file.
    static QString KeyOf(const ImageDef *def) { return ImageDef::IdOf(def->FileName()); }

    QVector<Image *> m_orphanedPixels; // owned: pixels that were locked when their image was removed
};

template <typename Image, typename Loader> ImageCache<Image, Loader> &ImageCache<Image, Loader>::Instance()
{
    static std::mutex making;
    const std::lock_guard<std::mutex> locker(making);
    if (!ms_instance)
        SetInstance(new ImageCache);
    return *ms_instance;
}

template <typename Image, typename Loader>
typename ImageCache<Image, Loader>::Item *ImageCache<Image, Loader>::FindOrMake(ImageDef *def)
{
    Item *item = Find(def);
    if (!item) {
        item = new Item(def);
        m_items.insert(KeyOf(def), item);
    } else if (!item->m_def) {
        item->Adopt(def);
    }
    return item;
}

template <typename Image, typename Loader> void ImageCache<Image, Loader>::AdjustCacheMemory_unlocked()
{
    const qint64 limitBytes = static_cast<qint64>(m_maxMemoryMo) << 20;
    qint64 totalBytes = m_bytesInMemory;
    if (totalBytes <= limitBytes)
        return;
    struct Candidate {
        Item *item;
        qint64 bytes, newest;
    };
    std::vector<Candidate> candidates;
    for (Item *item : qAsConst(m_items)) {
        const auto usage = item->TryUsage();
        if (usage.isFreeable && usage.newest < m_accessCount) // never evict the most recently requested image
            candidates.push_back({item, usage.bytes, usage.newest});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate &a, const Candidate &b) { return a.newest < b.newest; });
    for (const Candidate &candidate : candidates) {
        if (totalBytes <= limitBytes)
            return;
        totalBytes -= candidate.bytes; // includes locked versions, which stay: the next call measures again
        candidate.item->TryReleaseFromMemory();
    }
}

template <typename Image, typename Loader>
void ImageCache<Image, Loader>::Unlock(ImageDef *def, int width, int height, int depth)
{
    Item *item;
    {
        const CacheLocker locker(m_mutex);
        item = Find(def);
    }
    if (item)
        item->Unlock(width, height, depth); // may wait for a load of the image, which must not block all others
    const CacheLocker locker(m_mutex);
    AdjustCacheMemory_unlocked();
}

template <typename Image, typename Loader> void ImageCache<Image, Loader>::Remove(ImageDef *def)
{
    std::unique_ptr<Item> item;
    const CacheLocker locker(m_mutex);
    item.reset(m_items.take(KeyOf(def)));
    if (item)
        m_orphanedPixels += item->Abandon();
}
