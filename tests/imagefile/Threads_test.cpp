// Several threads in the layer at a time, on different files, as the preview and a batch are.
#include "Bitmaps.h"

#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

class tst_Threads : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void sideBySide();
    void errorTextsAreTheirOwn();
};

namespace {

// Writes, reads back, and reads metadata and a thumbnail, again and again.
void Work(const QByteArray &path, const char *format, unsigned seed, std::atomic<int> *failures)
{
    for (unsigned i = 0; i < 6; ++i) {
        const BitmapPtr bitmap = RandomBitmap(300, 200, GFL_RGB, 8, seed + i);
        bitmap->Xdpi = bitmap->Ydpi = 300;
        const GFL_SAVE_PARAMS params = SaveParams(format, 4);
        const GFL_LOAD_PARAMS load = LoadParams(GFL_LOAD_METADATA);
        GFL_BITMAP *loaded = nullptr, *small = nullptr, *metadata = nullptr;
        *failures += gflSaveBitmapUTF8(path.constData(), bitmap.get(), &params) != GFL_NO_ERROR;
        *failures += gflLoadBitmapUTF8(path.constData(), &loaded, &load, nullptr) != GFL_NO_ERROR;
        *failures += gflLoadThumbnailUTF8(path.constData(), 50, 50, &small, &load, nullptr) != GFL_NO_ERROR;
        *failures += gflLoadMetadataUTF8(path.constData(), &metadata) != GFL_NO_ERROR;
        const BitmapPtr one(loaded), two(small), three(metadata);
        *failures += !one || !Difference(*one, *bitmap, format[0] == 'j' ? 1.0 : 0.0).isEmpty();
        *failures += !two || two->Width != 50;
    }
}

} // namespace

void tst_Threads::sideBySide()
{
    QTemporaryDir folder;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(Work, folder.filePath(QString::number(i)).toUtf8(), i % 2 ? "jpeg" : "tiff",
                             unsigned(100 * i), &failures);
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(failures.load(), 0);
}

void tst_Threads::errorTextsAreTheirOwn()
{
    GFL_BITMAP *bitmap = nullptr;
    const GFL_LOAD_PARAMS params = LoadParams();
    QVERIFY(gflLoadBitmapUTF8("/none/here", &bitmap, &params, nullptr) == GFL_ERROR_FILE_OPEN);
    std::thread([&params] {
        GFL_BITMAP *other = nullptr;
        gflLoadBitmapUTF8("/none/there", &other, &params, nullptr);
    }).join();
    QVERIFY(QByteArray(gflLastErrorText()).contains("/none/here"));
}

QTEST_GUILESS_MAIN(tst_Threads)
#include "Threads_test.moc"
