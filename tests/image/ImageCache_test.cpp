// Tests of the image cache: eviction, where versions are loaded from, disk copies of raw files, startup and shutdown.
#include "Case.h"
#include "DngFile.h"
#include "KImage_p.h"
#include "KTools.h"
#include "Thrown.h"
#include "WrittenPictures.h"

#include <QDirIterator>
#include <QScopeGuard>
#include <QtTest>

namespace {

KImageCache &Cache()
{
    return KImageCache::Instance();
}

KImageCache::Item *ItemOf(ImageDef *image)
{
    return Cache().m_items.value(image->m_id);
}

QStringList FilesBelow(const QString &folder)
{
    QStringList files;
    QDirIterator walk(folder, QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext())
        files << walk.next();
    return files;
}

} // namespace

class tst_ImageCache : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { KImage::init(nullptr); }
    void init();
    void cleanup();
    void cleanupTestCase() { KImage::exit(); }

    void eviction();
    void sizesInBytes();
    void smallerFromBigger();
    void sourcesOfVersions();
    void noRoomForDiskCopies();
    void lockedPixelsOutliveImage();
    void pendingRows();
    void startWithHost();

private:
    QString Path(const QString &name) const { return m_dir.filePath(name); }
    QString Temporary() const { return m_dir.filePath(QStringLiteral("temporary")); }

    QTemporaryDir m_dir;
};

void tst_ImageCache::init()
{
    QDir().mkdir(Temporary());
    KCacheDiskManager::ms_instance->setTemporaryFolders({Temporary()});
    Cache().m_maxMemoryMo = 256;
}

void tst_ImageCache::cleanup()
{
    for (KImageCache::Item *item : Cache().m_items.values())
        ImageDef::Delete(item->m_def);
    QVERIFY(Cache().m_items.isEmpty());
    QCOMPARE(FilesBelow(Temporary()), QStringList());
}

void tst_ImageCache::eviction()
{
    const struct {
        int limitMo;
        const char *steps;    // L: lock, U: unlock; pictures a to d count as 640,000 bytes each
        const char *inMemory; // afterward
    } rows[] = {{1, "La Ua Lb Ub", "b"},
                {1, "La Lb Ua", "b"},      // the older picture is evicted as soon as it is unlocked
                {1, "La Lb Lc Uc", "abc"}, // locked pictures stay even above the limit
                {1, "La La Lb Ua Ub", "ab"},
                {0, "La Ua", "a"},                           // the picture locked last stays at any limit
                {1, "La Ua Lb Ub Lc", "bc"},                 // a lock alone evicts nothing
                {2, "La Ua Lb Ub Lc Uc La Ua Ld Ud", "acd"}, // evicts the least recently used
                {2, "La Lb Lc Ld Ua Ub Uc", "bcd"},          // evicts no more than necessary
                {1, "Ua La Ua Ua La Lb Ub", "ab"}};          // unlocks without a lock
    for (const auto &row : rows) {
        const Case named(row.limitMo, row.steps);
        Cache().m_maxMemoryMo = row.limitMo;
        QMap<QChar, ImageDef *> images;
        for (const QChar name : QStringLiteral("abcd"))
            images[name] = Picture(WritePicture(Path(QString(name) + QLatin1String(".png")), "png", 400, 400));
        for (const QString &step : QString::fromLatin1(row.steps).split(QLatin1Char(' '))) {
            if (step[0] == QLatin1Char('L'))
                QCOMPARE(images[step[1]]->LockFullSize(true)->width(), 400);
            else
                images[step[1]]->UnlockFullSize(true);
        }
        QString inMemory;
        for (auto image = images.cbegin(); image != images.cend(); ++image) {
            const qint64 bytes = ItemOf(image.value()) ? ItemOf(image.value())->memUsed() : 0;
            QVERIFY(bytes == 0 || bytes == 400 * 400 * 4);
            inMemory += bytes ? QString(image.key()) : QString();
        }
        QCOMPARE(inMemory, QString::fromLatin1(row.inMemory));
        cleanup();
    }
}

