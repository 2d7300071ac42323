// CPU topology: recorded machines, failures, and the processor's name.
#include "cpuid2/cpu_topo.h"

#include "Case.h"
#include "RecordedMachine.h"

#include <QtTest>

using Ids = std::vector<unsigned>;
using Caches = std::vector<RecordedCache>;

namespace {

/// Returns evenly spaced identifiers, for numberings with gaps.
Ids Range(unsigned first, unsigned count, unsigned step = 1)
{
    Ids ids;
    for (unsigned i = 0; i < count; ++i)
        ids.push_back(first + i * step);
    return ids;
}

Ids operator+(Ids a, const Ids &b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// Expected results for a machine: total counts, then one row per cache.
struct Expected {
    unsigned packages, cores, threads;
    unsigned coresOfPackage0, threadsOfCore0;
    std::vector<std::array<unsigned, 3>> caches; // instances, processors that share the first one, KB
};

struct MachineRow {
    RecordedMachine machine;
    Expected expected;
};

using R = RecordedMachine;
constexpr unsigned D = 1, I = 2, U = 3;

std::vector<std::pair<const char *, MachineRow>> Machines()
{
    const Caches quadHt = {{1, D, 2, 64, 8}, {1, I, 2, 64, 8}, {2, U, 2, 1024, 4}, {3, U, 16, 8192, 16}};
    const Caches xeon = {{1, D, 2, 64, 8}, {1, I, 2, 64, 8}, {2, U, 2, 512, 8}, {3, U, 32, 12288, 20}};
    const Caches core2 = {{1, D, 1, 64, 8}, {1, I, 1, 64, 8}, {2, U, 2, 4096, 24}};
    const Caches zen = {{1, D, 2, 64, 8}, {1, I, 2, 256, 4}, {2, U, 2, 1024, 8}, {3, U, 8, 8192, 16}};
    const Caches rome = {{1, D, 2, 64, 8}, {1, I, 2, 64, 8}, {2, U, 2, 1024, 8}, {3, U, 8, 16384, 16}};
    return {
        {"Intel, 2 sockets of 6 cores with 2 threads, gaps in the core numbers, leaf 11",
         {R(R::Intel, 0xF, Range(0, 6) + Range(16, 6) + Range(32, 6) + Range(48, 6))
              .PerPackage(32)
              .Caches(16, xeon)
              .Levels({{1, 1, 2}, {2, 5, 12}}),
          {2, 12, 24, 6, 2, {{12, 2, 32}, {12, 2, 32}, {12, 2, 256}, {2, 12, 15360}}}}},
        {"Intel, 6 cores, hyper-threading off: every second identifier, leaf 11",
         {R(R::Intel, 0x16, Range(0, 6, 2)).PerPackage(16).Caches(8, quadHt).Levels({{1, 1, 1}, {2, 4, 6}}),
          {1, 6, 6, 6, 1, {{6, 1, 32}, {6, 1, 32}, {6, 1, 256}, {1, 6, 8192}}}}},
        {"Intel, leaf 11 with modules and dies above the cores",
         {R(R::Intel, 0x1B, Range(0, 4) + Range(64, 4))
              .PerPackage(64)
              .Caches(32, {{1, D, 2, 64, 12}})
              .Levels({{1, 1, 2}, {2, 6, 4}, {5, 6, 4}}),
          {2, 4, 8, 2, 2, {{4, 2, 48}}}}},
        {"Intel, 4 cores, level 2 cache shared by pairs, leaves 1 and 4",
         {R(R::Intel, 0xD, Range(0, 4)).PerPackage(4).Caches(4, core2), // leaf 11 exists but is empty
          {1, 4, 4, 4, 1, {{4, 1, 32}, {4, 1, 32}, {2, 2, 6144}}}}},
        {"Intel, 2 sockets of 1 core with 2 threads, before leaf 4",
         {R(R::Intel, 2, {0, 1, 6, 7}).PerPackage(2), {2, 2, 4, 1, 2, {{2, 2, 0}}}}},
        {"several sockets without the flag, as hypervisors report them",
         {R(R::Intel, 0xD, Range(0, 3)).Caches(1, {{1, D, 1, 64, 8}}), {3, 3, 3, 1, 1, {{3, 1, 32}}}}},
        {"hypervisor that counts fewer threads than cores",
         {R(R::Intel, 0xA, Range(0, 4)).PerPackage(1).Caches(4, {{1, D, 1, 64, 8}}), {1, 4, 4, 4, 1, {{4, 1, 32}}}}},
        {"AMD, 6 cores without multithreading, no topology extensions: caches unknown",
         {R(R::Amd, 6, Range(0, 6)).PerPackage(6).AmdCores(0x10, 6, 3), {1, 6, 6, 6, 1, {}}}},
        {"AMD, compute units are not threads",
         {R(R::Amd, 0xD, Range(16, 8))
              .PerPackage(8)
              .AmdCores(0x15, 8, 4)
              .AmdExtensions(2, {{1, D, 1, 64, 4}, {2, U, 2, 2048, 16}}),
          {1, 8, 8, 8, 1, {{8, 1, 16}, {4, 2, 2048}}}}},
        {"AMD, 8 cores with 2 threads in two groups, before leaf 11",
         {R(R::Amd, 0xD, Range(0, 16)).PerPackage(16).AmdCores(0x17, 16, 4).AmdExtensions(2, zen),
          {1, 8, 16, 8, 2, {{8, 2, 32}, {8, 2, 64}, {8, 2, 512}, {2, 8, 8192}}}}},
        {"AMD, 2 sockets of 8 cores with 2 threads, leaf 11",
         {R(R::Amd, 0x10, Range(0, 16) + Range(128, 16))
              .PerPackage(16)
              .AmdCores(0x17, 16, 7)
              .AmdExtensions(2, rome)
              .Levels({{1, 1, 2}, {2, 7, 16}}),
          {2, 16, 32, 8, 2, {{16, 2, 32}, {16, 2, 32}, {16, 2, 512}, {4, 8, 16384}}}}},
        {"identifiers above 8 bits, leaf 11",
         {R(R::Amd, 0x10, Range(256, 2) + Range(512, 2))
              .PerPackage(2)
              .AmdCores(0x19, 2, 8)
              .AmdExtensions(1, {{3, U, 2, 32768, 16}})
              .Levels({{1, 0, 1}, {2, 8, 2}}),
          {2, 4, 4, 2, 1, {{2, 2, 32768}}}}},
    };
}

struct FailureRow {
    const char *name;
    RecordedMachine machine;
    unsigned error;
    int bindings = 0, forbiddenCpu = -1, unbindableCpu = -1;
};

std::vector<FailureRow> Failures()
{
    const R four = R(R::Intel, 0xB, Range(0, 4)).PerPackage(4).Caches(4, {{1, D, 1, 64, 8}});
    const CpuidRegisters manyLeaves = {0x1E, 0x756E6547, 0x6C65746E, 0x49656E69};
    return {
        {"restricted to some processors", four, kTopologyAffinityError, 0, 2},
        {"binding refused", four, kTopologyBindError, 3, -1, 2},
        {"leaf 11 without threads", R(four).Levels({{2, 1, 4}}), kTopologyGeneralError},
        {"leaf 11 that never ends", R(four).Levels(std::vector<RecordedLevel>(20, {1, 1, 2})), kTopologyGeneralError},
        {"more leaves than the record holds", R(four).Set(0, 0, manyLeaves), kTopologyGeneralError},
        {"more caches than the record holds", R(four).Caches(4, Caches(7, {1, D, 1, 64, 8})), kTopologyGeneralError},
        {"cores counted as threads, before leaf 4", R(R::Amd, 1, Range(0, 4)).PerPackage(4).AmdCores(0xF, 4, 0),
         kTopologyLegacyError}};
}

} // namespace

class tst_CpuTopo : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { CPUIDInit(); }
    void cleanup();

