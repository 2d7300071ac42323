// Facts about the machine: memory, disk, processors, system.
#pragma once

#include <QString>
#include <QStringList>

struct CpuTopology;

/// Static queries, callable on any thread. An unknown value is returned as 0, -1 or an empty string. The object only
/// stores the processor topology, which processor queries use between init() and exit() (called by KTools::init and
/// KTools::exit). Otherwise they use OpenMP's counts.
class KSystemInfo {
public:
    KSystemInfo();
    ~KSystemInfo();
    KSystemInfo(const KSystemInfo &) = delete;
    KSystemInfo &operator=(const KSystemInfo &) = delete;

    /// Shares the topology of @p instance; null creates an object. Does nothing if there already is one.
    static void init(KSystemInfo *instance);
    /// Deletes the object, even a shared one.
    static void exit();

    // --- Memory, in bytes ---

    /// Returns how much an image cache may use now: two thirds of the free memory or all but 4 GiB of it, whichever is
    /// more, and at least 0.128 GiB.
    static unsigned long long maxCacheSize();
    /// Returns the size of the installed memory modules.
    static unsigned long long physicalMemory();
    /// Returns unused memory plus the system's caches; 0 without /proc.
    static unsigned long long freePhysicalMemory();
    static unsigned long long virtualMemory() { return 0; }
    static unsigned long long freeVirtualMemory() { return freePhysicalMemory(); }
    static unsigned long long freeAddressSpace() { return freePhysicalMemory(); }
    /// Formats a size like "1.5 KB": a number of at most four characters and a translated unit.
    static QString memText(unsigned long long bytes);

    // --- Disk and files ---

    /// Returns the bytes available to an unprivileged user on the file system of @p path, and its total size. Both are
    /// 0 for a path that doesn't exist.
    static void DiskInfo(const QString &path, unsigned long long &freeBytes, unsigned long long &totalBytes);
    /// Returns the soft limit on open files; -1 if it is unknown.
    static int MaxOpenFiles();
    /// Sets the soft limit. Returns 0, or -1 if the system refuses.
    static int SetMaxOpenFiles(int count);

    // --- System and program ---

    /// Returns system, release and network name, such as "Linux_6.1.0_workstation".
    static QString osDescription();
    /// Returns "linux64deb" if dpkg can be run, "linux64tar" if not, or an empty string if that is unknown. Side
    /// effect: dpkg prints its version to our standard output.
    static QString osDownloadVersion();
    static void applicationVersion(int &major, int &minor, int &patch);
    /// Returns an empty list on Linux.
    static QStringList macAddresses() { return {}; }
    static Qt::KeyboardModifiers KeyboardModifiers();

    // --- Processors ---

    /// Returns the number of logical processors, at least 1. The first call to any of these three functions pins the
    /// calling thread for good (see cpuid2/cpu_topo.h) unless KTools::init has counted the processors.
    static int cpuVirtualCount();
    /// Returns the number of cores, at least 1.
    static int cpuPhysicalCount();
    /// Returns the number of threads per core.
    static int cpuHyperThreadingCount();
    /// Returns the processor's name, including leading spaces.
    static QString cpuDescription();
    /// Returns 0: the frequency is unknown on Linux.
    static double cpuFrequency() { return 0.0; }

    static KSystemInfo *m_instance;

private:
    static bool m_bInit;
    CpuTopology *m_topology;
};