void tst_ImageCache::sizesInBytes()
{
    ImageVersion<KImage> small(1000, 1000, 32, 0), large(100000, 50000, 16, 0);
    QCOMPARE(KImageLoader::memSize(&small), qint64(16000000));
    QCOMPARE(KImageLoader::memSize(&large), qint64(40000000000));
}

void tst_ImageCache::smallerFromBigger()
{
    const QString path = WritePicture(Path(QStringLiteral("s.jpg")), "jpeg", 100, 80);
    ImageDef *const image = Picture(path);
    QVERIFY(!image->IsCached(50, 40, true));
    QCOMPARE(image->Lock(50, 40, true)->width(), 50);
    const auto &versions = ItemOf(image)->m_versions; // the full-size version is kept, and can be evicted
    QVERIFY(versions.size() == 2 && versions[0]->m_width == 100 && versions[0]->m_lockCount == 0);

    WriteFile(path, "no picture"); // from here on, reading the file fails
    QCOMPARE(image->Lock(30, 20, false)->height(), 20);
    QCOMPARE(image->Lock(100, 80, false)->height(), 80); // 8 bits and native depth are the same version
    image->Unlock(100, 80, true);
    image->ReleaseFromMemory();
    QVERIFY(!image->IsCached(100, 80, true) && image->IsCached(50, 40, true));
    QCOMPARE(image->Lock(40, 30, true)->width(), 40);
    QVERIFY(Thrown([&] {
                image->Lock(50, 20, true);
            }).contains(QStringLiteral("GFL_ERROR"))); // only versions that are wider and higher can be reduced
    QVERIFY(Thrown([&] { image->Lock(100, 80, true); }).contains(QStringLiteral("GFL_ERROR")));

    WritePicture(path, "jpeg", 100, 80);
    QCOMPARE(image->LockFullSize(true)->width(), 100);
    QCOMPARE(ItemOf(image)->m_versions.size(), 4); // with widths 100, 50, 30 and 40
}

void tst_ImageCache::sourcesOfVersions()
{
    const struct {
        const char *name;
        int bits;
        bool hasCopies;
    } rows[] = {{"b.png", 16, false}, {"c.NEF", 8, false}, {"d.nef", 16, true}, {"e.dng", 16, true}};
    for (const auto &[name, bits, hasCopies] : rows) {
        const Case named(name, bits);
        cleanup();
        const QString path = Path(QString::fromLatin1(name));
        if (path.endsWith(QStringLiteral("dng")))
            WriteFile(path, DngFile(QSize(64, 48), {0.1, 0.25, 0.15}));
        else
            WritePicture(path, "png", 64, 48, GFL_RGB, bits);
        ImageDef *const image = Picture(path);
        QCOMPARE(image->nDepth(), bits);
        const struct {
            int width, height;
            bool nativeDepth;
        } asked[] = {{32, 24, true}, {64, 48, true}, {20, 10, false}};
        QVector<QByteArray> pixels;
        const auto lockAll = [&] {
            for (const auto &version : asked) {
                const KImage &lent = *image->Lock(version.width, version.height, version.nativeDepth);
                QCOMPARE(lent.bitsPerComponent(), ushort(version.nativeDepth ? bits : 8));
                QVERIFY(lent.width() == version.width && lent.height() == version.height);
                pixels << PackedPixels(*lent.m_bitmap);
                image->Unlock(version.width, version.height, version.nativeDepth);
            }
            image->ReleaseFromMemory();
            QCOMPARE(ItemOf(image)->memUsed(), qint64(0));
        };
        lockAll();
        lockAll(); // loads evicted versions again
        QCOMPARE(pixels.mid(3), pixels.mid(0, 3));
        pixels.resize(3);
        QCOMPARE(FilesBelow(Temporary()).size(), hasCopies ? 3 : 0); // two of native depth, one of 8 bits
        QFile::rename(path, path + QStringLiteral(".away"));
        WriteFile(path, "no picture"); // from here on, raw development fails
        if (!hasCopies) {
            QVERIFY(Thrown(lockAll).contains(QStringLiteral("GFL_ERROR")));
            continue;
        }
        lockAll();
        QCOMPARE(pixels.mid(3), pixels.mid(0, 3));
        QDir(Temporary()).removeRecursively(); // as a cleanup of temporary files would
        QVERIFY(Thrown(lockAll).contains(QStringLiteral("GFL_ERROR")));
        QDir().mkdir(Temporary());
        QFile::remove(path);
        QFile::rename(path + QStringLiteral(".away"), path);
        lockAll();
        QCOMPARE(pixels.mid(6, 3), pixels.mid(0, 3));
        for (const char *damage : {"emptied", "text", "cut", "swapped"}) {
            const QStringList copies = FilesBelow(Temporary());
            QByteArrayList bytes;
            for (const QString &copy : copies)
                bytes << ReadFile(copy);
            for (int i = 0; i < copies.size(); ++i)
                WriteFile(copies[i],
                          *damage == 'e'       ? QByteArray()
                              : *damage == 't' ? QByteArray("no picture")
                              : *damage == 'c' ? bytes[i].left(bytes[i].size() / 2)
                                               : bytes[(i + 1) % 3]);
            lockAll();
        }
        for (int i = 9; i < pixels.size(); ++i)
            QVERIFY2(pixels[i] == pixels[i % 3], qPrintable(QStringLiteral("%1, lock %2").arg(path).arg(i)));
    }
}

