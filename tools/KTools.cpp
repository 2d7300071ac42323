#include "KTools.h"

#include "KCacheDiskManager.h"
#include "KChronometer.h"
#include "KLog.h"
#include "KOmp.h"
#include "KPoolMemManager.h"
#include "KSystemInfo.h"
#include "analytics/KAnalyticsManager.h"
#include "cpuid2/cpu_topo.h"

#include <system_error>
#include <thread>

extern "C" void kmp_set_blocktime(int milliseconds) __attribute__((weak)); // some OpenMP runtimes lack it

namespace {

bool s_standsAlone = false; // this copy of the kernel created its own objects

/// Counts the processors. Counting pins the calling thread permanently, and threads that it starts, including OpenMP's
/// workers, inherit the affinity, so the counting runs on a short-lived thread. Later queries use its result. If no
/// thread can start, OpenMP's counts are used.
void CountProcessors()
{
    try {
        std::thread(InitCpuTopology).join();
    } catch (const std::system_error &) {
        komp_num_cores = komp_num_threads = omp_get_max_threads();
        return;
    }
    komp_num_cores = KSystemInfo::cpuPhysicalCount();
    komp_num_threads = komp_num_cores * KSystemInfo::cpuHyperThreadingCount();
}

void SetUpOpenMp()
{
    if (kmp_set_blocktime)
        kmp_set_blocktime(0); // workers sleep after a region; spinning would slow the host's threads
    omp_set_schedule(omp_sched_guided, 10);
}

void TakeShared(const KToolsInstances &shared)
{
    KLog::init(shared.log);
    KSystemInfo::init(shared.systemInfo);
    if (shared.numThreads && shared.numCores) {
        komp_num_threads = *shared.numThreads;
        komp_num_cores = *shared.numCores;
    }
    KPoolMemManager::init(shared.poolMem);
    KCacheDiskManager::init(shared.cacheDisk);
    KTools::ms_instances.reserved = shared.reserved;
    KAnalyticsManager::init(shared.analytics);
}

void MakeOwn()
{
    KLog::init(nullptr);
    KSystemInfo::init(nullptr);
    SetUpOpenMp();
    CountProcessors();
    KPoolMemManager::init(nullptr);
    KCacheDiskManager::init(nullptr);
    KTools::ms_instances.reserved = new void *(nullptr);
    KAnalyticsManager::init(nullptr);
    s_standsAlone = true;
}

} // namespace

KChronometer gChrono; // in this file, so that every program that uses the kernel links it
KToolsInstances KTools::ms_instances = {};

void KTools::init(KToolsInstances *instances)
{
    if (s_standsAlone)
        return;
    if (instances)
        TakeShared(*instances);
    else
        MakeOwn();
    KPoolMemManager::init(nullptr); // these two calls create an object only if there is none
    KCacheDiskManager::init(nullptr);
    ms_instances.log = KLog::ms_instance;
    ms_instances.systemInfo = KSystemInfo::m_instance;
    ms_instances.poolMem = KPoolMemManager::ms_instance;
    ms_instances.cacheDisk = KCacheDiskManager::ms_instance;
    ms_instances.numThreads = &komp_num_threads;
    ms_instances.numCores = &komp_num_cores;
    ms_instances.analytics = KAnalyticsManager::instance();
}

void KTools::exit()
{
    if (!s_standsAlone)
        return;
    KAnalyticsManager::killInstance();
    KPoolMemManager::exit();
    KCacheDiskManager::exit();
    KSystemInfo::exit();
    KLog::exit();
    delete ms_instances.reserved;
    ms_instances = {};
    s_standsAlone = false;
}
