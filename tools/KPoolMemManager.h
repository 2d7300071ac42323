// A pool of equal memory blocks, allocated up front so that a very large job fails at its start if memory is short.
#pragma once

#include "KOmp.h"

#include <QtGlobal>
#include <tbb/concurrent_queue.h>

#include <atomic>

/// One block. Its user increments and decrements m_users and stamps m_lastUse.
struct KPoolMemBloc {
    static constexpr int kFree = -1000;

    char *m_data = nullptr; // from array new, owned by the pool
    qint64 m_reserved = 0;
    std::atomic<int> m_users{kFree};  // kFree: queued or just claimed; 0: idle, can be claimed; above: in use
    std::atomic<qint64> m_lastUse{0}; // smaller is older; read when looking for the oldest block
};

/// KTools::init creates the process's empty pool or adopts a host's; KTools::exit deletes it. Sizes are in megabytes of
/// 2^20 bytes. Any thread may take and return blocks (getFreeBloc, addFreeBloc, getFreeableBloc) and never waits;
/// call init, Alloc and Free only while no job runs, since they also free blocks in use.
class KPoolMemManager {
public:
    KPoolMemManager() = default;
    ~KPoolMemManager() { Free(); }
    KPoolMemManager(const KPoolMemManager &) = delete;
    KPoolMemManager &operator=(const KPoolMemManager &) = delete;

    KOmpMutex m_mutex; // for users of the pool; the pool itself never locks it

    /// Makes @p instance the process's pool. Null keeps the current one, or creates an empty one.
    static void init(KPoolMemManager *instance);
    static void exit();
    static KPoolMemManager *ms_instance;

    /// Allocates memoryMo / blockMo blocks of @p blockMo, replacing an earlier pool; 0: computeBlockSize() chooses.
    /// Throws a KException that gives the sizes if the memory is not available.
    void init(int memoryMo, int threads, int blockMo);
    /// Returns the largest of 8, 4, 2, 1 that gives at least ten blocks per thread and 150 in total; 1 if none does.
    int computeBlockSize(int memoryMo, int threads);
    /// Allocates the blocks that init() computed; throws "Not enough memory".
    void Alloc();
    void Free();

    /// Returns a block that was never used, or null.
    KPoolMemBloc *getFreeBloc();
    /// Returns a block to the unused ones.
    void addFreeBloc(KPoolMemBloc *bloc);
    /// Claims the idle block with the smallest stamp, the first of equals; null if none is idle.
    KPoolMemBloc *getFreeableBloc();

    /// Diagnostics of debug builds; does nothing.
    void printStats() { }
    void printAllBlockStats() { }

private:
    KPoolMemBloc *OldestIdle();

    qint32 m_blockSize = 0;
    qint64 m_totalSize = 0;
    qint32 m_blockCount = 0;
    KPoolMemBloc *m_blocks = nullptr;
    tbb::concurrent_queue<KPoolMemBloc *> m_freeBlocks;
};
