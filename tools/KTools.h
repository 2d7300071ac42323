// Starts and stops the tool kernel.
#pragma once

class KAnalyticsManager;
class KCacheDiskManager;
class KLog;
class KPoolMemManager;
class KSystemInfo;

/// Objects that one copy of the tool kernel shares with another. KTools::init defines who owns them.
struct KToolsInstances {
    KLog *log;
    KSystemInfo *systemInfo;
    KPoolMemManager *poolMem;
    KCacheDiskManager *cacheDisk;
    void **reserved; // passed on unchanged; in a standalone kernel, points to a null pointer
    int *numThreads;
    int *numCores;
    KAnalyticsManager *analytics;
};

class KTools {
public:
    /// Starts the kernel; main thread only. With a host's @p instances, uses its objects, which the host still owns.
    /// With null, creates the objects, sets up OpenMP for the process, and counts the processors; later calls do
    /// nothing until exit(). The application object must exist, with organization and application names, because these
    /// determine the analytics folder.
    static void init(KToolsInstances *instances);
    /// Reverts init(nullptr); does nothing after init with a host's objects.
    static void exit();

    /// The objects that init() created or adopted, for sharing with another copy of the kernel.
    static KToolsInstances ms_instances;
};
