// One version of a cached image: its pixels at one size and depth.
#pragma once

#include "KCacheDiskManager.h"

#include <QString>
#include <QVector>

/// Made locked and in memory, by the item that holds it, whose mutex guards the fields. Width, height and depth are its
/// identity. When it is evicted the pixels go and the object stays, with its disk copy.
template <typename Image> class ImageVersion {
public:
    /// @p depth in bits a channel; @p stamp is the cache's count of accesses.
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
        KCacheDiskManager::init(nullptr); // whoever comes first makes it
        KCacheDiskManager::ms_instance->removeTempFile(m_cacheName);
        m_cacheName.clear();
    }

    QString m_cacheName;      // of the disk copy; empty: there is none
    Image *m_image = nullptr; // owned; null when evicted
    int m_lockCount = 1;
    int m_width; // pixels
    int m_height;
    qint64 m_lastUsed; // 64 bits: a host may run for months
    short m_depth;
    bool m_inMemory = true;
    // Owned: pixels of before the image was described afresh, still lent. Their locks can't be told from later ones, so
    // they go when all locks have gone.
    QVector<Image *> m_retired;
};
