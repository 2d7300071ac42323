// Start and stop of the tool kernel.
#pragma once

class KAnalyticsManager;
class KCacheDiskManager;
class KLog;
class KPoolMemManager;
class KSystemInfo;

/// What one copy of the tool kernel shares with another. KTools::init says who owns the objects.
struct KToolsInstances {
    KLog *log;
    KSystemInfo *systemInfo;
    KPoolMemManager *poolMem;
    KCacheDiskManager *cacheDisk;
    void **reserved; // passed on; a zeroed word in a kernel that stands alone
    int *numThreads;
    int *numCores;
    KAnalyticsManager *analytics;
};

class KTools {
public:
    /// Main thread, once. With a host's @p instances takes its objects, which stay the host's. Alone, for null, makes
    /// its own, sets up OpenMP for the process, and counts the processors; a second time does nothing. The application
    /// object has to stand, and its names, which analytics' data folder is called by.
    static void init(KToolsInstances *instances);
    /// Ends what init(nullptr) began; does nothing after init with a host's objects.
    static void exit();

    /// What init() has made or taken, to be handed on.
    static KToolsInstances ms_instances;
};
