#include "KPoolMemManager.h"

#include "KException.h"

#include <QtTest>

#include <sys/resource.h>

#include <thread>

namespace {

/// What the call throws, or a null text.
QString Thrown(KPoolMemManager *pool, int memoryMo, int threads, int blockMo)
{
    try {
        pool->init(memoryMo, threads, blockMo);
    } catch (const KException &e) {
        return e.what();
    }
    return QString();
}

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
    void blockSize_data();
    void blockSize();
    void blocks_data();
    void blocks();
    void refusedSizes_data();
    void refusedSizes();
    void shortage();
    void lending();
    void oldestIdle();
    void fourThreads();
};

void tst_KPoolMemManager::blockSize_data()
{
    QTest::addColumn<int>("memoryMo");
    QTest::addColumn<int>("threads");
    QTest::addColumn<int>("expected");
    QTest::newRow("250 of 8 are enough for 150") << 2000 << 4 << 8;
    QTest::newRow("exactly 150 of 8") << 1200 << 1 << 8;
    QTest::newRow("125 of 8 are too few") << 1000 << 4 << 4;
    QTest::newRow("150 are wanted, 100 is the most") << 100 << 4 << 1;
    QTest::newRow("320 are wanted") << 2000 << 32 << 4;
    QTest::newRow("ten a thread, at the limit") << 2000 << 25 << 8;
    QTest::newRow("two megabytes") << 400 << 1 << 2;
    QTest::newRow("less than a block") << 7 << 4 << 1;
    QTest::newRow("nothing") << 0 << 4 << 1;
    QTest::newRow("more threads than 32 bits of blocks") << 2000 << 2000000000 << 1;
}

void tst_KPoolMemManager::blockSize()
{
    QFETCH(int, memoryMo);
    QFETCH(int, threads);
    KPoolMemManager pool;
    QTEST(pool.computeBlockSize(memoryMo, threads), "expected");
}

void tst_KPoolMemManager::blocks_data()
{
    QTest::addColumn<int>("memoryMo");
    QTest::addColumn<int>("blockMo");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("bytes");
    QTest::newRow("given size") << 1000 << 10 << 100 << 10 * (1 << 20);
    QTest::newRow("computed size") << 1000 << 0 << 250 << 4 * (1 << 20);
    QTest::newRow("rest unused") << 25 << 10 << 2 << 10 * (1 << 20);
    QTest::newRow("block larger than the pool") << 5 << 10 << 0 << 0;
    QTest::newRow("negative memory") << -100 << 10 << 0 << 0;
}

void tst_KPoolMemManager::blocks()
{
    QFETCH(int, memoryMo);
    QFETCH(int, blockMo);
    QFETCH(int, count);
    QFETCH(int, bytes);
    KPoolMemManager pool;
    QCOMPARE(pool.getFreeBloc(), nullptr);
    pool.init(3, 1, 1); // replaced by the next
    QCOMPARE(Thrown(&pool, memoryMo, 4, blockMo), QString());
    const QVector<KPoolMemBloc *> all = TakeAll(&pool);
    QCOMPARE(all.size(), count);
    for (KPoolMemBloc *block : all) {
        block->m_data[0] = block->m_data[bytes - 1] = 1;
        QCOMPARE(block->m_users.load(), -1000);
    }
    pool.Free(); // blocks that are lent out go too
    QCOMPARE(pool.getFreeableBloc(), nullptr);
}

void tst_KPoolMemManager::refusedSizes_data()
{
    QTest::addColumn<int>("blockMo");
    QTest::newRow("2 GiB: doesn't fit 32 bits") << 2048;
    QTest::newRow("4 GiB: 0 in 32 bits") << 4096;
    QTest::newRow("negative") << -1;
}

void tst_KPoolMemManager::refusedSizes()
{
    QFETCH(int, blockMo);
    KPoolMemManager pool;
    pool.init(3, 1, 1);
    QCOMPARE(Thrown(&pool, 5000, 4, blockMo),
             QStringLiteral("Can not allocate pool memory manager:\nmemory to allocate: 5000 mo | thread: 4 | bloc: %1 "
                            "mo\nTry to restart application or contact support if detected memory seems wrong")
                 .arg(blockMo));
    QCOMPARE(pool.getFreeBloc(), nullptr);
}

void tst_KPoolMemManager::shortage()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer needs the address space that this test takes away");
#endif
    struct rlimit before;
    QCOMPARE(getrlimit(RLIMIT_AS, &before), 0);
    const struct rlimit little = {1ul << 30, before.rlim_max};
    KPoolMemManager pool;
    QCOMPARE(setrlimit(RLIMIT_AS, &little), 0);
    const QString text = Thrown(&pool, 4000, 4, 0);
    setrlimit(RLIMIT_AS, &before);
    QVERIFY2(text.contains(QStringLiteral("memory to allocate: 4000 mo | thread: 4 | bloc: 0 mo\n")), qPrintable(text));
    QCOMPARE(Thrown(&pool, 8, 1, 4), QString()); // usable again
    QCOMPARE(TakeAll(&pool).size(), 2);
}

void tst_KPoolMemManager::lending()
{
    KPoolMemManager pool;
    pool.init(2, 1, 1);
    KPoolMemBloc *block = pool.getFreeBloc();
    QVERIFY(block);
    QVERIFY(pool.getFreeBloc() != block);
    QCOMPARE(pool.getFreeBloc(), nullptr);
    block->m_users = 3;
    pool.addFreeBloc(block);
    QCOMPARE(pool.getFreeBloc(), block);
    QCOMPARE(block->m_users.load(), -1000);
}

void tst_KPoolMemManager::oldestIdle()
{
    KPoolMemManager pool;
    pool.init(4, 1, 1);
    const QVector<KPoolMemBloc *> all = TakeAll(&pool);
    for (KPoolMemBloc *block : all)
        block->m_users = 1;
    QCOMPARE(pool.getFreeableBloc(), nullptr); // all held
    const int stamps[] = {9, 5, 3, 5};
    for (int i = 0; i < 4; ++i)
        all[i]->m_lastUse = stamps[i];
    for (int i : {0, 1, 3})
        all[i]->m_users = 0;
    QCOMPARE(pool.getFreeableBloc(), all[1]); // 3 is held; of the two with 5 the first
    QCOMPARE(all[1]->m_users.load(), -1000);
    QCOMPARE(pool.getFreeableBloc(), all[3]);
    QCOMPARE(pool.getFreeableBloc(), all[0]);
    QCOMPARE(pool.getFreeableBloc(), nullptr);
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
    const auto work = [&] {
        for (int i = 0; i < 3000; ++i) {
            KPoolMemBloc *block = pool.getFreeBloc();
            if (!block)
                block = pool.getFreeableBloc();
            if (!block)
                continue;
            if (block->m_users != KPoolMemBloc::kFree)
                ++doubleUse;
            ++*reinterpret_cast<int *>(block->m_data); // a race, if two threads ever had the block
            block->m_lastUse = ++stamp;
            ++turns;
            if (i % 3)
                block->m_users = 0; // idle, its content kept
            else
                pool.addFreeBloc(block);
        }
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back(work);
    for (std::thread &thread : threads)
        thread.join();
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
