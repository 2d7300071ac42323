// Stress test: four threads lock, read and unlock random versions of twenty pictures under a small memory limit, while
// some pictures are reloaded or deleted. VITRELUX_STRESS_SECONDS sets the duration. Sanitizers must report nothing.
#include "Case.h"
#include "KOmp.h"
#include "KTools.h"
#include "Threads.h"
#include "WrittenPictures.h"

#include <QDirIterator>
#include <QtTest>

#include <atomic>
#include <random>
#include <shared_mutex>

namespace {

constexpr int kPictures = 20, kThreads = 4, kWidth = 160, kHeight = 120;

/// Picture of a unique gray level, so that mixed-up pixels are detected.
struct Subject {
    QString path;
    ImageDef *image = nullptr;
    int generation = 0; // counts deletions
    int gray = 0;
    std::shared_mutex mutex; // exclusive for deleting and reloading, which must not overlap other calls
};

/// Lock held by a thread.
struct Held {
    Subject *subject;
    int generation;
    int width, height;
    bool nativeDepth;
    const KImage *pixels;
};

bool HasGray(const KImage &image, int gray)
{
    const unsigned char *last = image.getData(image.width() - 1, image.height() - 1);
    const int value = image.bitsPerComponent() == 8 ? *last : *reinterpret_cast<const quint16 *>(last) / 257;
    return std::abs(value - gray) <= 1;
}

class Worker {
public:
    Worker(std::vector<Subject> *subjects, unsigned seed) : m_subjects(*subjects), m_random(seed) { }

    /// Returns the number of errors.
    int Run(std::chrono::steady_clock::time_point end)
    {
        while (std::chrono::steady_clock::now() < end) {
            const int dice = Random(100);
            if (dice < 3)
                Disturb(m_subjects[std::size_t(Random(kPictures))], dice == 0);
            else if (m_held.size() < 4 && dice < 55)
                Lock(m_subjects[std::size_t(Random(kPictures))]);
            else
                UnlockOne();
        }
        while (!m_held.empty())
            UnlockOne();
        return m_faults;
    }

private:
    int Random(int below) { return int(m_random() % unsigned(below)); }

    void Lock(Subject &subject)
    {
        static constexpr int kScales[] = {1, 1, 2, 3, 5};
        const int scale = kScales[Random(5)];
        const bool nativeDepth = Random(3) > 0;
        const std::shared_lock<std::shared_mutex> inCall(subject.mutex);
        const KImage *pixels = subject.image->Lock(kWidth / scale, kHeight / scale, nativeDepth);
        m_faults += pixels->width() != kWidth / scale;
        m_held.push_back({&subject, subject.generation, kWidth / scale, kHeight / scale, nativeDepth, pixels});
    }

    void UnlockOne()
    {
        if (m_held.empty())
            return;
        std::swap(m_held[std::size_t(Random(int(m_held.size())))], m_held.back());
        const Held held = m_held.back();
        m_held.pop_back();
        m_faults += !HasGray(*held.pixels, held.subject->gray); // even if the image was deleted in the meantime
        const std::shared_lock<std::shared_mutex> inCall(held.subject->mutex);
        if (held.generation == held.subject->generation)
            held.subject->image->Unlock(held.width, held.height, held.nativeDepth);
    }

    void Disturb(Subject &subject, bool deletes)
    {
        const std::unique_lock<std::shared_mutex> alone(subject.mutex);
        if (deletes) {
            ImageDef::Delete(subject.image);
            subject.image = Picture(subject.path);
            ++subject.generation;
        } else {
            m_faults += !subject.image->Reload();
        }
    }

    std::vector<Subject> &m_subjects;
    std::mt19937 m_random;
    std::vector<Held> m_held;
    int m_faults = 0;
};

} // namespace

class tst_ImageCacheStress : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void oneItemForAll();
    void randomVersions();
    void cleanupTestCase();

private:
    QTemporaryDir m_dir;
};

void tst_ImageCacheStress::initTestCase()
{
    KImage::init(nullptr);
    komp_num_threads = 1; // the thread sanitizer doesn't support OpenMP
    KCacheDiskManager::ms_instance->setTemporaryFolders({m_dir.path()});
}

void tst_ImageCacheStress::oneItemForAll()
{
    QTemporaryDir pictures;
    for (int round = 0; round < 30; ++round) {
        const Case named("round", round);
        const QString path =
            WritePicture(pictures.filePath(QStringLiteral("%1.png").arg(round)), "png", kWidth, kHeight);
        std::vector<ImageDef *> images(kThreads);
        std::vector<KImage *> pixels(kThreads);
        InThreads(kThreads, [&](int i) {
            images[std::size_t(i)] = Picture(path);
            pixels[std::size_t(i)] = images[std::size_t(i)]->LockFullSize(true);
        });
        QCOMPARE(std::count(images.begin(), images.end(), images[0]), kThreads);
        QCOMPARE(std::count(pixels.begin(), pixels.end(), pixels[0]), kThreads);
        for (ImageDef *image : images)
            image->UnlockFullSize(true);
        ImageDef::Delete(path);
    }
}

void tst_ImageCacheStress::randomVersions()
{
    QTemporaryDir pictures;
    std::vector<Subject> subjects(kPictures);
    for (int i = 0; i < kPictures; ++i) {
        Subject &subject = subjects[std::size_t(i)];
        const int bits = i % 3 == 0 ? 8 : 16;
        subject.path = pictures.filePath(QString::number(i) + QLatin1String(i % 3 == 2 ? ".nef" : ".png"));
        subject.gray = 10 * i;
        const BitmapPtr bitmap = RandomBitmap(kWidth, kHeight, GFL_RGB, bits);
        std::memset(bitmap->Data, subject.gray, std::size_t(bitmap->BytesPerLine) * kHeight); // 16 bits: 257 * gray
        const GFL_SAVE_PARAMS params = SaveParams("png", 1);
        QCOMPARE(gflSaveBitmapUTF8(subject.path.toUtf8().constData(), bitmap.get(), &params), int(GFL_NO_ERROR));
        subject.image = Picture(subject.path);
    }
    KImageCache &cache = KImageCache::Instance();
    cache.m_maxMemoryMo = 1;

    bool isSet = false;
    const int seconds = qEnvironmentVariableIntValue("VITRELUX_STRESS_SECONDS", &isSet);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(isSet ? seconds : 2);
    std::atomic<int> faults{0};
    InThreads(kThreads, [&](int i) { faults += Worker(&subjects, unsigned(i)).Run(end); });
    QCOMPARE(faults.load(), 0);

    qint64 sum = 0;
    int copies = 0;
    for (KImageCache::Item *item : cache.m_items) {
        qint64 bytes = 0;
        for (const ImageVersion<KImage> *version : item->m_versions) {
            QVERIFY(version->m_lockCount == 0 && version->m_retired.isEmpty());
            bytes += version->m_image ? qint64(version->m_width) * version->m_height * version->m_depth / 2 : 0;
            copies += !version->m_cacheName.isEmpty();
        }
        QCOMPARE(item->memUsed(), bytes);
        sum += bytes;
    }
    QCOMPARE(cache.m_bytesInMemory.load(), sum);
    QDirIterator files(m_dir.path(), QDir::Files, QDirIterator::Subdirectories);
    for (; files.hasNext(); files.next())
        --copies;
    QCOMPARE(copies, 0);
}

void tst_ImageCacheStress::cleanupTestCase()
{
    KImage::exit();
    QVERIFY(QDir(m_dir.path()).isEmpty());
}

QTEST_MAIN(tst_ImageCacheStress)
#include "ImageCache_stress.moc"
