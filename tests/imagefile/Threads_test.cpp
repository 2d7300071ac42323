// Tests of several threads that use the layer at once on different files, as a preview and a batch do.
#include "MetadataFiles.h"
#include "Threads.h"

#include <QtTest>

#include <atomic>
#include <thread>

class tst_Threads : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void concurrentFiles();
    void errorTextsArePerThread();

private:
    Folder m_folder;
};

namespace {

/// Repeatedly writes a picture, reads it back, and reads its metadata and a thumbnail. Adds failures to @p failures.
void Work(const QString &path, const char *format, unsigned seed, std::atomic<int> *failures)
{
    for (unsigned i = 0; i < 6; ++i) {
        const bool isJpeg = format[0] == 'j';
        const BitmapPtr bitmap = isJpeg ? SmoothBitmap(300, int(200 - (seed + i) % 50), GFL_RGB, 8)
                                        : RandomBitmap(300, 200, GFL_RGB, 8, seed + i);
        const GFL_LOAD_PARAMS load = LoadParams(GFL_LOAD_METADATA);
        *failures += Save(path, *bitmap, SaveParams(format, 4)) != GFL_NO_ERROR;
        const BitmapPtr read = Load(path, nullptr, load), small = LoadThumbnail(path, {50, 50}, load);
        *failures += !read || !Difference(*read, *bitmap, isJpeg ? 0.02 : 0.0).isEmpty();
        *failures += !small || small->Width != 50;
        *failures += !LoadMetadata(path);
    }
}

} // namespace

void tst_Threads::concurrentFiles()
{
    std::atomic<int> failures{0};
    InThreads(4, [&](int i) {
        Work(m_folder.filePath(QString::number(i)), i % 2 ? "jpeg" : "tiff", unsigned(100 * i), &failures);
    });
    QCOMPARE(failures.load(), 0);
}

void tst_Threads::errorTextsArePerThread()
{
    QVERIFY(!Load(QStringLiteral("/none/here")));
    std::thread([] { Load(QStringLiteral("/none/there")); }).join();
    QVERIFY(QByteArray(gflLastErrorText()).contains("/none/here"));
}

QTEST_GUILESS_MAIN(tst_Threads)
#include "Threads_test.moc"
