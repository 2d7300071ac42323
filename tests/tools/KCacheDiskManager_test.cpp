#include "KCacheDiskManager.h"

#include "KSystemInfo.h"

#include <QTemporaryDir>
#include <QtTest>

#include <set>
#include <thread>

namespace {

constexpr unsigned long long kReserveSmall = 0x6400000, kReserveLarge = 0x40000000;

void Touch(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("can't make %s", qPrintable(name));
}

} // namespace

class tst_KCacheDiskManager : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { KCacheDiskManager::exit(); }

    void namesAndFolders();
    void room_data();
    void room();
    void folderChanges();
    void exitKeepsFiles();
    void cleaning();
    void memoryOfZeros();
    void fourThreads();

private:
    QString Folder(int number) const
    {
        return QStringLiteral("%1/BRELT.%2.%3").arg(m_dir->path()).arg(QCoreApplication::applicationPid()).arg(number);
    }
    /// The 1,024 names of folder 0 but for the last.
    void UseUp(int names)
    {
        for (int i = 0; i < names; ++i)
            KCacheDiskManager::ms_instance->getUniqueFilename(m_dir->path(), QStringLiteral("BRELT"));
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
    QCOMPARE(names.getLastFolder(), QString());
    const QString first = names.getUniqueFilename(m_dir->path(), QStringLiteral("BRELT"));
    QCOMPARE(first, Folder(0) + QStringLiteral("/0"));
    QVERIFY(QDir(Folder(0)).exists());
    QVERIFY(!QFile::exists(first));
    QCOMPARE(names.getLastFolder(), Folder(0));
    UseUp(1022);
    QCOMPARE(names.getUniqueFilename(m_dir->path(), QStringLiteral("BRELT")), Folder(0) + QStringLiteral("/1023"));
    QVERIFY(!QDir(Folder(1)).exists());
    QCOMPARE(names.getUniqueFilename(m_dir->path(), QStringLiteral("BRELT")), Folder(1) + QStringLiteral("/0"));
    QCOMPARE(names.getLastFolder(), Folder(1));
    Touch(first);
    QVERIFY(names.removeTempFile(first));
    QVERIFY(!names.removeTempFile(first));
}

void tst_KCacheDiskManager::room_data()
{
    QTest::addColumn<qint64>("left"); // bytes that stay free on the disk beside the file
    QTest::addColumn<bool>("withReserve");
    QTest::addColumn<bool>("handedOut");
    const qint64 mib = 1 << 20;
    QTest::newRow("2 GiB left") << 2048 * mib << true << true;
    QTest::newRow("500 MiB left: on the second pass") << 500 * mib << false << true;
    QTest::newRow("50 MiB left") << 50 * mib << false << false;
    QTest::newRow("file larger than what is free") << -mib << false << false;
}

void tst_KCacheDiskManager::room()
{
    QFETCH(qint64, left);
    QFETCH(bool, withReserve);
    QFETCH(bool, handedOut);
    unsigned long long freeBytes, totalBytes;
    KSystemInfo::DiskInfo(m_dir->path(), freeBytes, totalBytes);
    if (freeBytes < 3ull << 30)
        QSKIP("needs 3 GiB free where temporary files go");
    const auto size = freeBytes - static_cast<unsigned long long>(left); // other programs write too, but not so much
    KCacheDiskManager &names = *KCacheDiskManager::ms_instance;
    names.setTemporaryFolders({QStringLiteral("/no/such/folder"), m_dir->path()});
    QCOMPARE(!names.getTempFolder(size, kReserveLarge).isEmpty(), withReserve);
    QCOMPARE(!names.getTempFolder(size, kReserveSmall).isEmpty(), handedOut);
    QCOMPARE(names.getTempFile(size), handedOut ? Folder(0) + QStringLiteral("/0") : QString());
    QCOMPARE(names.getTempFolder(~0ull, kReserveLarge), QString()); // the sum would pass 64 bits
}

