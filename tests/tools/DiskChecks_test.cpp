#include "DiskChecks.h"

#include "KSystemInfo.h"
#include "Thrown.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/statvfs.h>

#include <limits>

namespace {

constexpr qint64 kMoreThanAnyDisk = std::numeric_limits<qint64>::max();

} // namespace

class tst_DiskChecks : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void freeSpace();
    void whyASaveFailed_data();
    void whyASaveFailed();
    void roomyAndWritableLeavesAnEmptyFile();
    void existingFileKeepsItsContent();
    void fileIsMissing();

private:
    QTemporaryDir m_dir;
};

void tst_DiskChecks::freeSpace()
{
    unsigned long long freeBytes = 1, totalBytes = 1;
    KSystemInfo::DiskInfo(QStringLiteral("/no/such/folder"), freeBytes, totalBytes);
    QCOMPARE(freeBytes, 0ull);
    QCOMPARE(totalBytes, 0ull);
    KSystemInfo::DiskInfo(m_dir.path(), freeBytes, totalBytes);
    QVERIFY(totalBytes > 0 && freeBytes <= totalBytes);

    QCOMPARE(getFreeDiskSpace(QStringLiteral("/no/such/folder")), qint64(-1));
    const qint64 all = getFreeDiskSpace(m_dir.path());
    struct statvfs disk;
    QCOMPARE(statvfs(QFile::encodeName(m_dir.path()).constData(), &disk), 0);
    const qint64 expected = static_cast<qint64>(disk.f_bfree * disk.f_frsize);
    QVERIFY(std::abs(all - expected) <= qint64(totalBytes / 100)); // others may write meanwhile
    QVERIFY(CheckForDiskSpace(m_dir.filePath(QStringLiteral("x")), 1));
    QVERIFY(!CheckForDiskSpace(m_dir.filePath(QStringLiteral("x")), kMoreThanAnyDisk));
    QVERIFY(CheckForDiskSpace(QStringLiteral("/no/such/folder/x"), kMoreThanAnyDisk));
}

void tst_DiskChecks::whyASaveFailed_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<QString>("message");
    const QString inside = m_dir.filePath(QStringLiteral("big.tiff"));
    QTest::newRow("disk too small")
        << inside << kMoreThanAnyDisk
        << QStringLiteral("Not enough free space on \"%1\" to finish operation").arg(QFileInfo(inside).absolutePath());
    QTest::newRow("folder missing: space is not asked")
        << QStringLiteral("/no/such/folder/x.tiff") << kMoreThanAnyDisk
        << QStringLiteral("Cannot write into file \"/no/such/folder/x.tiff\"");
    QTest::newRow("a folder in its place")
        << m_dir.path() << qint64(0) << QStringLiteral("Cannot write into file \"%1\"").arg(m_dir.path());
}

void tst_DiskChecks::whyASaveFailed()
{
    QFETCH(QString, fileName);
    QFETCH(qint64, size);
    QTEST(Thrown([&] { CheckAndThrowForDiskSpace(fileName, size, QStringLiteral("place")); }), "message");
}

void tst_DiskChecks::roomyAndWritableLeavesAnEmptyFile()
{
    const QString name = m_dir.filePath(QStringLiteral("left.tiff"));
    QCOMPARE(Thrown([&] { CheckAndThrowForDiskSpace(name, 0, QString()); }), QStringLiteral("none"));
    QVERIFY(QFile::exists(name));
    QCOMPARE(QFileInfo(name).size(), qint64(0));
}

void tst_DiskChecks::existingFileKeepsItsContent()
{
    QFile file(m_dir.filePath(QStringLiteral("kept.tiff")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("pixels");
    file.close();
    QCOMPARE(Thrown([&] { CheckAndThrowForDiskSpace(file.fileName(), 0, QString()); }), QStringLiteral("none"));
    QCOMPARE(file.size(), qint64(6));
}

void tst_DiskChecks::fileIsMissing()
{
    const QString name = m_dir.filePath(QStringLiteral("absent.jpg"));
    QCOMPARE(Thrown([&] { CheckIfFileExists(name, QString()); }),
             QStringLiteral("\nFile \"%1\" is not found").arg(name));
    QCOMPARE(Thrown([&] { CheckIfFileExists(m_dir.path(), QString()); }), QStringLiteral("none"));
}

QTEST_MAIN(tst_DiskChecks)
#include "DiskChecks_test.moc"
