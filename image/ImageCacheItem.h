// Cache entry of one image: its description and its versions.
#pragma once

#include "CacheLocker.h"
#include "ImageDef.h"
#include "ImageVersion.h"
#include "KException.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>
#include <memory>

template <typename Image, typename Loader> class ImageCache;

/// The cache's record of one image. The cache owns it and destroys it only while no call on the image is running.
///
/// The mutex is held during a whole load: a second thread that requests the same image waits and then finds the
/// version, while different images load in parallel. Lock it alone or after the cache's mutex, never before.
template <typename Image, typename Loader> class ImageCacheItem {
public:
    using Version = ImageVersion<Image>;
    using Cache = ImageCache<Image, Loader>;

    /// Data that the cache needs to enforce its limit.
    struct Usage {
        qint64 bytes = 0;        // total size of the versions in memory
        qint64 newest = -1;      // the highest stamp; -1: no version is in memory
        bool isFreeable = false; // at least one is unlocked
    };

    explicit ImageCacheItem(ImageDef *def) { Adopt(def); }
    /// Frees all versions, their disk copies, and the description if it still exists.
    ~ImageCacheItem()
    {
        qDeleteAll(m_versions);
        delete m_def.data();
    }
    ImageCacheItem(const ImageCacheItem &) = delete;
    ImageCacheItem &operator=(const ImageCacheItem &) = delete;

    /// Returns the version of that size, at the image's depth or at 8 bits, loading it if necessary. The item owns it
    /// and keeps it in memory until the matching Unlock. If this throws, nothing stays locked.
    Image *Lock(int width, int height, bool nativeDepth);
    /// Decrements a version's lock count; does nothing for an unlocked one.
    void Unlock(int width, int height, int depth);
    bool IsInMemory(int width, int height, int depth);

    /// Makes the new description @p def the item's image, and drops all versions: the file may have changed.
    void Adopt(ImageDef *def);
    /// Gives up ownership of the image and returns the pixels that are still locked, which the caller then owns.
    QVector<Image *> Abandon();

    void ReleaseFromMemory()
    {
        const CacheLocker locker(m_mutex);
        Release_unlocked();
    }
    qint64 memUsed()
    {
        const CacheLocker locker(m_mutex);
        return Usage_unlocked().bytes;
    }
    /// Returns whether any version in memory is unlocked.
    bool memFreeable() const
    {
        const CacheLocker locker(m_mutex);
        return Usage_unlocked().isFreeable;
    }
    // Variants of the functions above that skip an item that is being loaded instead of waiting for it.
    Usage TryUsage() const
    {
        const CacheLocker locker(m_mutex, std::try_to_lock);
        return locker ? Usage_unlocked() : Usage();
    }
    void TryReleaseFromMemory()
    {
        if (const CacheLocker locker(m_mutex, std::try_to_lock); locker)
            Release_unlocked();
    }

    // For the loader, which is called with the mutex held.

    /// Returns the first version of that size and depth, or null.
    Version *Find_unlocked(int width, int height, int depth);
    /// Returns the first version in memory of that depth that is wider and higher, or null.
    Version *FindBiggerInMemory(int width, int height, int depth);
    /// Assigns a name to the disk copy of a version that has none, and returns it. Throws if no temporary folder has
    /// room.
    QString fullCacheName(Version *version);

    /// The process's cache, whose access count stamps the versions.
    static inline Cache *pImageDefCache = nullptr;

    QPointer<ImageDef> m_def;
    QVector<Version *> m_versions; // owned, in the order of creation
    mutable QMutex m_mutex;        // guards all fields
    bool m_reloadFromSource;       // reload evicted versions from the source file; false: from their disk copies

private:
    template <typename Test> Version *FirstVersion(Test test) const
    {
        const auto found = std::find_if(m_versions.cbegin(), m_versions.cend(), test);
        return found == m_versions.cend() ? nullptr : *found;
    }
    /// Guard that updates the cache's total at the end of a scope, even after an exception.
    class Counting {
    public:
        explicit Counting(ImageCacheItem *item) : m_item(item) { }
        ~Counting() { m_item->Count_unlocked(); }
        Counting(const Counting &) = delete;
        Counting &operator=(const Counting &) = delete;

    private:
        ImageCacheItem *m_item;
    };

    void Count_unlocked()
    {
        const qint64 bytes = Usage_unlocked().bytes;
        if (bytes != m_countedBytes)
            pImageDefCache->m_bytesInMemory += bytes - m_countedBytes;
        m_countedBytes = bytes;
    }
    Usage Usage_unlocked() const;
    void Release_unlocked();
    /// Frees versions that aren't locked; retires those that are.
    void Forget_unlocked();

    qint64 m_countedBytes = 0; // this item's share of the cache's total
};

