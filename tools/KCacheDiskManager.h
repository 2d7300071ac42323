// Names temporary files for the image cache's disk copies, in a folder with enough space.
#pragma once

#include <QString>
#include <QStringList>
#include <tbb/cache_aligned_allocator.h>
#include <tbb/concurrent_vector.h>

#include <atomic>
#include <cstring>

/// Allocator of zeroed memory: a concurrent reader sees zeros in vector elements that are not constructed yet.
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

    /// Leaves the zeros as they are: writing them again would race with a concurrent reader.
    template <typename Element> void construct(Element *) noexcept { }
};

/// Generator of temporary file names. Name n, counted from 0, is /tmp/BRELT.<process id>.<n / 1024>/<n % 1024>, so no
/// folder has more than 1,024 files and a process can distinguish its folders from those of other processes.
///
/// KTools::init creates the process's manager or adopts a host's; KTools::exit deletes it. Any thread may call
/// getTempFile() and removeTempFile(); call everything else only while no thread writes copies. Nothing throws; the
/// code that writes a file must handle failure to create it.
class KCacheDiskManager {
public:
    KCacheDiskManager();
    ~KCacheDiskManager();
    KCacheDiskManager(const KCacheDiskManager &) = delete;
    KCacheDiskManager &operator=(const KCacheDiskManager &) = delete;

    /// Makes @p instance the process's manager. Null keeps the current one, or creates one.
    static void init(KCacheDiskManager *instance);
    /// Removes this process's empty folders and deletes the manager.
    static void exit();
    static KCacheDiskManager *ms_instance;

    /// Sets the first part of subfolder names, initially "BRELT".
    void setPrefix(QString prefix);
    /// Sets the temporary folders in order of preference, initially the system's. Lookups skip missing folders. Always
    /// returns true.
    bool setTemporaryFolders(QStringList folders);
    QStringList getTemporaryFoldersName();
    QStringList getSystemDrives();

    /// Returns the first folder with enough space for @p size bytes plus @p reserve; empty if there is none.
    QString getTempFolder(unsigned long long size, unsigned long long reserve);
    /// Returns an unused name, in an existing folder, for a file of about @p size bytes. Empty if all disks are full.
    QString getTempFile(unsigned long long size);
    /// Removes the files in each subfolder whose name begins with the prefix, then the subfolder if it is empty, even
    /// if another running process uses it. Call it at startup.
    void cleanTempFiles();
    bool removeTempFile(QString name);

    /// Returns the most recently created subfolder, or an empty string. Waits while another thread is adding one.
    QString getLastFolder();
    QString getUniqueFilename(QString folder, QString prefix);

private:
    QString m_prefix;
    QStringList m_folders;
    std::atomic<int> m_fileCounter{0};
    std::atomic<int> m_folderCount{0}; // exceeds the size of m_createdFolders while a thread creates a folder
    tbb::concurrent_vector<std::atomic<QString *>, ZeroingAllocator<std::atomic<QString *>>>
        m_createdFolders; // owned; null while an entry is being written
};
