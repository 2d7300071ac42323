// A pool of memory blocks of equal size, allocated up front so that a very large job fails at its start if memory is
// short.
#pragma once

#include "KOmp.h"

#include <QtGlobal>
#include <tbb/concurrent_queue.h>

#include <atomic>

/// One block. Its users increment and decrement m_users and stamp m_lastUse.
struct KPoolMemBloc {
    static constexpr int kFree = -1000;

    char *m_data = nullptr; // from array new, owned by the pool
    qint64 m_reserved = 0;
    std::atomic<int> m_users{kFree};  // kFree: queued or just claimed; 0: idle, can be claimed; positive: in use
    std::atomic<qint64> m_lastUse{0}; // smaller is older; read when looking for the oldest block
};

/// The process's pool, which KTools::init creates empty or adopts from a host, and KTools::exit deletes. Sizes are in
/// megabytes of 2^20 bytes. Any thread may take and return blocks (getFreeBloc, addFreeBloc, getFreeableBloc) without
/// waiting; call init, Alloc and Free only while no job runs, since they also free blocks in use.
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

    /// Allocates memoryMo / blockMo blocks of @p blockMo megabytes, replacing earlier ones. If @p blockMo is 0,
    /// computeBlockSize() chooses it. Throws a KException that gives the sizes if the memory is not available.
    void init(int memoryMo, int threads, int blockMo);
    /// Returns the largest of 8, 4, 2 and 1 that gives at least ten blocks per thread and 150 in total, or 1 if none
    /// does. The counts are estimates: memoryMo / 8, rounded down, then doubled for each smaller size.
    int computeBlockSize(int memoryMo, int threads);
    /// Allocates the blocks that init() computed; throws a KException, "Not enough memory".
    void Alloc();
    void Free();

    /// Takes a free block; null if there is none.
    KPoolMemBloc *getFreeBloc();
    /// Makes a block free again.
    void addFreeBloc(KPoolMemBloc *bloc);
    /// Claims the idle block with the smallest stamp, the first of equal ones; null if none is idle.
    KPoolMemBloc *getFreeableBloc();

    /// Placeholders for diagnostics; both do nothing.
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