template <typename Image, typename Loader>
Image *ImageCacheItem<Image, Loader>::Lock(int width, int height, bool nativeDepth)
{
    const CacheLocker locker(m_mutex);
    const Counting counting(this);
    const int depth = nativeDepth ? m_def->nDepth() : 8;
    const qint64 stamp = pImageDefCache->m_accessCount;
    if (Version *version = Find_unlocked(width, height, depth)) {
        if (!version->m_inMemory)
            Loader::Load(m_def, version, m_reloadFromSource, this);
        ++version->m_lockCount;
        version->m_lastUsed = stamp;
        return version->m_image;
    }
    auto made = std::make_unique<Version>(width, height, depth, stamp);
    Version *version = made.get();
    if (Loader::GetVersion(m_def, version, m_reloadFromSource, this))
        m_versions.append(made.release());
    return version->m_image;
}

template <typename Image, typename Loader> void ImageCacheItem<Image, Loader>::Unlock(int width, int height, int depth)
{
    const CacheLocker locker(m_mutex);
    Version *const version = Find_unlocked(width, height, depth);
    if (!version || version->m_lockCount == 0 || --version->m_lockCount > 0)
        return;
    qDeleteAll(version->m_retired);
    version->m_retired.clear();
    if (!Loader::HasFailed(version))
        return;
    const Counting counting(this);
    Loader::Free(version); // the next lock reads the file again
    version->m_inMemory = false;
}

template <typename Image, typename Loader>
bool ImageCacheItem<Image, Loader>::IsInMemory(int width, int height, int depth)
{
    const CacheLocker locker(m_mutex);
    const Version *const version = Find_unlocked(width, height, depth);
    return version && version->m_inMemory;
}

template <typename Image, typename Loader> void ImageCacheItem<Image, Loader>::Adopt(ImageDef *def)
{
    const CacheLocker locker(m_mutex);
    m_def = def;
    m_reloadFromSource = def->nDepth() == 8 || !def->IsRaw();
    Forget_unlocked();
}

template <typename Image, typename Loader> void ImageCacheItem<Image, Loader>::Forget_unlocked()
{
    const Counting counting(this);
    const auto forgotten = std::stable_partition(m_versions.begin(), m_versions.end(),
                                                 [](const Version *version) { return version->m_lockCount > 0; });
    qDeleteAll(forgotten, m_versions.end());
    m_versions.erase(forgotten, m_versions.end());
    for (Version *version : qAsConst(m_versions)) {
        if (version->m_image)
            version->m_retired.append(version->m_image);
        version->m_image = nullptr;
        version->m_inMemory = false;
        version->RemoveDiskCopy();
    }
}

template <typename Image, typename Loader> QVector<Image *> ImageCacheItem<Image, Loader>::Abandon()
{
    const CacheLocker locker(m_mutex);
    m_def.clear();
    Forget_unlocked();
    QVector<Image *> locked;
    for (Version *version : qAsConst(m_versions)) {
        locked += version->m_retired;
        version->m_retired.clear();
    }
    return locked;
}

template <typename Image, typename Loader>
ImageVersion<Image> *ImageCacheItem<Image, Loader>::Find_unlocked(int width, int height, int depth)
{
    return FirstVersion([=](const Version *version) {
        return version->m_width == width && version->m_height == height && version->m_depth == depth;
    });
}

template <typename Image, typename Loader>
ImageVersion<Image> *ImageCacheItem<Image, Loader>::FindBiggerInMemory(int width, int height, int depth)
{
    return FirstVersion([=](const Version *version) {
        return version->m_inMemory && version->m_depth == depth && version->m_width > width
            && version->m_height > height;
    });
}

template <typename Image, typename Loader> QString ImageCacheItem<Image, Loader>::fullCacheName(Version *version)
{
    if (!version->m_cacheName.isEmpty())
        return version->m_cacheName;
    // An estimate for one channel only; the disk manager keeps a reserve for the rest.
    const qint64 bytes = static_cast<qint64>(version->m_width) * version->m_height * (version->m_depth / 8);
    KCacheDiskManager::init(nullptr); // created on first use
    version->m_cacheName = KCacheDiskManager::ms_instance->getTempFile(static_cast<quint64>(bytes));
    if (version->m_cacheName.isEmpty())
        throw KException(QCoreApplication::translate("KException", "No more space in temporary folder"), KPlace());
    QDir().mkpath(QFileInfo(version->m_cacheName).path()); // another program may have removed the folder
    return version->m_cacheName;
}

template <typename Image, typename Loader>
typename ImageCacheItem<Image, Loader>::Usage ImageCacheItem<Image, Loader>::Usage_unlocked() const
{
    Usage usage;
    for (Version *version : m_versions) {
        if (!version->m_inMemory)
            continue;
        usage.bytes += Loader::memSize(version);
        usage.newest = std::max(usage.newest, version->m_lastUsed);
        usage.isFreeable = usage.isFreeable || version->IsFreeable();
    }
    return usage;
}

template <typename Image, typename Loader> void ImageCacheItem<Image, Loader>::Release_unlocked()
{
    const Counting counting(this);
    for (Version *version : qAsConst(m_versions)) {
        if (!version->IsFreeable())
            continue;
        version->m_inMemory = false;
        Loader::Free(version);
    }
}
