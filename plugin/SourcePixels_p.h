// The pixels of a picture, locked in the host.
#pragma once

#include "KException.h"
#include "KIImageDef.h"
#include "gfl.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QScopeGuard>

/// Scoped lock of an image's full-size pixels, so that an exception unlocks them too.
class FullSizeLock {
public:
    enum class Rows {
        Complete,
        MayBePending, ///< call KImage::WaitForRows before reading any row
    };

    explicit FullSizeLock(KIImageDef *def, Rows rows = Rows::Complete) : m_def(def), m_image(Lock(def, rows)) { }
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
    static KImage *Lock(KIImageDef *def, Rows rows)
    {
        const auto refuse = qScopeGuard([] { gflAcceptPendingRows(0); });
        gflAcceptPendingRows(rows == Rows::MayBePending);
        return def->LockFullSize(/*nativeDepth=*/true);
    }

    KIImageDef *m_def;
    KImage *m_image;
};

[[noreturn]] inline void ThrowNotLoaded(const QString &fileName)
{
    throw KException(QCoreApplication::translate("QCoreApplication", "File \"%1\" cannot be loaded")
                         .arg(QFileInfo(fileName).absoluteFilePath()),
                     KPlace());
}