void tst_ImageCache::noRoomForDiskCopies()
{
    ImageDef *const image = Picture(WritePicture(Path(QStringLiteral("full.nef")), "png", 64, 48, GFL_RGB, 16));
    KCacheDiskManager::ms_instance->setTemporaryFolders({Path(QStringLiteral("gone"))});
    const QString message = QStringLiteral("No more space in temporary folder");
    QCOMPARE(Thrown([image] { image->LockFullSize(true); }), message);
    QCOMPARE(Thrown([image] { image->Lock(20, 10, false); }), message);
    QVERIFY(ItemOf(image)->m_versions.isEmpty());
    KCacheDiskManager::ms_instance->setTemporaryFolders({Temporary()});
    QCOMPARE(image->LockFullSize(true)->bitsPerComponent(), ushort(16));
}

void tst_ImageCache::lockedPixelsOutliveImage()
{
    const QString path = WritePicture(Path(QStringLiteral("lent.png")), "png", 64, 48);
    const KImage *const lent = Picture(path)->LockFullSize(true);
    const QByteArray before = PackedPixels(*lent->m_bitmap);
    ImageDef::Delete(path);
    QCOMPARE(PackedPixels(*lent->m_bitmap), before);

    // If an image was destroyed by its owner, the next one with that path replaces it.
    ImageDef *image = nullptr;
    QVERIFY(ImageDef::CreateAPicture(path, image, false));
    image->LockFullSize(true);
    delete image;
    QVERIFY(!ImageDef::Find(path));
    QCOMPARE(Picture(path)->LockFullSize(true)->width(), 64);
    QCOMPARE(Cache().m_items.size(), 1);
}

