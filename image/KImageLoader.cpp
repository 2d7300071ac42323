#include "KImageLoader.h"

namespace {

using Version = KImageLoader::Version;
using Item = KImageLoader::Item;

bool IsFullSize(const ImageDef *def, const Version *version)
{
    return version->m_width == def->nCols() && version->m_height == def->nRows();
}

std::unique_ptr<KImage> ReadFile(const QString &fileName, bool nativeDepth)
{
    auto image = std::make_unique<KImage>();
    image->ID_Read(fileName, nativeDepth);
    return image;
}

/// Like ReadFile, but rows may still be pending if the calling thread accepts that.
std::unique_ptr<KImage> ReadFileMaybePending(const QString &fileName, bool nativeDepth)
{
    if (!gflAcceptsPendingRows())
        return ReadFile(fileName, nativeDepth);
    auto image = std::make_unique<KImage>();
    image->ID_ReadPending(fileName, nativeDepth);
    return image;
}

/// Returns @p source at the size and depth of @p version, keeping the pixel form.
std::unique_ptr<KImage> Reduced(KImage &source, const Version *version)
{
    auto resized = std::make_unique<KImage>();
    source.Resize(*resized, version->m_width, version->m_height);
    if (resized->bitsPerComponent() == version->m_depth)
        return resized;
    auto converted = std::make_unique<KImage>();
    resized->Convert(*converted, resized->type(), version->m_depth);
    return converted;
}

void SetPixels(Version *version, std::unique_ptr<KImage> image)
{
    delete version->m_image;
    version->m_image = image.release();
    version->m_inMemory = true;
}

/// Returns the full-size version at a depth, in memory but not locked for the caller. If its pixels aren't in memory,
/// @p read loads them; a new version is added to the item.
template <typename Read> Version *FullVersion(const ImageDef *def, int depth, Item *item, Read read)
{
    Version *full = item->Find_unlocked(def->nCols(), def->nRows(), depth);
    std::unique_ptr<Version> made;
    if (!full) {
        made = std::make_unique<Version>(def->nCols(), def->nRows(), depth, Item::pImageDefCache->m_accessCount);
        made->m_lockCount = 0;
        made->m_inMemory = false;
        full = made.get();
    }
    if (!full->m_inMemory)
        read(full);
    if (made)
        item->m_versions.append(made.release());
    full->m_lastUsed = Item::pImageDefCache->m_accessCount;
    return full;
}

// --- Images whose versions are reloaded from the source ---

void FillFromSource(const ImageDef *def, Version *version)
{
    SetPixels(version, ReadFileMaybePending(def->FileName(), version->m_depth != 8));
}

void MakeFromSource(ImageDef *def, Version *version, Item *item)
{
    Version *bigger = item->FindBiggerInMemory(version->m_width, version->m_height, version->m_depth);
    if (!bigger && IsFullSize(def, version)) {
        FillFromSource(def, version);
        return;
    }
    if (!bigger) // the whole file is decoded anyway, so keep it
        bigger = FullVersion(def, version->m_depth, item, [def](Version *full) { FillFromSource(def, full); });
    bigger->m_image->WaitForRows(bigger->m_height, def->FileName());
    SetPixels(version, Reduced(*bigger->m_image, version));
}

// --- Images whose versions are reloaded from disk copies ---

void FillWithCopy(ImageDef *def, Version *version, Item *item);

Version *DevelopedVersion(ImageDef *def, Item *item)
{
    return FullVersion(def, def->nDepth(), item, [=](Version *full) { FillWithCopy(def, full, item); });
}

/// Reads the pixels of the version's disk copy. Returns null if the copy is missing, damaged, or belongs to another
/// picture.
std::unique_ptr<KImage> ReadCopy(const Version *version)
{
    if (version->m_cacheName.isEmpty() || !QFileInfo::exists(version->m_cacheName))
        return nullptr;
    try {
        auto image = ReadFile(version->m_cacheName, /*nativeDepth=*/true);
        const bool isTheVersion = image->width() == version->m_width && image->height() == version->m_height
            && image->bitsPerComponent() == version->m_depth;
        return isTheVersion ? std::move(image) : nullptr;
    } catch (const KException &) {
        return nullptr;
    }
}

/// Reads the version's disk copy. If that isn't usable, creates the pixels and writes a new copy.
void FillWithCopy(ImageDef *def, Version *version, Item *item)
{
    if (auto copy = ReadCopy(version)) {
        SetPixels(version, std::move(copy));
        return;
    }
    std::unique_ptr<KImage> image;
    if (IsFullSize(def, version) && version->m_depth == def->nDepth())
        image = ReadFile(def->FileName(), /*nativeDepth=*/true);
    else
        image = Reduced(*DevelopedVersion(def, item)->m_image, version);
    version->RemoveDiskCopy(); // it may exist but be unusable
    image->ID_WriteToCache(item->fullCacheName(version));
    SetPixels(version, std::move(image));
}

} // namespace

void KImageLoader::Load(ImageDef *def, Version *version)
{
    SetPixels(version, ReadFile(def->FileName(), /*nativeDepth=*/true));
}

void KImageLoader::Load(ImageDef *def, Version *version, bool reloadFromSource, Item *item)
{
    if (!reloadFromSource) {
        FillWithCopy(def, version, item);
    } else if (IsFullSize(def, version)) {
        FillFromSource(def, version);
    } else {
        auto image = std::make_unique<KImage>();
        image->ID_ReadReduced(def->FileName(), version->m_depth != 8, version->m_width, version->m_height);
        SetPixels(version, std::move(image));
    }
}

bool KImageLoader::GetVersion(ImageDef *def, Version *&version, bool reloadFromSource, Item *item)
{
    if (reloadFromSource) {
        MakeFromSource(def, version, item);
        return true;
    }
    if (IsFullSize(def, version) && version->m_depth == def->nDepth()) {
        version = DevelopedVersion(def, item);
        ++version->m_lockCount;
        return false;
    }
    FillWithCopy(def, version, item);
    return true;
}

void KImageLoader::Free(Version *version)
{
    delete version->m_image;
    version->m_image = nullptr;
}

bool KImageLoader::HasFailed(const Version *version)
{
    return version->m_image && gflWaitForRows(version->m_image->m_bitmap, 0, nullptr) != GFL_NO_ERROR;
}

qint64 KImageLoader::memSize(Version *version)
{
    return static_cast<qint64>(version->m_width) * version->m_height * (version->m_depth / 2);
}

void KImageLoader::LockPostProcess(ImageDef *def, KImage *image, QMutex &cacheMutex)
{
    if (!image || def->m_highResReady)
        return;
    const CacheLocker locker(cacheMutex);
    if (!def->m_highResReady) // another thread may have made the thumbnail in the meantime
        def->GetThumbnailFromHighRes(*image);
}
