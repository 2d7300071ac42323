#include "KSystemInfo.h"

#include "KSystemInfo_p.h"
#include "RecordedMachine.h"

#include <QTemporaryDir>
#include <QtTest>

#include <omp.h>
#include <sys/utsname.h>

namespace {

constexpr unsigned long long kMib = 1ull << 20, kGib = 1ull << 30;

int OpenFiles()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
}

} // namespace

class tst_KSystemInfo : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cacheBytes_data();
    void cacheBytes();
    void memText_data();
    void memText();
    void freeMemory_data();
    void freeMemory();
    void freeMemoryKeepsNoFile();
    void installedMemory();
    void runnable_data();
    void runnable();
    void flavourWithoutDpkg();
    void processors_data();
    void processors();
    void system();

private:
    QTemporaryDir m_dir;
};

void tst_KSystemInfo::cacheBytes_data()
{
    QTest::addColumn<unsigned long long>("freeBytes");
    QTest::addColumn<double>("gib");
    QTest::newRow("nothing known") << 0ull << 0.128;
    QTest::newRow("100 MiB: the least") << 100 * kMib << 0.128;
    QTest::newRow("6 GiB: two thirds") << 6 * kGib << 3.96;
    QTest::newRow("64 GiB: all but four") << 64 * kGib << 60.0;
    QTest::newRow("6 TiB") << 6144 * kGib << 6140.0;
}

void tst_KSystemInfo::cacheBytes()
{
    QFETCH(unsigned long long, freeBytes);
    QFETCH(double, gib);
    const double got = double(CacheBytesAllowed(freeBytes)) / double(kGib);
    QVERIFY2(qAbs(got / gib - 1) < 1e-6, qPrintable(QString::number(got, 'g', 12))); // single precision
}

void tst_KSystemInfo::memText_data()
{
    QTest::addColumn<unsigned long long>("bytes");
    QTest::addColumn<QString>("text");
    const auto row = [](unsigned long long bytes, const char *text) {
        QTest::newRow(text) << bytes << QString::fromLatin1(text);
    };
    row(0, "0 Bytes");
    row(1000, "1000 Bytes");
    row(1023, "1023 Bytes");
    row(1024, "1 KB");
    row(1536, "1.5 KB");
    row(126418, "123 KB"); // 123.455
    row(12902, "12.5 KB"); // 12.5996
    row(5 * kMib / 4, "1.25 MB");
    row(2 * kGib, "2 GB");
    row(2000 * 1024 * kGib, "2000 TB");
}

void tst_KSystemInfo::memText()
{
    QFETCH(unsigned long long, bytes);
    QTEST(KSystemInfo::memText(bytes), "text");
}

void tst_KSystemInfo::freeMemory_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<unsigned long long>("kilobytes");
    QTest::newRow("free, buffers and cached; not what begins or ends alike")
        << QByteArray("MemTotal:  900 kB\nMemFree:    100 kB\nMemAvailable: 70 kB\nBuffers:  20 kB\nCached:  3 kB\n"
                      "SwapCached:  5000 kB\n")
        << 123ull;
    QTest::newRow("empty") << QByteArray() << 0ull;
    QTest::newRow("more than 32 bits, last line without its end")
        << QByteArray("MemFree: 8589934592 kB") << 8589934592ull;
    QTest::newRow("line longer than the buffer") << QByteArray(500, 'x') + "\nCached: 7 kB\n" << 7ull;
}

