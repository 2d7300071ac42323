// What is known of the machine: memory, disk, processors, system.
#pragma once

#include <QString>
#include <QStringList>

struct CpuTopology;

/// Static queries, from any thread; what can't be found out is told by a neutral value: 0, an empty text, -1. The
/// object only holds the processor topology, so queries about processors count them between init() and exit(), which
/// KTools::init and KTools::exit call, and otherwise take OpenMP's word.
class KSystemInfo {
public:
    KSystemInfo();
    ~KSystemInfo();
    KSystemInfo(const KSystemInfo &) = delete;
    KSystemInfo &operator=(const KSystemInfo &) = delete;

    /// Shares the topology of @p instance, or makes an object for null. Does nothing if there already is one.
    static void init(KSystemInfo *instance);
    /// Deletes the object, a shared one too.
    static void exit();

    // --- Memory, in bytes ---

    /// What an image cache may take at this moment: two thirds of what is free, or all but 4 GiB of it, whichever is
    /// more, and at least 0.128 GiB.
    static unsigned long long maxCacheSize();
    /// Size of the installed modules.
    static unsigned long long physicalMemory();
    /// Unused memory and what the system only caches; 0 without /proc.
    static unsigned long long freePhysicalMemory();
    static unsigned long long virtualMemory() { return 0; }
    static unsigned long long freeVirtualMemory() { return freePhysicalMemory(); }
    static unsigned long long freeAddressSpace() { return freePhysicalMemory(); }
    /// "1.5 KB": three digits or four, and a translated unit.
    static QString memText(unsigned long long bytes);

    // --- Disk and files ---

    /// Bytes that an unprivileged user may still take on the file system of @p path, and its whole size. Both are 0
    /// for a path that doesn't exist.
    static void DiskInfo(const QString &path, unsigned long long &freeBytes, unsigned long long &totalBytes);
    /// Soft limit of open files; -1 if the system doesn't tell.
    static int MaxOpenFiles();
    /// Sets the soft limit: 0, or -1 if the system refuses.
    static int SetMaxOpenFiles(int count);

    // --- System and program ---

    /// "Linux_6.1.0_workstation": system, release, network name.
    static QString osDescription();
    /// "linux64deb" where a dpkg can be run, else "linux64tar". Trap: dpkg tells its version on our standard output.
    static QString osDownloadVersion();
    static void applicationVersion(int &major, int &minor, int &patch);
    /// Nothing on Linux.
    static QStringList macAddresses() { return {}; }
    static Qt::KeyboardModifiers KeyboardModifiers();

    // --- Processors ---

    /// Logical processors, at least 1. The first of these three pins its thread, see cpuid2/cpu_topo.h.
    static int cpuVirtualCount();
    /// Cores, at least 1.
    static int cpuPhysicalCount();
    /// Threads of a core.
    static int cpuHyperThreadingCount();
    /// The processor's own name, leading blanks included.
    static QString cpuDescription();
    /// Not known on Linux.
    static double cpuFrequency() { return 0.0; }

    static KSystemInfo *m_instance;

private:
    static bool m_bInit;
    CpuTopology *m_topology;
};