    void recorded();
    void ordinals();
    void failures();
    void processorName();
};

void tst_CpuTopo::cleanup()
{
    CPUIDExit();
    SetCpuMachine(nullptr);
}

void tst_CpuTopo::recorded()
{
    for (auto &[name, row] : Machines()) {
        const Case named(name);
        auto &[machine, expected] = row;
        SetCpuMachine(&machine);
        const Ids counts = {GetSysProcessorPackageCount(), GetSysProcessorCoreCount(),
                            GetSysLogicalProcessorCount(), GetcoreCount(0),
                            GetthreadCount(0, 0),          GetcoreCount(expected.packages)};
        const Ids wanted = {expected.packages,        expected.cores,          expected.threads,
                            expected.coresOfPackage0, expected.threadsOfCore0, 0u};
        QVERIFY2(counts == wanted, name);
        QVERIFY2(glbl_ptr->cacheRecords.size() == expected.caches.size(), name);
        for (unsigned i = 0; i < expected.caches.size(); ++i) {
            const std::array<unsigned, 3> cache = {GetSysEachCacheCount(i), GetCoreCountPerEachCache(i, 0),
                                                   glbl_ptr->cacheRecords[i].sizeKb};
            QVERIFY2(cache == expected.caches[i], name);
        }
        InitCpuTopology();
        QCOMPARE(machine.bindings, int(expected.threads)); // each processor is read only once
        cleanup();
        init();
    }
}

