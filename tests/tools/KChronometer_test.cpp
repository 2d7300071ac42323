#include "KChronometer.h"

#include "KSimpleChronometer.h"

#include <QtTest>

#include <thread>

namespace {

const QString kName = QStringLiteral("x");

/// Lets the clock move on by @p ticks.
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

    void calibratedAtLoad();
    void stopWithoutStart();
    void pairs();
    void accumulated();
    void oneNameInThreeThreads();
    void resetOfOneName();
    void nameWithPlaceMarkers();
    void formattedTime_data();
    void formattedTime();
    void fourThreads();
    void stopwatch();
};

void tst_KChronometer::calibratedAtLoad()
{
    QVERIFY(KChronometer::Calibrated);
    QCOMPARE(gChrono.Dump(), QString()); // its own counters are gone
    KChronometer second;                 // skips the calibration
    QCOMPARE(second.UnitConv(KChronometer::Seconds, 2500), 2.5);
}

void tst_KChronometer::stopWithoutStart()
{
    QCOMPARE(gChrono.Stop(kName), 0);
    QCOMPARE(gChrono.Dump(), QString());
    QCOMPARE(gChrono.GetStatTotalTime(kName, -1), 0);
    QCOMPARE(gChrono.GetNbContext(kName, /*onlyUsed=*/false), 0);
    QVERIFY(gChrono.FindRelatedCounter(kName).isEmpty());
}

void tst_KChronometer::pairs()
{
    gChrono.Start(QStringLiteral("outer"));
    gChrono.Start(kName);
    PassTime(3);
    const qint64 first = gChrono.Stop(kName);
    PassTime(2);
    const qint64 second = gChrono.Stop(kName); // once more from the same start
    QVERIFY(first >= 3);
    QVERIFY(second >= first + 2);
    QCOMPARE(gChrono.GetStatTotalTime(kName, -1), first + second);
    QCOMPARE(gChrono.GetStatTotalTime(kName, 0), first + second);
    QCOMPARE(gChrono.GetStatTotalTime(kName, KChronometer::Seconds, 0), double(first + second) / 1000);
    QCOMPARE(gChrono.GetStatNbCalls(kName, -1), 2);
    QCOMPARE(gChrono.GetStatNbCalls(kName, 1), 0);
    QCOMPARE(gChrono.GetStatNbCalls(kName, -2), 0);
    QVERIFY(gChrono.Stop(QStringLiteral("outer"), KChronometer::Microseconds) >= 5000.0);
}

void tst_KChronometer::accumulated()
{
    gChrono.AccumulateTiming(QStringLiteral("y"), 5);
    QCOMPARE(gChrono.GetStatTotalTime(QStringLiteral("y"), -1), 0);
    QCOMPARE(gChrono.Dump(),
             QStringLiteral(" y@%1 : 5, 1\r\n").arg(reinterpret_cast<quintptr>(QThread::currentThread())));
    gChrono.Start(kName);
    gChrono.AccumulateTiming(kName, 70000);
    QCOMPARE(gChrono.GetStatTotalTime(kName, -1), 70000);
    QCOMPARE(gChrono.GetStatNbCalls(kName, -1), 1);
}

void tst_KChronometer::oneNameInThreeThreads()
{
    std::thread first, second;
    std::atomic<int> ready{0};
    // Both live until the end, so that their addresses differ.
    const auto work = [&](bool stops) {
        gChrono.Start(kName);
        if (stops)
            gChrono.Stop(kName);
        ++ready;
        while (ready < 3)
            std::this_thread::yield();
    };
    first = std::thread(work, true);
    while (ready < 1)
        std::this_thread::yield();
    second = std::thread(work, false);
    while (ready < 2)
        std::this_thread::yield();
    const int all = gChrono.GetNbContext(kName, /*onlyUsed=*/false);
    const int used = gChrono.GetNbContext(kName, /*onlyUsed=*/true);
    const qint64 calls[] = {gChrono.GetStatNbCalls(kName, 0), gChrono.GetStatNbCalls(kName, 1)};
    ++ready;
    first.join();
    second.join();
    QCOMPARE(all, 2);
    QCOMPARE(used, 1);
    QCOMPARE(calls[0], 1);
    QCOMPARE(calls[1], 0);
}

