// The pixels of a picture, locked in the host.
#pragma once

#include "KException.h"
#include "KIImageDef.h"

#include <QCoreApplication>
#include <QFileInfo>

/// Locks an image's full-size pixels for a scope, so that an exception unlocks them too.
class FullSizeLock {
public:
    explicit FullSizeLock(KIImageDef *def) : m_def(def), m_image(def->LockFullSize(/*nativeDepth=*/true)) { }
    ~FullSizeLock()
    {
        if (m_image)
            m_def->UnlockFullSize(/*nativeDepth=*/true);
    }
    FullSizeLock(const FullSizeLock &) = delete;
    FullSizeLock &operator=(const FullSizeLock &) = delete;

    /// Returns the pixels; null if the host returned none.
    const KImage *Image() const { return m_image; }

private:
    KIImageDef *m_def;
    KImage *m_image;
};

[[noreturn]] inline void ThrowNotLoaded(const QString &fileName)
{
    throw KException(QCoreApplication::translate("QCoreApplication", "File \"%1\" cannot be loaded")
                         .arg(QFileInfo(fileName).absoluteFilePath()),
                     KPlace());
}
