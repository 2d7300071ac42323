// Facts about the machine: memory, programs, processors and the system.
#include "KSystemInfo.h"

#include "Case.h"
#include "KSystemInfo_p.h"
#include "RecordedMachine.h"
#include "TestFiles.h"
#include "cpuid2/cpu_topo.h"

#include <QTemporaryDir>
#include <QtTest>

#include <omp.h>
#include <sys/sysinfo.h>
#include <unistd.h>

namespace {

constexpr unsigned long long kMib = 1ull << 20, kGib = 1ull << 30;

int OpenFiles()
{
    return QDir("/proc/self/fd"_s).entryList(QDir::Files | QDir::System).size();
}

} // namespace

class tst_KSystemInfo : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cacheBytes();
    void memText();
    void freeMemory();
    void programsAndTheirPipes();
    void processors();
    void system();
};

void tst_KSystemInfo::cacheBytes()
{
    const std::pair<unsigned long long, double> rows[] = {
        {0, 0.128}, {100 * kMib, 0.128}, {6 * kGib, 3.96}, {64 * kGib, 60.0}, {6144 * kGib, 6140.0}};
    for (const auto &[freeBytes, gib] : rows) {
        const double got = double(CacheBytesAllowed(freeBytes)) / double(kGib);
        QVERIFY2(qAbs(got / gib - 1) < 1e-6, qPrintable(QString::number(got, 'g', 12))); // single precision
    }
}

void tst_KSystemInfo::memText()
{
    const std::pair<unsigned long long, const char *> rows[] = {{0, "0 Bytes"},     {1023, "1023 Bytes"},
                                                                {1024, "1 KB"},     {126418, "123 KB"}, // 123.455
                                                                {12902, "12.5 KB"},                     // 12.5996
                                                                {2 * kGib, "2 GB"}, {2000 * 1024 * kGib, "2000 TB"}};
    for (const auto &[bytes, text] : rows)
        QCOMPARE(KSystemInfo::memText(bytes), QString::fromLatin1(text));
}

void tst_KSystemInfo::freeMemory()
{
    const std::pair<QByteArray, unsigned long long> rows[] = {
        {"MemTotal:  900 kB\nMemFree:    100 kB\nMemAvailable: 70 kB\nBuffers:  20 kB\nCached:  3 kB\n"
         "SwapCached:  5000 kB\n",
         123},
        {"", 0},
        {"MemFree: 8589934592 kB", 8589934592}, // more than 32 bits, last line without a line ending
        {QByteArray(500, 'x') + "\nCached: 7 kB\n", 7}};
    QTemporaryDir dir;
    for (const auto &[content, kilobytes] : rows) {
        const Case named(content, kilobytes);
        const QString name = WriteFile(dir.filePath("meminfo"_s), content);
        QCOMPARE(FreeBytesReported(name.toLocal8Bit().constData()), kilobytes * 1024);
    }
    QCOMPARE(FreeBytesReported("/no/such/proc/meminfo"), 0ull);
}

void tst_KSystemInfo::programsAndTheirPipes()
{
    const int before = OpenFiles();
    // A program is runnable whatever its exit status.
    for (const char *program : {"true", "false", "no-such-program-here", "/etc/passwd"})
        QVERIFY2((IsRunnable(program) == Runnable::Yes) == (qstrlen(program) < 6), program);
    QVERIFY(KSystemInfo::freePhysicalMemory() <= KSystemInfo::physicalMemory());
    QCOMPARE(OpenFiles(), before);
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/no/such/folder");
    QString flavors = KSystemInfo::osDownloadVersion();
    const QTemporaryDir folder;
    QFile::link("/bin/true"_s, folder.filePath("dpkg"_s));
    qputenv("PATH", folder.path().toLocal8Bit());
    flavors += KSystemInfo::osDownloadVersion();
    qputenv("PATH", path);
    QCOMPARE(flavors, "linux64tarlinux64deb"_s);
    QVERIFY(KSystemInfo::maxCacheSize() <= CacheBytesAllowed(KSystemInfo::physicalMemory()));
    QVERIFY(KSystemInfo::maxCacheSize() >= CacheBytesAllowed(0));
}

void tst_KSystemInfo::processors()
{
    const struct {
        std::vector<unsigned> apicIds;
        int forbidden;
        QVector<int> virtualPhysicalThreads;
    } rows[] = {{{0, 1, 2, 3, 4, 5}, -1, {6, 3, 2}},
                {{0, 2, 4}, -1, {3, 3, 1}},
                {{0, 1}, 1, {omp_get_max_threads(), omp_get_max_threads(), 1}}}; // restricted: uses OpenMP's count
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        RecordedMachine machine(RecordedMachine::Intel, 0xB, row.apicIds);
        machine.PerPackage(8).Levels({{1, 1, 2}, {2, 3, 8}});
        machine.forbiddenCpu = row.forbidden;
        SetCpuMachine(&machine);
        KSystemInfo::init(nullptr);
        const QVector<int> got = {KSystemInfo::cpuVirtualCount(), KSystemInfo::cpuPhysicalCount(),
                                  KSystemInfo::cpuHyperThreadingCount()};
        KSystemInfo::exit();
        SetCpuMachine(nullptr);
        QCOMPARE(got, row.virtualPhysicalThreads);
    }
}

void tst_KSystemInfo::system()
{
    QCOMPARE(InstalledBytes(128 * kMib), 128 * kMib);
    QCOMPARE(InstalledBytes(128 * kMib + 1), 256 * kMib);
    QCOMPARE(KSystemInfo::osDescription(), "Linux_%1_%2"_s.arg(QSysInfo::kernelVersion(), QSysInfo::machineHostName()));
    const int most = KSystemInfo::MaxOpenFiles();
    QCOMPARE(KSystemInfo::SetMaxOpenFiles(most - 1), 0);
    QCOMPARE(qlonglong(sysconf(_SC_OPEN_MAX)), qlonglong(most - 1));
    QCOMPARE(KSystemInfo::MaxOpenFiles(), most - 1);
    KSystemInfo::SetMaxOpenFiles(most);
    QCOMPARE(KSystemInfo::cpuDescription(), QString::fromLatin1(GetCpuDescription()));
    QCOMPARE(KSystemInfo::cpuFrequency(), 0.0);
    struct sysinfo memory;
    QVERIFY(sysinfo(&memory) == 0
            && KSystemInfo::physicalMemory() == InstalledBytes(memory.totalram * memory.mem_unit));
    unsigned long long freeBytes = 1, totalBytes = 1;
    KSystemInfo::DiskInfo("/no/such/folder"_s, freeBytes, totalBytes);
    QCOMPARE(freeBytes + totalBytes, 0ull);
    KSystemInfo::DiskInfo("/"_s, freeBytes, totalBytes);
    QVERIFY(freeBytes <= totalBytes && totalBytes > 0);
    int major, minor, patch;
    KSystemInfo::applicationVersion(major, minor, patch);
    QCOMPARE(QVector<int>({major, minor, patch}), QVector<int>({1, 4, 0}));
}

QTEST_GUILESS_MAIN(tst_KSystemInfo)
#include "KSystemInfo_test.moc"
