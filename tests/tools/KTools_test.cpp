// Starting and stopping the tool kernel: alone, with a host's objects, in two processes, and without writable folders.
#include "KTools.h"

#include "Case.h"
#include "KCacheDiskManager.h"
#include "KLog.h"
#include "KOmp.h"
#include "KPoolMemManager.h"
#include "KSystemInfo.h"
#include "OwnFolders.h"
#include "analytics/KAnalyticsDb.h"
#include "analytics/KAnalyticsManager.h"

#include <QProcess>
#include <QtTest>

#include <sched.h>

#include <iostream>
#include <set>

namespace {

const QString kApplication = QStringLiteral("KTools_test");
constexpr int kEvents = 40;

/// Returns the number of processors on which the calling thread may run.
int Allowed()
{
    cpu_set_t set;
    return sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : -1;
}

/// Returns whether all threads of a parallel region ran on different processors at the same time. @p allowed receives
/// the number of processors on which each thread may run.
bool RunApart(std::vector<int> *allowed)
{
    std::vector<int> cpus(size_t(komp_num_threads), -1);
    bool apart = false;
#pragma omp parallel num_threads(komp_num_threads)
    for (int round = 0; round < 20000; ++round) {
        const auto me = size_t(komp_get_thread_num());
        (*allowed)[me] = Allowed();
        cpus[me] = sched_getcpu();
#pragma omp barrier
#pragma omp single
        apart = apart || std::set<int>(cpus.begin(), cpus.end()).size() == cpus.size();
        if (apart)
            break; // all threads agree, because `single` ends with a barrier
    }
    return apart;
}

/// Acts as one of several applications with the same data folder: starts, waits for a line, sends events, prints the
/// user identifier, and stops.
int RunAsApplication()
{
    KTools::init(nullptr);
    std::cout << "started" << std::endl;
    std::string go;
    std::getline(std::cin, go);
    KAnalyticsManager *analytics = KAnalyticsManager::instance();
    for (int i = 0; i < kEvents; ++i)
        analytics->sendEventAction(QStringLiteral("c"), QString::fromStdString(go), i);
    std::cout << qPrintable(analytics->userId()) << std::endl;
    KTools::exit();
    return 0;
}

struct Application {
    Application() { process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--application")}); }
    ~Application()
    {
        process.kill();
        process.waitForFinished();
    }

    QString ReadLine()
    {
        while (!process.canReadLine() && process.waitForReadyRead()) { }
        return QString::fromUtf8(process.readLine()).trimmed();
    }

    QProcess process;
};

} // namespace

class tst_KTools : public QObject {
    Q_OBJECT
public:
    explicit tst_KTools(const OwnFolders *folders) : m_folders(folders) { }

private Q_SLOTS:
    void aloneWithThreadsOnDistinctProcessors();
    void withHostInstances();
    void twoProcesses();
    void unwritableFolders();

private:
    const OwnFolders *m_folders;
};

void tst_KTools::aloneWithThreadsOnDistinctProcessors()
{
    const int before = Allowed();
    KTools::init(nullptr);
    const KToolsInstances first = KTools::ms_instances;
    QVERIFY(first.log && first.systemInfo && first.poolMem && first.cacheDisk && first.analytics);
    QCOMPARE(first.numThreads, &komp_num_threads);
    QCOMPARE(komp_num_threads, KSystemInfo::cpuPhysicalCount() * KSystemInfo::cpuHyperThreadingCount());
    QCOMPARE(*first.numCores, KSystemInfo::cpuPhysicalCount());
    QVERIFY(komp_num_cores <= komp_num_threads && komp_num_threads <= before);
    QCOMPARE(Allowed(), before); // this thread isn't pinned
    omp_sched_t schedule;
    int chunk;
    omp_get_schedule(&schedule, &chunk);
    QCOMPARE(int(schedule), int(omp_sched_guided));
    QCOMPARE(chunk, 10);

    KOmpMutex mutex;
    {
        const KOmpMutexLocker locker(mutex.Lock());
        QVERIFY(!omp_test_lock(mutex.Lock()));
    }
    QVERIFY(omp_test_lock(mutex.Lock()));

    KTools::init(nullptr);
    QCOMPARE(KTools::ms_instances.log, first.log);
    std::vector<int> allowed(size_t(komp_num_threads), 0);
    const bool apart = RunApart(&allowed);
    KTools::exit();
    QCOMPARE(KLog::ms_instance, nullptr);
    QVERIFY(!KTools::ms_instances.log && !KTools::ms_instances.reserved && !KTools::ms_instances.analytics);
    QCOMPARE(allowed, std::vector<int>(allowed.size(), before));
    QVERIFY(apart);
}

void tst_KTools::withHostInstances()
{
    int threads = 7, cores = 5;
    void *word = nullptr;
    KLog log;
    KPoolMemManager pool;
    auto *analytics = new KAnalyticsManager(/*useSettingsUserId=*/false, nullptr, /*useDb=*/false);
    KToolsInstances host = {&log, new KSystemInfo, &pool, /*cacheDisk=*/nullptr, &word, &threads, &cores, analytics};
    KTools::init(&host);
    KTools::exit(); // does nothing: the host owns the objects
    const KToolsInstances &ours = KTools::ms_instances;
    QVERIFY(ours.log == &log && ours.systemInfo == host.systemInfo && ours.poolMem == &pool && ours.reserved == &word
            && ours.analytics == analytics && KLog::ms_instance == &log);
    QVERIFY(ours.cacheDisk); // missing in the host, created here
    QCOMPARE(komp_num_threads * 10 + komp_num_cores, 75);
    threads = 3;
    KTools::init(&host); // reads the host's values again
    QCOMPARE(komp_num_threads, 3);

    KAnalyticsManager::killInstance();
    KCacheDiskManager::exit();
    KSystemInfo::exit();
    KLog::ms_instance = nullptr;
    KPoolMemManager::ms_instance = nullptr;
}

void tst_KTools::twoProcesses()
{
    QFile::remove(m_folders->Store(kApplication));
    Application first, second;
    QCOMPARE(first.ReadLine(), QStringLiteral("started"));
    QCOMPARE(second.ReadLine(), QStringLiteral("started"));
    first.process.write("first\n");
    second.process.write("second\n");
    for (Application *application : {&first, &second}) {
        const Case named("the second", application == &second);
        QVERIFY(!application->ReadLine().isEmpty());
        QVERIFY(application->process.waitForFinished()); // waiting for the lock at each event would take minutes
        QCOMPARE(application->process.exitCode(), 0);
        QCOMPARE(application->process.readAllStandardError(), QByteArray());
    }
    KAnalyticsDb store(QStringLiteral("look"), QStringLiteral("QSQLITE"), nullptr);
    store.setFilePath(m_folders->Store(kApplication));
    QSqlQuery rows = store.executeQuery(
        QStringLiteral("SELECT SUM(value LIKE '%\"first\"%'), SUM(value LIKE '%\"second\"%') FROM events"));
    QVERIFY(rows.next());
    // The process that held the lock stored all its events.
    QVERIFY(qMax(rows.value(0).toInt(), rows.value(1).toInt()) == kEvents);
}

void tst_KTools::unwritableFolders()
{
    QFile inTheWay(m_folders->Data() + QStringLiteral(".file"));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    const QByteArray data = qgetenv("XDG_DATA_HOME"), config = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_DATA_HOME", QFile::encodeName(inTheWay.fileName()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(inTheWay.fileName()));
    Application application;
    qputenv("XDG_DATA_HOME", data);
    qputenv("XDG_CONFIG_HOME", config);
    QCOMPARE(application.ReadLine(), QStringLiteral("started"));
    application.process.write("go\n");
    QVERIFY(!application.ReadLine().isEmpty()); // an identifier for this run
    QVERIFY(application.process.waitForFinished());
    QCOMPARE(application.process.exitCode(), 0);
    const QByteArray message = application.process.readAllStandardError();
    QCOMPARE(message.count("[openDb]"), 1); // once, not with every event
    QCOMPARE(message.count('\n'), 1);
}

int main(int argc, char **argv)
{
    if (argc == 2 && qstrcmp(argv[1], "--application") == 0) {
        QCoreApplication application(argc, argv);
        QCoreApplication::setApplicationName(kApplication);
        return RunAsApplication();
    }
    const OwnFolders folders;
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(kApplication);
    tst_KTools test(&folders);
    return QTest::qExec(&test, argc, argv);
}

#include "KTools_test.moc"
