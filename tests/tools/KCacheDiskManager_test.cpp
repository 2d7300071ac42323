// Names and folders of the cache's disk copies, and disk checks before a file is written.
#include "KCacheDiskManager.h"

#include "Case.h"
#include "DiskChecks.h"
#include "KSystemInfo.h"
#include "TestFiles.h"
#include "Threads.h"
#include "Thrown.h"

#include <QTemporaryDir>
#include <QtTest>

#include <limits>
#include <set>

namespace {

constexpr unsigned long long kReserveSmall = 0x6400000, kReserveLarge = 0x40000000;

constexpr qint64 kMoreThanAnyDisk = std::numeric_limits<qint64>::max();

} // namespace

class tst_KCacheDiskManager : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { KCacheDiskManager::exit(); }

    void namesAndFolders();
    void freeSpace();
    void folderChanges();
    void cleaning();
    void zeroingAllocator();
    void fourThreads();
    void saveFailureReasons();

private:
    QString Folder(int number) const
    {
        return "%1/BRELT.%2.%3"_s.arg(m_dir->path()).arg(QCoreApplication::applicationPid()).arg(number);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void tst_KCacheDiskManager::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    KCacheDiskManager::init(nullptr);
    KCacheDiskManager::ms_instance->setTemporaryFolders({m_dir->path()});
}

void tst_KCacheDiskManager::namesAndFolders()
{
    KCacheDiskManager &names = *KCacheDiskManager::ms_instance;
    QString first, name;
    for (int i = 0; i < 1025; ++i) {
        const Case named("i", i);
        name = names.getUniqueFilename(m_dir->path(), "BRELT"_s);
        if (i == 0)
            first = name;
        QCOMPARE(name, "%1/%2"_s.arg(Folder(i / 1024)).arg(i % 1024));
    }
    QCOMPARE(names.getTemporaryFoldersName(), QStringList(m_dir->path()));
    QCOMPARE(names.getSystemDrives(), QStringList("/"_s));
    QVERIFY(!QFile::exists(first));
    QCOMPARE(names.getLastFolder(), Folder(1));
    WriteFile(first);
    QVERIFY(names.removeTempFile(first));
    QVERIFY(!names.removeTempFile(first));
    WriteFile(first);
    KCacheDiskManager::exit(); // keeps files, and the folders that contain files
    QVERIFY(QFile::exists(first) && !QDir(Folder(1)).exists());
}

void tst_KCacheDiskManager::freeSpace()
{
    const struct {
        qint64 leftMib; // free space left after writing the file
        bool withReserve, handedOut;
    } rows[] = {{2048, true, true}, {500, false, true}, {50, false, false}, {-1, false, false}};
    unsigned long long freeBytes, totalBytes;
    KSystemInfo::DiskInfo(m_dir->path(), freeBytes, totalBytes);
    if (freeBytes < 3ull << 30)
        QSKIP("needs 3 GiB of free space for temporary files");
    KCacheDiskManager &names = *KCacheDiskManager::ms_instance;
    names.setTemporaryFolders({"/no/such/folder"_s, m_dir->path()});
    int handedOut = 0;
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        // Other programs also write to the disk, but not enough to change the results.
        const auto size = freeBytes - static_cast<unsigned long long>(row.leftMib * (1 << 20));
        QCOMPARE(!names.getTempFolder(size, kReserveLarge).isEmpty(), row.withReserve);
        QCOMPARE(!names.getTempFolder(size, kReserveSmall).isEmpty(), row.handedOut);
        const QString name = row.handedOut ? Folder(0) + "/%1"_s.arg(handedOut++) : QString();
        QCOMPARE(names.getTempFile(size), name);
    }
    QCOMPARE(names.getTempFolder(~0ull, kReserveLarge), QString()); // the sum would exceed 64 bits
}

void tst_KCacheDiskManager::folderChanges()
{
    KCacheDiskManager &names = *KCacheDiskManager::ms_instance;
    names.setTemporaryFolders({"/no/such/folder"_s});
    QCOMPARE(names.getTempFile(0), QString());
    const QString other = m_dir->filePath("other"_s);
    QVERIFY(QDir().mkdir(other));
    names.setPrefix("X"_s);
    names.setTemporaryFolders({m_dir->path()});
    names.getTempFile(0);
    names.setTemporaryFolders({other});
    // The subfolder in the other folder gets the same number, and the file count continues. The first folder with
    // enough space is used.
    names.setTemporaryFolders({other, m_dir->path()});
    QCOMPARE(names.getTempFile(0), "%1/X.%2.0/1"_s.arg(other).arg(QCoreApplication::applicationPid()));
    KCacheDiskManager::exit();
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), {"other"_s});
    QVERIFY(QDir(other).isEmpty());
}