void tst_CpuTopo::ordinals()
{
    RecordedMachine machine = Machines()[0].second.machine;
    SetCpuMachine(&machine);
    QCOMPARE(getEnumerateAPICID(0), 0u);
    QCOMPARE(getEnumerateAPICID(23), 53u);
    QCOMPARE(getEnumerateAPICID(24), 0xFFFFFFFFu);
    QCOMPARE(GetOSLogicalProcessorCount(), 24u);
    // Identifier 19: package 0, core 9, thread 1; the fifth core found.
    QCOMPARE(SlectOrdfromPkg(0, 4, 1), 9u);
    QCOMPARE(SlectOrdfromPkg(1, -1, -1), 12u);
    QCOMPARE(SlectOrdfromPkg(2, -1, -1), 0u);
    QCOMPARE(GetHWMTConfig(1), 0);
    QCOMPARE(machine.current, 12u);
    QCOMPARE(glbl_ptr->hwmtThreadsPerCore, 2u);
    QCOMPARE(glbl_ptr->hwmtThreadsPerPackage, 12u);
    QCOMPARE(GetHWMTConfig(2), -1);
    QCOMPARE(GetCacheTotalLize(0xF, 3), 15360ull * 1024);
    QCOMPARE(GetCacheTotalLize(3, 0), 0ull);
    QCOMPARE(glbl_ptr->cacheRecords[0].shortName, std::string("L1D"));
    QCOMPARE(glbl_ptr->cacheRecords[3].longName, std::string("Level 3 Unified cache, size(KBytes)= 15360"));
}

void tst_CpuTopo::failures()
{
    for (const FailureRow &failure : Failures()) {
        const Case named(failure.name);
        RecordedMachine machine = failure.machine;
        machine.forbiddenCpu = failure.forbiddenCpu;
        machine.unbindableCpu = failure.unbindableCpu;
        SetCpuMachine(&machine);
        QVERIFY2(GetSysLogicalProcessorCount() == 0u && glbl_ptr->error == failure.error, failure.name);
        const Ids counts = {GetSysProcessorCoreCount(), GetSysEachCacheCount(0), GetthreadCount(0, 0),
                            SlectOrdfromPkg(-1, -1, -1)};
        QCOMPARE(counts, Ids(4, 0u));
        QCOMPARE(GetHWMTConfig(0), -1);
        QCOMPARE(getEnumerateAPICID(0), 0xFFFFFFFFu);
        QCOMPARE(machine.bindings, failure.bindings); // a failed read is not repeated
        cleanup();
        init();
    }
}

void tst_CpuTopo::processorName()
{
    // Without extended leaves, and with 48 characters: leading spaces and no terminating zero.
    for (const QByteArray &name : {QByteArray(), QByteArray("      Some Processor of forty-eight characters X")}) {
        const Case named(name);
        RecordedMachine machine(R::Intel, 2, {0});
        machine.Set(0x80000000u, 0, {name.isEmpty() ? 0 : 0x80000008u, 0, 0, 0});
        for (int i = 0; i < name.size() / 16; ++i) {
            CpuidRegisters r;
            std::memcpy(&r, name.constData() + 16 * i, sizeof r);
            machine.Set(0x80000002u + unsigned(i), 0, r);
        }
        SetCpuMachine(&machine);
        QCOMPARE(QByteArray(GetCpuDescription()), name);
        QCOMPARE(machine.bindings, 0);
        SetCpuMachine(nullptr);
    }
}

QTEST_GUILESS_MAIN(tst_CpuTopo)
#include "cpu_topo_test.moc"
