// One version of a cached image: its pixels at one size and depth.
#pragma once

#include "KCacheDiskManager.h"

#include <QString>
#include <QVector>

/// A version of an image, identified by width, height and depth. An item owns it, and the item's mutex guards the
/// fields. A new version counts as locked and in memory, although its pixels are still to be loaded. Eviction frees the
/// pixels; the object and its disk copy stay.
template <typename Image> class ImageVersion {
public:
    /// @p depth in bits per channel; @p stamp is the cache's access count.
    ImageVersion(int width, int height, int depth, qint64 stamp)
        : m_width(width), m_height(height), m_lastUsed(stamp), m_depth(static_cast<short>(depth))
    {
    }
    /// Frees the pixels and removes the disk copy.
    ~ImageVersion()
    {
        delete m_image;
        qDeleteAll(m_retired);
        RemoveDiskCopy();
    }
    ImageVersion(const ImageVersion &) = delete;
    ImageVersion &operator=(const ImageVersion &) = delete;

    bool IsFreeable() const { return m_inMemory && m_lockCount == 0; }

    void RemoveDiskCopy()
    {
        if (m_cacheName.isEmpty())
            return;
        KCacheDiskManager::init(nullptr); // created on first use
        KCacheDiskManager::ms_instance->removeTempFile(m_cacheName);
        m_cacheName.clear();
    }

    QString m_cacheName;      // of the disk copy; empty: none
    Image *m_image = nullptr; // owned; null when evicted
    int m_lockCount = 1;
    int m_width; // pixels
    int m_height;
    qint64 m_lastUsed; // 64 bits: a host may run for months
    short m_depth;
    bool m_inMemory = true;
    // Owned: locked pixels from before the image was described again. Their locks can't be distinguished from later
    // ones, so these pixels are freed when all locks are released.
    QVector<Image *> m_retired;
};
