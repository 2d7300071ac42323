// Names of temporary files for the image cache's disk copies, in a folder that has room.
#pragma once

#include <QString>
#include <QStringList>
#include <tbb/cache_aligned_allocator.h>
#include <tbb/concurrent_vector.h>

#include <atomic>
#include <cstring>

/// Memory of zeros: what a vector that others read holds where an element isn't made yet.
template <typename Value> class ZeroingAllocator : public tbb::cache_aligned_allocator<Value> {
public:
    ZeroingAllocator() = default;
    template <typename Other> ZeroingAllocator(const ZeroingAllocator<Other> &) noexcept { }

    Value *allocate(size_t count)
    {
        Value *const memory = tbb::cache_aligned_allocator<Value>::allocate(count);
        std::memset(static_cast<void *>(memory), 0, count * sizeof(Value));
        return memory;
    }
};

/// The n-th name handed out is /tmp/BRELT.<process id>.<n / 1024>/<n % 1024>: no folder grows past 1,024 files, and a
/// process tells its own folders from those of others.
///
/// KTools::init makes the process's manager or takes a host's; KTools::exit ends it. getTempFile() and removeTempFile()
/// are for any thread; everything else is for when nobody writes copies. Nothing throws; a file that can't be made is
/// noticed by whoever writes it.
class KCacheDiskManager {
public:
    KCacheDiskManager();
    ~KCacheDiskManager();
    KCacheDiskManager(const KCacheDiskManager &) = delete;
    KCacheDiskManager &operator=(const KCacheDiskManager &) = delete;

    /// Makes @p instance the process's manager; null keeps the one there is, or makes one.
    static void init(KCacheDiskManager *instance);
    /// Removes the folders of this process that are empty, and the manager.
    static void exit();
    static KCacheDiskManager *ms_instance;

    /// First part of the names of subfolders, at first "BRELT".
    void setPrefix(QString prefix);
    /// Folders in order of preference, at first the system's. One that doesn't exist is passed over later. Always true.
    bool setTemporaryFolders(QStringList folders);
    QStringList getTemporaryFoldersName();
    QStringList getSystemDrives();

    /// First folder with room for @p size bytes and @p reserve more; empty if there is none.
    QString getTempFolder(unsigned long long size, unsigned long long reserve);
    /// A name nobody has, for a file of about @p size bytes; its folder stands. Empty if all disks are full.
    QString getTempFile(unsigned long long size);
    /// Removes all subfolders with the prefix and the files in them, of this process and of all others: for start-up.
    void cleanTempFiles();
    bool removeTempFile(QString name);

    /// Subfolder made last, empty before the first. Waits for a thread that is about to enter it.
    QString getLastFolder();
    QString getUniqueFilename(QString folder, QString prefix);

private:
    QString m_prefix;
    QStringList m_folders;
    std::atomic<int> m_fileCounter{0};
    std::atomic<int> m_folderCount{0}; // ahead of m_createdFolders while a thread makes a folder
    tbb::concurrent_vector<std::atomic<QString *>, ZeroingAllocator<std::atomic<QString *>>>
        m_createdFolders; // owned; null while an entry is being written
};