void tst_KCacheDiskManager::cleaning()
{
    QDir dir(m_dir->path());
    for (const char *name : {"BRELT.999.3", "BRELT.998.0", "OTHER.1"}) {
        const Case named(name);
        QVERIFY(dir.mkdir(QString::fromLatin1(name)));
        WriteFile(dir.filePath(QString::fromLatin1(name) + "/7"_s));
    }
    QVERIFY(dir.mkpath("BRELT.998.0/inner"_s));
    QVERIFY(QFile::link(dir.filePath("OTHER.1"_s), dir.filePath("BRELT.link"_s)));
    KCacheDiskManager::ms_instance->setTemporaryFolders({"/no/such/folder"_s, m_dir->path()});
    KCacheDiskManager::ms_instance->cleanTempFiles();
    QVERIFY(!dir.exists("BRELT.999.3"_s));
    QVERIFY(!dir.exists("BRELT.998.0/7"_s));
    QVERIFY(dir.exists("BRELT.998.0/inner"_s)); // not ours: the folder stays
    QVERIFY(dir.exists("OTHER.1/7"_s));         // a linked folder isn't ours either
}

void tst_KCacheDiskManager::zeroingAllocator()
{
    ZeroingAllocator<quint64> allocator;
    for (int round = 0; round < 3; ++round) { // memory is reused with its old content
        const Case named("round", round);
        quint64 *const memory = allocator.allocate(64);
        const auto zeros = std::count(memory, memory + 64, 0u);
        std::fill_n(memory, 64, ~quint64(0));
        allocator.deallocate(memory, 64);
        QCOMPARE(zeros, 64);
    }
}

void tst_KCacheDiskManager::fourThreads()
{
    std::set<QString> got[4], all;
    InThreads(4, [&](int t) {
        for (int i = 0; i < 1000; ++i)
            got[t].insert(KCacheDiskManager::ms_instance->getUniqueFilename(m_dir->path(), "BRELT"_s));
    });
    for (const auto &mine : got)
        all.insert(mine.begin(), mine.end());
    QCOMPARE(all.size(), size_t(4000));
}

void tst_KCacheDiskManager::saveFailureReasons()
{
    const QString inside = m_dir->filePath("big.tiff"_s), absent = "/no/such/folder/x.tiff"_s;
    const QString kept = WriteFile(m_dir->filePath("kept.tiff"_s), "pixels"), none = "none"_s;
    const QString unwritable = "Cannot write into file \"%1\""_s;
    const struct {
        QString fileName;
        qint64 size;
        QString message;
    } rows[] = {
        {inside, kMoreThanAnyDisk, "Not enough free space on \"%1\" to finish operation"_s.arg(m_dir->path())},
        {absent, kMoreThanAnyDisk, unwritable.arg(absent)}, // space is not checked if the folder is missing
        {m_dir->path(), 0, unwritable.arg(m_dir->path())},
        {inside, 0, none},
        {kept, 0, none},
    };
    QCOMPARE(getFreeDiskSpace("/no/such/folder"_s), qint64(-1));
    for (const auto &row : rows) {
        const Case named(row.fileName, row.size);
        QCOMPARE(Thrown([&] { CheckAndThrowForDiskSpace(row.fileName, row.size, "place"_s); }), row.message);
    }
    QCOMPARE(ReadFile(inside), QByteArray()); // left behind empty
    QCOMPARE(Thrown([&] { CheckIfFileExists(absent, QString()); }), "\nFile \"%1\" is not found"_s.arg(absent));
    QCOMPARE(Thrown([&] { CheckIfFileExists(m_dir->path(), QString()); }), none);
    QCOMPARE(ReadFile(kept), QByteArray("pixels"));
}

QTEST_GUILESS_MAIN(tst_KCacheDiskManager)
#include "KCacheDiskManager_test.moc"
