// The memory pool: block sizes, shortage, reuse of idle blocks, and threads.
#include "KPoolMemManager.h"

#include "Case.h"
#include "Threads.h"
#include "Thrown.h"

#include <QtTest>

#include <sys/resource.h>

#include <atomic>

namespace {

QVector<KPoolMemBloc *> TakeAll(KPoolMemManager *pool)
{
    QVector<KPoolMemBloc *> blocks;
    while (KPoolMemBloc *block = pool->getFreeBloc())
        blocks << block;
    return blocks;
}

} // namespace

class tst_KPoolMemManager : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void blockSize();
    void blocks();
    void shortage();
    void oldestIdle();
    void fourThreads();
};

void tst_KPoolMemManager::blockSize()
{
    const struct {
        int memoryMo, threads, expected;
    } rows[] = {
        {2000, 4, 8},  {1200, 1, 8},          // 250 blocks of 8 MB, and exactly the 150 required
        {1000, 4, 4},  {100, 4, 1},           // 125 blocks of 8 MB are too few; 1 MB is the minimum
        {2000, 32, 4}, {2000, 25, 8},         // ten blocks per thread
        {0, 4, 1},     {2000, 2000000000, 1}, // ten blocks per thread exceed 32 bits
    };
    for (const auto &row : rows) {
        const Case named(row.memoryMo, "MB,", row.threads, "threads");
        QCOMPARE(KPoolMemManager().computeBlockSize(row.memoryMo, row.threads), row.expected);
    }
}

void tst_KPoolMemManager::blocks()
{
    const struct {
        int memoryMo, blockMo, count, bytes;
    } rows[] = {
        {1000, 10, 100, 10 << 20}, {1000, 0, 250, 4 << 20}, {25, 10, 2, 10 << 20}, {5, 10, 0, 0}, {-100, 10, 0, 0}};
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        KPoolMemManager pool;
        QCOMPARE(pool.getFreeBloc(), nullptr);
        pool.init(3, 1, 1); // replaced by the next call
        pool.init(row.memoryMo, 4, row.blockMo);
        pool.Alloc(); // replaces the blocks
        const QVector<KPoolMemBloc *> all = TakeAll(&pool);
        QCOMPARE(all.size(), row.count);
        for (KPoolMemBloc *block : all) {
            block->m_data[0] = block->m_data[row.bytes - 1] = 1;
            QCOMPARE(block->m_users.load(), -1000);
        }
        pool.Free(); // also frees blocks in use
        QCOMPARE(pool.getFreeableBloc(), nullptr);
    }
}

void tst_KPoolMemManager::shortage()
{
    const QString refusal =
        QStringLiteral("Can not allocate pool memory manager:\nmemory to allocate: 5000 mo | thread: 4 | bloc: "
                       "%1 mo\nTry to restart application or contact support if detected memory seems wrong");
    KPoolMemManager pool;
    for (const int blockMo : {2048, 4096, -1}) { // 2 GiB overflows a 32-bit int, 4 GiB wraps to 0
        const Case named(blockMo);
        pool.init(3, 1, 1);
        QCOMPARE(Thrown([&] { pool.init(5000, 4, blockMo); }), refusal.arg(blockMo));
        QCOMPARE(pool.getFreeBloc(), nullptr);
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // sanitizers need the address space
    struct rlimit before;
    QCOMPARE(getrlimit(RLIMIT_AS, &before), 0);
    const struct rlimit little = {1ul << 30, before.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_AS, &little), 0);
    const QString text = Thrown([&] { pool.init(5000, 4, 0); });
    setrlimit(RLIMIT_AS, &before);
    QCOMPARE(text, refusal.arg(0));
    pool.init(8, 1, 4); // usable again
    QCOMPARE(TakeAll(&pool).size(), 2);
#endif
}

void tst_KPoolMemManager::oldestIdle()
{
    KPoolMemManager pool;
    pool.init(4, 1, 1);
    const QVector<KPoolMemBloc *> all = TakeAll(&pool);
    const int stamps[] = {9, 5, 3, 5};
    for (int i = 0; i < 4; ++i) {
        all[i]->m_users = i == 2 ? 1 : 0;
        all[i]->m_lastUse = stamps[i];
    }
    for (const int next : {1, 3, 0}) { // block 2 is in use; among equal stamps, the first block wins
        const Case named(next);
        QCOMPARE(pool.getFreeableBloc(), all[next]);
        QCOMPARE(all[next]->m_users.load(), -1000);
    }
    QCOMPARE(pool.getFreeableBloc(), nullptr);
    pool.addFreeBloc(all[2]); // returned while it is in use
    QCOMPARE(pool.getFreeBloc(), all[2]);
    QCOMPARE(all[2]->m_users.load(), -1000);
}

void tst_KPoolMemManager::fourThreads()
{
    KPoolMemManager pool;
    pool.init(6, 1, 1);
    for (KPoolMemBloc *block : TakeAll(&pool)) {
        *reinterpret_cast<int *>(block->m_data) = 0;
        pool.addFreeBloc(block);
    }
    std::atomic<int> stamp{0}, doubleUse{0}, turns{0};
    InThreads(4, [&](int) {
        for (int i = 0; i < 3000; ++i) {
            KPoolMemBloc *block = pool.getFreeBloc();
            if (!block)
                block = pool.getFreeableBloc();
            if (!block)
                continue;
            if (block->m_users != KPoolMemBloc::kFree)
                ++doubleUse;
            ++*reinterpret_cast<int *>(block->m_data); // a data race if two threads ever held the block
            block->m_lastUse = ++stamp;
            ++turns;
            if (i % 3)
                block->m_users = 0; // idle, keeps its content
            else
                pool.addFreeBloc(block);
        }
    });
    QCOMPARE(doubleUse.load(), 0);
    int counted = 0, found = 0;
    KPoolMemBloc *block;
    while ((block = pool.getFreeBloc()) || (block = pool.getFreeableBloc())) {
        counted += *reinterpret_cast<int *>(block->m_data);
        ++found;
    }
    QCOMPARE(found, 6);
    QCOMPARE(counted, turns.load());
}

QTEST_GUILESS_MAIN(tst_KPoolMemManager)
#include "KPoolMemManager_test.moc"