/// Pixels can be handed out before they are decoded: other locks wait for them, and a failure is forgotten after the
/// last unlock.
void tst_ImageCache::pendingRows()
{
    gflSetThreads(2);
    const auto reset = qScopeGuard([] { gflSetThreads(0); });
    const QString path = WritePicture(Path(QStringLiteral("early.jpg")), "jpeg", 1300, 900);
    const QByteArray file = ReadFile(path);
    ImageDef *const image = Picture(path);
    const QByteArray whole = PackedPixels(*image->LockFullSize(true)->m_bitmap);
    KImage reduced;
    image->LockFullSize(true)->Resize(reduced, 130, 90);
    for (int i = 0; i < 2; ++i)
        image->UnlockFullSize(true);
    image->ReleaseFromMemory();
    const auto lockEarly = [image] {
        const auto refuse = qScopeGuard([] { gflAcceptPendingRows(0); });
        gflAcceptPendingRows(1);
        return image->LockFullSize(true);
    };
    {
        const auto refuse = qScopeGuard([] { gflAcceptPendingRows(0); });
        gflAcceptPendingRows(1);
        KImage own; // of a host that reads pictures itself and doesn't handle pending rows
        own.ID_Read(WritePicture(Path(QStringLiteral("own.jpg")), "jpeg", 3000, 4000), true);
        int ready = 0;
        QCOMPARE(gflWaitForRows(own.m_bitmap, 0, &ready), int(GFL_NO_ERROR));
        QCOMPARE(ready, 4000);
    }
    const KImage *const early = lockEarly();
    QVERIFY(PackedPixels(*image->Lock(130, 90, true)->m_bitmap) == PackedPixels(*reduced.m_bitmap));
    QCOMPARE(image->LockFullSize(true), early);
    QVERIFY(PackedPixels(*early->m_bitmap) == whole);
    image->UnlockFullSize(true);
    image->UnlockFullSize(true);
    image->Unlock(130, 90, true);
    image->ReleaseFromMemory();

    WriteFile(path, file.left(file.size() * 2 / 3));
    const QString failure = Thrown([&] { // thrown by the lock if decoding has already ended
        const KImage *const cut = lockEarly();
        const auto unlock = qScopeGuard([image] { image->UnlockFullSize(true); });
        QVERIFY(Thrown([image] { image->LockFullSize(true); }).contains(QStringLiteral("GFL_ERROR_FILE_READ")));
        cut->WaitForRows(900, path);
    });
    QVERIFY2(failure.contains(QStringLiteral("GFL_ERROR_FILE_READ")), qPrintable(failure));
    QVERIFY(!image->IsCached(1300, 900, true));
    QCOMPARE(Thrown([image] { image->LockFullSize(true); }), failure);
    WriteFile(path, file);
    QVERIFY(PackedPixels(*image->LockFullSize(true)->m_bitmap) == whole);
}

void tst_ImageCache::startWithHost()
{
    KImage::init(nullptr); // a second call does nothing
    Picture(WritePicture(Path(QStringLiteral("h.nef")), "png", 64, 48, GFL_RGB, 16))->LockFullSize(true);
    KImage::exit();
    QVERIFY(!KImageCache::ms_instance && !ImageDatas::settings && !KTools::ms_instances.log);
    QVERIFY(QDir(Temporary()).isEmpty()); // the folder is removed too
    // This allocator takes effect only if KImage::exit() has stopped the image-file layer.
    int blocks = 0;
    gflLibraryInitEx(
        [](unsigned long size, void *counter) { return ++*static_cast<int *>(counter), std::malloc(size); },
        realloc_callback, free_callback, &blocks);
    free_callback(gflMemoryAlloc(1), nullptr);
    gflLibraryExit();
    QCOMPARE(blocks, 1);

    KImageCache shared;
    ImageDatas settings;
    for (KImageCache *cache : {static_cast<KImageCache *>(nullptr), &shared}) {
        const Case named(cache ? "with the host's cache" : "without");
        KTools::init(nullptr);
        KImageInstances host = {&KTools::ms_instances, cache, &settings};
        KImage::init(&host);
        QVERIFY(ImageDatas::settings == &settings && KImage::ms_instances.cache == &Cache());
        QVERIFY(Picture(WritePicture(Path(QStringLiteral("h.png")), "png", 8, 6)));
        KImage::exit();
        QCOMPARE(KImageCache::ms_instance, cache); // the host's cache with its contents, or none
        QCOMPARE(KImage::ms_instances.cache, cache);
    }
    QCOMPARE(shared.m_items.size(), 1);
    KImageCache::SetInstance(nullptr);
    ImageDatas::settings = nullptr;
    KImage::init(nullptr);
}

QTEST_MAIN(tst_ImageCache)
#include "ImageCache_test.moc"