void tst_KCacheDiskManager::folderChanges()
{
    KCacheDiskManager &names = *KCacheDiskManager::ms_instance;
    QVERIFY(names.setTemporaryFolders({QStringLiteral("/no/such/folder")}));
    QCOMPARE(names.getTempFile(0), QString());
    const QString other = m_dir->filePath(QStringLiteral("other"));
    QVERIFY(QDir().mkdir(other));
    names.setPrefix(QStringLiteral("X"));
    QVERIFY(names.setTemporaryFolders({m_dir->path()}));
    names.getTempFile(0);
    names.setTemporaryFolders({other});
    QCOMPARE(names.getTemporaryFoldersName(), QStringList{other});
    // The count goes on in the other folder, under the same number.
    QCOMPARE(names.getTempFile(0), QStringLiteral("%1/X.%2.0/1").arg(other).arg(QCoreApplication::applicationPid()));
    KCacheDiskManager::exit();
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("other")});
    QVERIFY(QDir(other).isEmpty());
}

void tst_KCacheDiskManager::exitKeepsFiles()
{
    Touch(KCacheDiskManager::ms_instance->getUniqueFilename(m_dir->path(), QStringLiteral("BRELT")));
    UseUp(1024);
    KCacheDiskManager::exit();
    QVERIFY(QFile::exists(Folder(0) + QStringLiteral("/0")));
    QVERIFY(!QDir(Folder(1)).exists());
}

void tst_KCacheDiskManager::cleaning()
{
    QDir dir(m_dir->path());
    for (const char *name : {"BRELT.999.3", "BRELT.998.0", "OTHER.1"}) {
        QVERIFY(dir.mkdir(QString::fromLatin1(name)));
        Touch(dir.filePath(QString::fromLatin1(name) + QStringLiteral("/7")));
    }
    QVERIFY(dir.mkpath(QStringLiteral("BRELT.998.0/inner")));
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("OTHER.1")), dir.filePath(QStringLiteral("BRELT.link"))));
    KCacheDiskManager::ms_instance->setTemporaryFolders({QStringLiteral("/no/such/folder"), m_dir->path()});
    KCacheDiskManager::ms_instance->cleanTempFiles();
    QVERIFY(!dir.exists(QStringLiteral("BRELT.999.3")));
    QVERIFY(!dir.exists(QStringLiteral("BRELT.998.0/7")));
    QVERIFY(dir.exists(QStringLiteral("BRELT.998.0/inner"))); // not ours: the folder stays
    QVERIFY(dir.exists(QStringLiteral("OTHER.1/7")));         // a link to it doesn't make it ours either
}

void tst_KCacheDiskManager::memoryOfZeros()
{
    ZeroingAllocator<quint64> allocator;
    for (int round = 0; round < 3; ++round) { // memory comes back as it was left
        quint64 *const memory = allocator.allocate(64);
        const bool zeros = std::all_of(memory, memory + 64, [](quint64 word) { return word == 0; });
        std::fill_n(memory, 64, ~quint64(0));
        allocator.deallocate(memory, 64);
        QVERIFY(zeros);
    }
}

void tst_KCacheDiskManager::fourThreads()
{
    std::vector<std::vector<QString>> got(4);
    std::vector<std::thread> threads;
    for (auto &mine : got) {
        threads.emplace_back([&mine, this] {
            for (int i = 0; i < 1000; ++i)
                mine.push_back(
                    KCacheDiskManager::ms_instance->getUniqueFilename(m_dir->path(), QStringLiteral("BRELT")));
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    std::set<QString> all;
    for (const auto &mine : got)
        all.insert(mine.begin(), mine.end());
    QCOMPARE(all.size(), size_t(4000));
    for (int folder = 0; folder < 4; ++folder)
        QVERIFY(QDir(Folder(folder)).exists());
    QVERIFY(!QDir(Folder(4)).exists());
    KCacheDiskManager::exit();
    QVERIFY(QDir(m_dir->path()).isEmpty());
}

QTEST_GUILESS_MAIN(tst_KCacheDiskManager)
#include "KCacheDiskManager_test.moc"