void tst_KSystemInfo::freeMemory()
{
    QFETCH(QByteArray, content);
    QFETCH(unsigned long long, kilobytes);
    QFile file(m_dir.filePath(QStringLiteral("meminfo")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    QCOMPARE(FreeBytesTold(file.fileName().toLocal8Bit().constData()), kilobytes * 1024);
}

void tst_KSystemInfo::freeMemoryKeepsNoFile()
{
    QCOMPARE(FreeBytesTold("/no/such/proc/meminfo"), 0ull);
    const int before = OpenFiles();
    for (int i = 0; i < 10; ++i)
        QVERIFY(KSystemInfo::freePhysicalMemory() <= KSystemInfo::physicalMemory());
    QCOMPARE(OpenFiles(), before);
}

void tst_KSystemInfo::installedMemory()
{
    QCOMPARE(InstalledBytes(128 * kMib), 128 * kMib);
    QCOMPARE(InstalledBytes(128 * kMib + 1), 256 * kMib);
    QCOMPARE(KSystemInfo::physicalMemory() % (128 * kMib), 0ull);
    QVERIFY(KSystemInfo::physicalMemory() > 0);
}

void tst_KSystemInfo::runnable_data()
{
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<bool>("expected");
    QTest::newRow("there") << QByteArray("true") << true;
    QTest::newRow("its exit status doesn't count") << QByteArray("false") << true;
    QTest::newRow("missing") << QByteArray("no-such-program-here") << false;
    QTest::newRow("not executable") << QByteArray("/etc/passwd") << false;
}

void tst_KSystemInfo::runnable()
{
    QFETCH(QByteArray, program);
    QFETCH(bool, expected);
    const int before = OpenFiles();
    QCOMPARE(IsRunnable(program.constData()) == Runnable::Yes, expected);
    QCOMPARE(OpenFiles(), before);
}

void tst_KSystemInfo::flavourWithoutDpkg()
{
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(m_dir.path()));
    const QString flavour = KSystemInfo::osDownloadVersion();
    qputenv("PATH", path);
    QCOMPARE(flavour, QStringLiteral("linux64tar"));
}

void tst_KSystemInfo::processors_data()
{
    QTest::addColumn<QVector<unsigned>>("apicIds");
    QTest::addColumn<int>("forbidden");
    QTest::addColumn<QVector<int>>("virtualPhysicalThreads");
    const int openMp = omp_get_max_threads();
    QTest::newRow("3 cores with 2 threads") << QVector<unsigned>{0, 1, 2, 3, 4, 5} << -1 << QVector<int>{6, 3, 2};
    QTest::newRow("3 cores") << QVector<unsigned>{0, 2, 4} << -1 << QVector<int>{3, 3, 1};
    QTest::newRow("restricted: as many as OpenMP says")
        << QVector<unsigned>{0, 1} << 1 << QVector<int>{openMp, openMp, 1};
}

void tst_KSystemInfo::processors()
{
    QFETCH(QVector<unsigned>, apicIds);
    QFETCH(int, forbidden);
    QFETCH(QVector<int>, virtualPhysicalThreads);
    RecordedMachine machine(RecordedMachine::Intel, 0xB, {apicIds.begin(), apicIds.end()});
    machine.PerPackage(8).Levels({{1, 1, 2}, {2, 3, 8}});
    machine.forbiddenCpu = forbidden;
    SetCpuMachine(&machine);
    KSystemInfo::init(nullptr);
    const QVector<int> got = {KSystemInfo::cpuVirtualCount(), KSystemInfo::cpuPhysicalCount(),
                              KSystemInfo::cpuHyperThreadingCount()};
    KSystemInfo::exit();
    QVERIFY(KSystemInfo::cpuVirtualCount() >= 1); // OpenMP's word again
    SetCpuMachine(nullptr);
    QCOMPARE(got, virtualPhysicalThreads);
}

void tst_KSystemInfo::system()
{
    struct utsname names;
    QCOMPARE(uname(&names), 0);
    QCOMPARE(KSystemInfo::osDescription().toLocal8Bit(),
             QByteArray("Linux_").append(names.release).append("_").append(names.nodename));
    int major, minor, patch;
    KSystemInfo::applicationVersion(major, minor, patch);
    QCOMPARE(QVector<int>({major, minor, patch}), QVector<int>({1, 4, 0}));
    QVERIFY(!KSystemInfo::cpuDescription().isEmpty());
}

QTEST_GUILESS_MAIN(tst_KSystemInfo)
#include "KSystemInfo_test.moc"
