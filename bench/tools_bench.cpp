// Costs of the tool kernel: startup, a timer's Start/Stop pair, an event. Targets on two processors: 15 ms, 1 us,
// 100 us.
#include "KChronometer.h"
#include "KTools.h"
#include "analytics/KAnalyticsManager.h"
#include "cpuid2/cpu_topo.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <thread>

namespace {

void StartAlone(benchmark::State &state)
{
    for (auto _ : state) {
        KTools::init(nullptr);
        state.PauseTiming();
        KTools::exit();
        state.ResumeTiming();
    }
}
BENCHMARK(StartAlone)->UseRealTime()->Unit(benchmark::kMillisecond);

/// Runs the part of startup whose cost grows with the number of processors.
void CountProcessors(benchmark::State &state)
{
    for (auto _ : state) {
        CPUIDInit();
        std::thread(InitCpuTopology).join();
        CPUIDExit();
    }
}
BENCHMARK(CountProcessors)->UseRealTime()->Unit(benchmark::kMillisecond);

void TimerPair(benchmark::State &state)
{
    const QString name = QStringLiteral("pair");
    for (auto _ : state) {
        gChrono.Start(name);
        benchmark::DoNotOptimize(gChrono.Stop(name));
    }
}
BENCHMARK(TimerPair)->Threads(1)->Threads(2)->UseRealTime();

void SendEvent(benchmark::State &state)
{
    KAnalyticsManager *analytics = KAnalyticsManager::instance();
    analytics->setMaxEventsBufferised(1 << 30);
    for (auto _ : state)
        analytics->sendEventAction(QStringLiteral("category"), QStringLiteral("name"), 7);
    analytics->flushEvents(/*delayed=*/false);
    KAnalyticsManager::killInstance();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
BENCHMARK(SendEvent)->UseRealTime()->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    QTemporaryDir folder; // used instead of the user's folders
    qputenv("XDG_DATA_HOME", QFile::encodeName(folder.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.path()));
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