void tst_KChronometer::resetOfOneName()
{
    const QString other = QStringLiteral("other");
    for (const QString &name : {kName, other}) {
        gChrono.Start(name);
        gChrono.Stop(name);
    }
    gChrono.Reset(kName);
    QVERIFY(gChrono.FindRelatedCounter(kName).isEmpty());
    QCOMPARE(gChrono.Stop(kName), 0);
    QCOMPARE(gChrono.GetStatNbCalls(other, -1), 1);
    gChrono.Start(kName);
    QCOMPARE(gChrono.FindRelatedCounter(kName).size(), 1);
}

void tst_KChronometer::nameWithPlaceMarkers()
{
    const QString name = QStringLiteral("read %2 of %1");
    gChrono.Start(name);
    QVERIFY(gChrono.FindRelatedCounter(name).value(0).startsWith(name + QLatin1Char('@')));
    QVERIFY(gChrono.Dump().startsWith(QStringLiteral(" read %2 of %1@")));
}

void tst_KChronometer::formattedTime_data()
{
    QTest::addColumn<qint64>("ticks");
    QTest::addColumn<QString>("text");
    const auto row = [](qint64 ticks, const char *text) { QTest::newRow(text) << ticks << QString::fromLatin1(text); };
    row(0, "0 ns");
    row(1, "1000 us"); // exactly one millisecond isn't more than one
    row(2, "2 ms");
    row(1000, "1000 ms");
    row(1500, "1.5 s");
    row(59999, "59.999 s");
    row(60000, "60 s");
    row(61000, "1 min:1 s");
    row(3600000, "60 min:0 s");
    row(3661000, "1 h:1 min:1 s");
    row(90061999, "25 h:1 min:1 s");
    row(-5, "-5e+06 ns");
}

void tst_KChronometer::formattedTime()
{
    QFETCH(qint64, ticks);
    QTEST(gChrono.FormattedTime(ticks), "text");
}

void tst_KChronometer::fourThreads()
{
    constexpr int kPairs = 2000;
    std::vector<std::thread> threads;
    std::atomic<int> finished{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &finished] {
            const QString own = QString::number(t);
            for (int i = 0; i < kPairs; ++i) {
                gChrono.Start(kName);
                gChrono.Start(own);
                gChrono.Stop(own);
                gChrono.Stop(kName);
                if (i % 100 == 0)
                    gChrono.GetStatNbCalls(kName, -1); // statistics go on meanwhile
                if (i % 500 == 499)
                    gChrono.Reset(own);
            }
            ++finished;
            while (finished < 4) // no address comes back
                std::this_thread::yield();
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(gChrono.GetNbContext(kName, /*onlyUsed=*/true), 4);
    QCOMPARE(gChrono.GetStatNbCalls(kName, -1), 4 * kPairs);
    QCOMPARE(gChrono.GetStatNbCalls(kName, 3), kPairs);
}

void tst_KChronometer::stopwatch()
{
    KSimpleChronometer watch;
    QVERIFY(!watch.IsStarted());
    QCOMPARE(watch.ElapsedTime(), 0);
    watch.Start();
    PassTime(3);
    watch.Start(); // goes on
    QVERIFY(watch.ElapsedTime() >= 3);
    const qint64 lap = watch.Stop();
    PassTime(2);
    QCOMPARE(watch.Stop(), lap);
    QCOMPARE(watch.ElapsedTime(KSimpleChronometer::Microseconds), double(lap) * 1000);
    watch.Reset();
    QCOMPARE(watch.ElapsedTime(), 0);
    watch.Start();
    PassTime(2);
    watch.Reset();
    QVERIFY(watch.IsStarted());
    QVERIFY(watch.ElapsedTime() < lap + 1000000); // from now, not from the epoch
    PassTime(1);
    QVERIFY(watch.Stop() >= 1);
}

QTEST_GUILESS_MAIN(tst_KChronometer)
#include "KChronometer_test.moc"
