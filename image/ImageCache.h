// The pixels of all described images that are in use or were lately, under a limit of memory.
#pragma once

#include "ImageCacheItem.h"

#include <QHash>

#include <vector>

/// One item per image file, by ImageDef::IdOf of its name, which copies of a description share; each holds any number
/// of versions, whole decoded pictures of one size and depth. A version that is locked stays. When the sum stands above
/// the limit, the images whose newest version was used longest ago lose all versions that nobody has locked; the limit
/// is looked after when a lock is given back.
///
/// KImage::init makes the process's cache or takes a host's, whoever needs it earlier makes it; KImage::exit ends it.
/// Any thread may lock and unlock. The cache's mutex guards the items and is never held during a load.
template <typename Image, typename Loader> class ImageCache {
public:
    using Item = ImageCacheItem<Image, Loader>;

    ImageCache() = default;
    /// Frees everything, with the descriptions of the images: nobody may hold pixels any more.
    ~ImageCache()
    {
        qDeleteAll(m_items);
        qDeleteAll(m_lentOfDeleted);
    }
    ImageCache(const ImageCache &) = delete;
    ImageCache &operator=(const ImageCache &) = delete;

    /// The process's cache, made if there is none.
    static ImageCache &Instance();
    /// Makes @p cache the process's, or none for null. Main thread, while nobody uses the cache.
    static void SetInstance(ImageCache *cache)
    {
        ms_instance = cache;
        Item::pImageDefCache = cache; // items made by another copy of the kernel are stamped through this copy's
    }

    // The caller holds the mutex.

    /// The item of an image, or null.
    Item *Find(ImageDef *def) { return m_items.value(KeyOf(def)); }
    /// The living image of that path in the cache, or null.
    ImageDef *Find(QString fileName)
    {
        const Item *const item = m_items.value(ImageDef::IdOf(fileName));
        return item ? item->m_def.data() : nullptr;
    }
    /// The item of an image; an image without gets one, and so does one whose namesake in the cache was destroyed.
    Item *FindOrMake(ImageDef *def);
    /// Brings the memory under the limit, as far as locks allow. Images that are loading just now are left alone.
    void AdjustCacheMemory_unlocked();

    // The caller doesn't hold the mutex.

    /// Gives a lock back, then looks after the limit; without such a lock only that.
    void Unlock(ImageDef *def, int width, int height, int depth);
    /// Takes out the item of @p def's path. The cache doesn't own the image any more; pixels of it that are lent stay
    /// until the cache ends.
    void Remove(ImageDef *def);

    static inline ImageCache *ms_instance = nullptr;

    QHash<QString, Item *> m_items; // owned
    QMutex m_mutex;
    std::atomic<qint64> m_accessCount{0};   // the clock of the cache; items read it without the mutex
    std::atomic<qint64> m_bytesInMemory{0}; // the sum of the items' memUsed()
    int m_maxMemoryMo = 256;                // megabytes of 2^20 bytes; a host may set it: KSystemInfo::maxCacheSize()

private:
    /// Not m_id: a copied or assigned description has none, or that of the file it described before.
    static QString KeyOf(const ImageDef *def) { return ImageDef::IdOf(def->FileName()); }

    QVector<Image *> m_lentOfDeleted; // owned
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
        if (usage.isFreeable && usage.newest < m_accessCount) // the image that was asked for last is safe
            candidates.push_back({item, usage.bytes, usage.newest});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate &a, const Candidate &b) { return a.newest < b.newest; });
    for (const Candidate &candidate : candidates) {
        if (totalBytes <= limitBytes)
            return;
        totalBytes -= candidate.bytes; // locked versions too, which stay: the next call measures afresh
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
        item->Unlock(width, height, depth); // may wait for a load of the image, which mustn't stop all others
    const CacheLocker locker(m_mutex);
    AdjustCacheMemory_unlocked();
}

template <typename Image, typename Loader> void ImageCache<Image, Loader>::Remove(ImageDef *def)
{
    std::unique_ptr<Item> item;
    const CacheLocker locker(m_mutex);
    item.reset(m_items.take(KeyOf(def)));
    if (item)
        m_lentOfDeleted += item->Abandon();
}
