// Chronometers: pairs of start and stop, statistics per thread, and formatted times.
#include "KChronometer.h"

#include "Case.h"
#include "KSimpleChronometer.h"
#include "Threads.h"

#include <QtTest>

#include <atomic>

namespace {

const QString kName = QStringLiteral("x");

/// Waits until the clock has advanced by @p ticks.
void PassTime(qint64 ticks)
{
    const qint64 start = gChrono.GetTick();
    while (gChrono.GetTick() - start < ticks) { }
}

} // namespace

class tst_KChronometer : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { gChrono.Reset(); }

    void pairs();
    void accumulated();
    void formattedTime();
    void fourThreads();
    void stopwatch();
};

void tst_KChronometer::pairs()
{
    QVERIFY(KChronometer::Calibrated);
    for (int round = 0; round < 2; ++round) { // the second round checks the state after a reset
        const Case named("round", round);
        QCOMPARE(gChrono.Stop(kName), 0); // without a start
        QCOMPARE(gChrono.GetNbContext(kName, /*onlyUsed=*/false), 0);
        gChrono.Start(kName);
        QCOMPARE(gChrono.GetNbContext(kName, /*onlyUsed=*/false), 1);
        QCOMPARE(gChrono.GetNbContext(kName, /*onlyUsed=*/true), 0);
        PassTime(3);
        const qint64 first = gChrono.Stop(kName);
        PassTime(2);
        const qint64 second = gChrono.Stop(kName); // again from the same start
        QVERIFY(first >= 3 && second >= first + 2);
        QCOMPARE(gChrono.GetStatTotalTime(kName, -1), first + second);
        QCOMPARE(gChrono.GetStatTotalTime(kName, KChronometer::Seconds, 0), double(first + second) / 1000);
        QCOMPARE(gChrono.GetStatNbCalls(kName, -1), 2);
        QCOMPARE(gChrono.GetStatNbCalls(kName, 1), 0); // no such context
        QCOMPARE(gChrono.GetStatNbCalls(kName, -2), 0);
        gChrono.Reset(kName);
    }
}

void tst_KChronometer::accumulated()
{
    const QString name = QStringLiteral("read %2 of %1");
    gChrono.AccumulateTiming(name, 5);
    QCOMPARE(gChrono.Dump(),
             QStringLiteral(" read %2 of %1@") + QString::number(reinterpret_cast<quintptr>(QThread::currentThread()))
                 + QStringLiteral(" : 5, 1\r\n"));
    gChrono.Start(kName);
    gChrono.AccumulateTiming(kName, 70000);
    QCOMPARE(gChrono.GetStatTotalTime(kName, -1), 70000);
    gChrono.Start(kName);
    PassTime(1);
    const double seconds = gChrono.Stop(kName, KChronometer::Seconds);
    QCOMPARE(gChrono.GetStatTotalTime(kName, -1), 70000 + qRound64(seconds * 1000));
}

void tst_KChronometer::formattedTime()
{
    const std::pair<qint64, const char *> rows[] = {
        {0, "0 ns"},       {1, "1000 us"}, // a unit needs a value above one
        {1000, "1000 ms"}, {59999, "59.999 s"}, {60000, "60 s"}, {3600000, "60 min:0 s"}, {90061999, "25 h:1 min:1 s"},
        {-5, "-5e+06 ns"}};
    for (const auto &[ticks, text] : rows)
        QCOMPARE(gChrono.FormattedTime(ticks), QString::fromLatin1(text));
}

void tst_KChronometer::fourThreads()
{
    constexpr int kPairs = 2000;
    std::atomic<int> finished{0};
    InThreads(4, [&](int t) {
        const QString own = QString::number(t);
        for (int i = 0; i < kPairs; ++i) {
            gChrono.Start(kName);
            gChrono.Start(own);
            gChrono.Stop(own);
            gChrono.Stop(kName);
            if (i % 100 == 0)
                gChrono.GetStatNbCalls(kName, -1); // reads statistics while other threads count
            if (i % 500 == 499)
                gChrono.Reset(own);
        }
        ++finished;
        while (finished < 4) // no thread ends early, so no thread object's address is reused
            std::this_thread::yield();
    });
    QCOMPARE(gChrono.GetNbContext(kName, /*onlyUsed=*/true), 4);
    QCOMPARE(gChrono.GetStatNbCalls(kName, -1), 4 * kPairs);
    QCOMPARE(gChrono.GetStatNbCalls(kName, 3), kPairs);
    QCOMPARE(gChrono.GetStatNbCalls(QStringLiteral("0"), -1), 0); // reset
}

void tst_KChronometer::stopwatch()
{
    KSimpleChronometer watch;
    watch.Start();
    PassTime(3);
    watch.Start(); // no effect on a running watch
    const qint64 lap = watch.Stop();
    QVERIFY(lap >= 3);
    PassTime(2);
    QCOMPARE(watch.Stop(), lap);
    QCOMPARE(watch.ElapsedTime(KSimpleChronometer::Microseconds), double(lap) * 1000);
    watch.Reset();
    QCOMPARE(watch.ElapsedTime(), 0);
    watch.Start();
    watch.Reset();
    QCOMPARE(watch.ElapsedTime(), 0);
    QVERIFY(watch.IsStarted() && watch.Stop() < lap + 1000000); // measured from the reset, not from the epoch
}

QTEST_GUILESS_MAIN(tst_KChronometer)
#include "KChronometer_test.moc"
