// A pool of equal memory blocks, claimed up front so that a shortage shows at the start of a very large job.
#pragma once

#include "KOmp.h"

#include <QtGlobal>
#include <tbb/concurrent_queue.h>

#include <atomic>

/// One block. Whoever takes it counts m_users up and down and stamps m_lastUse.
struct KPoolMemBloc {
    static constexpr int kFree = -1000;

    char *m_data = nullptr; // from array new, the pool's
    qint64 m_reserved = 0;
    std::atomic<int> m_users{kFree};  // kFree: in the queue or just claimed; 0: idle, can be claimed; above: held
    std::atomic<qint64> m_lastUse{0}; // smaller is older; read by those who look for the oldest block
};

/// KTools::init makes the process's pool, empty, or takes a host's; KTools::exit ends it. Sizes are in megabytes of
/// 2^20 bytes. Lending (getFreeBloc, addFreeBloc, getFreeableBloc) is for any thread and never waits; init, Alloc and
/// Free are for when no job runs, since they free blocks that are lent out too.
class KPoolMemManager {
public:
    KPoolMemManager() = default;
    ~KPoolMemManager() { Free(); }
    KPoolMemManager(const KPoolMemManager &) = delete;
    KPoolMemManager &operator=(const KPoolMemManager &) = delete;

    KOmpMutex m_mutex; // for users of the pool, which itself takes no lock

    /// Makes @p instance the process's pool; null keeps the one there is, or makes an empty one.
    static void init(KPoolMemManager *instance);
    static void exit();
    static KPoolMemManager *ms_instance;

    /// Claims memoryMo / blockMo blocks of @p blockMo, in place of an earlier pool; 0: computeBlockSize() chooses.
    /// Throws a KException that tells the sizes if the memory can't be had.
    void init(int memoryMo, int threads, int blockMo);
    /// The largest of 8, 4, 2, 1 that leaves ten blocks a thread and 150 in all; 1 if none does.
    int computeBlockSize(int memoryMo, int threads);
    /// Claims the blocks that init() worked out; throws "Not enough memory".
    void Alloc();
    void Free();

    /// A block that nobody has touched, or null.
    KPoolMemBloc *getFreeBloc();
    /// Gives a block back to those that nobody uses.
    void addFreeBloc(KPoolMemBloc *bloc);
    /// Claims the idle block with the smallest stamp, the first among equals; null if none is idle.
    KPoolMemBloc *getFreeableBloc();

    /// Diagnostics of debug builds; nothing here.
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
