// Tests of the host as a plug-in uses it: descriptions of pictures, access to their pixels, and analytics.
#include "app/HostApplication.h"

#include "Case.h"
#include "KImage.h"
#include "KOmp.h"
#include "KTools.h"
#include "TestFiles.h"
#include "analytics/KAnalyticsManager.h"
#include "app/MemoryBudget.h"

#include <QImage>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <thread>

class tst_HostApplication : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void returnsPixels();
    void describesRefused();
    void memoryBudget();
    void fewMessagesFromQt();
    void analyticsIsOff();

private:
    HostApplication *m_host = static_cast<HostApplication *>(QCoreApplication::instance());
};

void tst_HostApplication::returnsPixels()
{
    const QTemporaryDir dir;
    const QString path = dir.filePath("l.jpg"_s), none = dir.filePath("none.jpg"_s);
    WriteJpeg(path, 7, 5);
    KIImageDef *def = m_host->ImageDefOf(path);
    QCOMPARE(m_host->ImageDefOf(dir.path() + "/./x/../l.jpg"_s), def);
    QVERIFY(m_host->ImageDefOf(none) != def);
    QCOMPARE(m_host->ProblemOf(path), QString());
    QCOMPARE(m_host->ProblemOf(none), "no such file"_s);
    KImage *image = def->LockFullSize(true);
    QCOMPARE(QSize(image->width(), image->height()), QSize(7, 5));
    QCOMPARE(def->LockFullSize(true), image); // the same pixels; locks are counted
    def->UnlockFullSize(true);
    def->UnlockFullSize(true);
    ImageDef::Delete(path); // other users of the kernel may do this; the host then describes the picture again
    QCOMPARE(m_host->ImageDefOf(path)->nCols(), 7);

    WriteFile(none, "no picture");
    for (int i = 0; i < 2; ++i) // the second attempt starts over
        QVERIFY_EXCEPTION_THROWN(m_host->ImageDefOf(none)->LockFullSize(true), KException);
    QVERIFY(!ImageDef::Find(none)); // otherwise the cache would own the description too
    m_host->Forget(none);
}

void tst_HostApplication::describesRefused()
{
    const QTemporaryDir dir;
    const QString path = dir.filePath("gray.png"_s);
    for (const QSize &size : {QSize(7, 5), QSize(3, 2)}) { // the second one is described anew
        QImage gray(size, QImage::Format_Grayscale8);
        gray.fill(90);
        QVERIFY(gray.save(path));
        m_host->Accept(AcceptedPictures::OfKernel);
        m_host->ForgetImages();
        QCOMPARE(m_host->ProblemOf(path), "gray pictures are not supported"_s);
        QVERIFY(!m_host->IsGray(path)); // no picture
        m_host->ForgetImages();
        m_host->Accept(AcceptedPictures::GrayAndTiled);
        ImageDef *def = m_host->ImageOf(path);
        QVERIFY(m_host->IsGray(path) && def->m_id == ImageDef::IdOf(path));
        QCOMPARE(QRect(def->nBands(), def->nDepth(), def->nCols(), def->nRows()), QRect(QPoint(1, 8), size));
        KImage *image = def->Lock(size.width(), size.height(), true);
        QCOMPARE(QSize(image->width(), image->height()), size);
        QCOMPARE(def->LockFullSize(true), image);
        def->UnlockFullSize(true);
        for (int i = 0; i < 3; ++i) // another width or height, or 8 bits
            QVERIFY_EXCEPTION_THROWN(def->Lock(size.width() - (i == 0), size.height() - (i == 1), i != 2), KException);
    }
}

/// In bytes per pixel of 8-bit RGB: stored 3, floats 16, a window of floats 4 per thread, and the decoder's.
void tst_HostApplication::memoryBudget()
{
    const QTemporaryDir dir;
    for (const auto &[name, decoder] :
         {std::pair("a.jpg", 6), {"a.JPEG", 6}, {"a.tif", 0}, {"a.tiff", 0}, {"a.png", 0}, {"a.jp2", 3 * 4 + 3}}) {
        const Case named(name);
        const QString path = dir.filePath(QLatin1String(name));
        WriteJpeg(path, 700, 500); // the content decides the format
        const ImageDef &image = *m_host->ImageOf(path);
        const auto perPixel = [&](Corrector corrector) {
            return double(BytesToCorrect(image, corrector) - (80 << 20)) / (700 * 500);
        };
        QCOMPARE(perPixel(Corrector::Fitted), 3.0 + decoder);
        QCOMPARE(perPixel(Corrector::FittedByFloats), 3.0 + decoder + 4 * komp_num_threads);
        QCOMPARE(perPixel(Corrector::Plain), 3.0 + std::max(decoder, 3 + 16));
    }
    QVERIFY(AvailableBytes() > 1 << 20 && AvailableBytes() % 1024 == 0);

    MemoryBudget budget(100);
    auto first = std::make_unique<MemoryBudget::Share>(&budget, 60);
    auto second = std::make_unique<MemoryBudget::Share>(&budget, 40); // exactly fits
    std::atomic<bool> isAdmitted{false};
    std::thread third([&] {
        const MemoryBudget::Share share(&budget, 61);
        isAdmitted = true;
    });
    second.reset();
    QTest::qWait(20);
    const bool isEarly = isAdmitted;
    first.reset();
    third.join();
    QVERIFY(!isEarly && isAdmitted);
    const MemoryBudget::Share alone(&budget, 101); // a single picture always is
}

/// Only the first messages of Qt are printed, and none about its runtime folder.
void tst_HostApplication::fewMessagesFromQt()
{
    static QStringList printed;
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) { printed << text; });
    ChooseDisplayless();
    qWarning("QStandardPaths: no folder");
    const QLoggingCategory plugins("qt.qpa.plugin");
    qCWarning(plugins, "no plug-in");
    for (int i = 1; i <= 22; ++i)
        qWarning("%d", i);
    qInstallMessageHandler(before);
    QCOMPARE(printed.size(), 20);
    QCOMPARE(printed.first() + printed.last(), "120\nvitrelux: further messages from Qt are omitted"_s);
}

void tst_HostApplication::analyticsIsOff()
{
    KAnalyticsManager *analytics = m_host->ImageInstances()->tools->analytics;
    QVERIFY(!analytics->isActive());
    QCOMPARE(analytics->userId(), QString());
}

int main(int argc, char **argv)
{
    QTemporaryDir settings; // instead of the user's
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(settings.path()));
    ChooseDisplayless();
    HostApplication application(argc, argv);
    tst_HostApplication test;
    return QTest::qExec(&test, argc, argv);
}
#include "HostApplication_test.moc"
