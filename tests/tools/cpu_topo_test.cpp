// CPU topology: recorded machines, failures, and the processor's name.
#include "cpuid2/cpu_topo.h"

#include "Case.h"
#include "RecordedMachine.h"
#include "Table.h"

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

using R = RecordedMachine;
constexpr unsigned D = 1; // type of a cache

std::vector<Ids> ListsOf(const QString &cell)
{
    std::vector<Ids> lists;
    for (const QString &list : cell.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        lists.emplace_back();
        for (const QString &number : list.split(QLatin1Char(' ')))
            lists.back().push_back(number.toUInt());
    }
    return lists;
}

Caches CachesAfterFirst(const std::vector<Ids> &lists)
{
    Caches caches;
    for (size_t i = 1; i < lists.size(); ++i)
        caches.push_back({lists[i][0], lists[i][1], lists[i][2], lists[i][3], lists[i][4]});
    return caches;
}

/// Returns the machine of a row of machines.tsv, which explains the columns.
R MachineOf(const QStringList &row)
{
    Ids ids;
    for (const Ids &run : ListsOf(row[3]))
        ids = ids + Range(run[0], run[1], run.size() > 2 ? run[2] : 1);
    R machine(row[1] == QLatin1String("Intel") ? R::Intel : R::Amd, row[2].toUInt(), ids);
    if (row[1] == QLatin1String("Hygon"))
        machine.Set(0, 0, {row[2].toUInt(), 0x6F677948, 0x656E6975, 0x6E65476E}); // "HygonGenuine"
    std::vector<RecordedLevel> levels;
    for (const Ids &level : ListsOf(row[6]))
        levels.push_back({level[0], level[1], level[2]});
    if (!row[4].isEmpty())
        machine.PerPackage(row[4].toUInt());
    if (const auto lists = ListsOf(row[5]); !lists.empty())
        machine.Caches(lists[0][0], CachesAfterFirst(lists));
    if (!levels.empty())
        machine.Levels(levels);
    if (const auto cores = ListsOf(row[7]); !cores.empty())
        machine.AmdCores(cores[0][0], cores[0][1], cores[0][2]);
    if (const auto lists = ListsOf(row[8]); !lists.empty())
        machine.AmdExtensions(lists[0][0], CachesAfterFirst(lists));
    return machine;
}

/// Returns whether the parts of each identifier add up to it.
bool AddsUp()
{
    CpuTopology &g = *glbl_ptr;
    bool isWhole = CompareEqualGenericAffinity(&g.processAffinity, &g.systemAffinity);
    for (unsigned i = 0; i < g.threadCount; ++i) {
        const CpuThreadRecord &r = g.threadRecords[i];
        isWhole &= (r.packageId << g.packageShift | r.coreId << g.smtWidth | r.smtId) == r.apicId;
        for (unsigned c = 0; c < MAX_CACHE_SUBLEAFS; ++c)
            isWhole &= r.cacheId[c] + r.cacheSmtId[c] == r.apicId && r.cacheSmtId[c] >> g.cacheWidth[c] == 0;
    }
    return isWhole && g.maxCacheSubleaf == (g.cacheRecords.empty() ? 0 : g.cacheRecords.size() - 1);
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
    void fieldsAndNames();
    void masks();
};

void tst_CpuTopo::cleanup()
{
    CPUIDExit();
    SetCpuMachine(nullptr);
}

void tst_CpuTopo::recorded()
{
    for (const QStringList &row : ReadTable(QStringLiteral(MACHINES))) {
        const Case named(row[0]);
        R machine = MachineOf(row);
        const std::vector<Ids> expected = ListsOf(row[9]);
        const unsigned packages = expected[0][0], threads = expected[0][2];
        SetCpuMachine(&machine);
        QCOMPARE(Ids({GetSysProcessorPackageCount(), GetSysProcessorCoreCount(), GetSysLogicalProcessorCount(),
                      GetcoreCount(0), GetthreadCount(0, 0)}),
                 expected[0]);
        QCOMPARE(GetcoreCount(packages), 0u);
        QCOMPARE(glbl_ptr->cacheRecords.size(), expected.size() - 1);
        QCOMPARE(GetSysEachCacheCount(MAX_CACHE_SUBLEAFS), 0u);
        for (unsigned i = 0; i + 1 < expected.size(); ++i) {
            const unsigned kb = glbl_ptr->cacheRecords[i].sizeKb;
            QCOMPARE(Ids({GetSysEachCacheCount(i), GetCoreCountPerEachCache(i, 0), kb}), expected[i + 1]);
            QCOMPARE(GetCacheTotalLize(MaxLeaf(machine), i), kb * 1024ull);
            QCOMPARE(glbl_ptr->cacheMask[i], (1u << glbl_ptr->cacheWidth[i]) - 1);
        }
        InitCpuTopology();
        QCOMPARE(machine.bindings, int(threads)); // each processor is read only once
        QVERIFY(AddsUp());
        QCOMPARE(GetHWMTConfig(0), 0);
        QCOMPARE(glbl_ptr->hwmtThreadsPerCore, expected[0][4]);
        QCOMPARE(glbl_ptr->hwmtThreadsPerPackage, row[0][0] == QLatin1Char('h') ? 1 : threads / packages); // hypervisor
        cleanup();
        init();
    }
}

void tst_CpuTopo::ordinals()
{
    RecordedMachine machine = MachineOf(ReadTable(QStringLiteral(MACHINES)).first());
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
    QCOMPARE(GetHWMTConfig(2), -1);
    machine.unbindableCpu = 12;
    QCOMPARE(GetHWMTConfig(1), -1);
    QCOMPARE(GetCacheTotalLize(3, 0), 0ull);
}

void tst_CpuTopo::failures()
{
    const QStringList errors = QStringLiteral("affinity binding general analysis legacy").split(QLatin1Char(' '));
    const std::vector<unsigned> codes = {kTopologyAffinityError, kTopologyBindError, kTopologyGeneralError,
                                         kTopologyAnalysisError, kTopologyLegacyError};
    for (const QStringList &row : ReadTable(QStringLiteral(FAILING_MACHINES))) {
        const Case named(row[0]);
        const auto processor = [](const QString &cell) { return cell.isEmpty() ? -1 : cell.toInt(); };
        RecordedMachine machine = MachineOf(row);
        machine.forbiddenCpu = processor(row[11]);
        machine.unbindableCpu = processor(row[12]);
        SetCpuMachine(&machine);
        QCOMPARE(GetSysLogicalProcessorCount(), 0u);
        QCOMPARE(glbl_ptr->error, codes.at(size_t(errors.indexOf(row[9]))));
        const Ids counts = {GetSysProcessorCoreCount(), GetSysEachCacheCount(0), GetthreadCount(0, 0),
                            SlectOrdfromPkg(-1, -1, -1)};
        QCOMPARE(counts, Ids(4, 0u));
        QCOMPARE(GetHWMTConfig(0), -1);
        QCOMPARE(getEnumerateAPICID(0), 0xFFFFFFFFu);
        QCOMPARE(machine.bindings, row[10].toInt()); // a failed read is not repeated
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

void tst_CpuTopo::fieldsAndNames()
{
    CPUIDExit();
    QCOMPARE(GetSysLogicalProcessorCount() + GetSysEachCacheCount(0), 0u); // without a record
    const unsigned bits[][4] = {
        {0xABCD1234, 8, 15, 0x12}, {~0u, 0, 31, ~0u}, {1u << 31, 31, 31, 1}, {~0u, 5, 4, 0}, {~0u, 0, 32, 0}};
    for (const auto &[value, from, to, wanted] : bits)
        QCOMPARE(getBitsFromDWORD(value, from, to), wanted);
    const std::pair<unsigned, unsigned> widths[] = {{0, 0}, {1, 0}, {2, 1}, {3, 2}, {4, 2}, {5, 3}, {255, 8}};
    for (const auto &[count, width] : widths)
        QCOMPARE(WidthOf(count), width);
    QCOMPARE(CacheBytes({0, 1 << 22 | 2 << 12 | 3, 4, 0}), 2ull * 3 * 4 * 5);
    RecordedMachine machine(R::Intel, 4, {0});
    machine.Caches(1, {{1, D, 1, 64, 8}, {1, 2, 1, 64, 8}, {2, 3, 1, 128, 8}, {3, 5, 1, 64, 8}});
    QByteArray names;
    for (unsigned i = 0; i < 5; ++i)
        names += QByteArray::fromStdString(DescribeCache(machine, i).shortName + ": "
                                           + DescribeCache(machine, i).longName + "\n");
    QCOMPARE(names,
             QByteArray("L1D: Level 1 Data cache, size(KBytes)= 32\n"
                        "L1I: Level 1 Instruction cache, size(KBytes)= 32\n"
                        "L2: Level 2 Unified cache, size(KBytes)= 64\n"
                        "L3: Level 3 cache type undefined, size(KBytes)= 32\n"
                        "Null: Level 0 Null, end of cache_type list, size(KBytes)= 0\n"));
}

void tst_CpuTopo::masks()
{
    GenericAffinityMask mask, empty, larger;
    QVERIFY(AllocateGenericAffinityMask(&mask, 1017) == 0 && AllocateGenericAffinityMask(&empty, 1024) == 0
            && AllocateGenericAffinityMask(&larger, 1025) == 0);
    QVERIFY(!CompareEqualGenericAffinity(&empty, &larger));
    QCOMPARE(FormatHexMask(&empty), std::string("0"));
    const QString rows = QStringLiteral("0 1 1,5 20 20,11 800 800,12 1z3 1000,63 8z15 8000000000000000,64 1z16 1z16,"
                                        "127 8z31 8z16000000000000000,128 1z32 1z32");
    for (const QString &row : rows.split(QLatin1Char(','))) { // a processor and its mask in both forms
        const Case named(row);
        const QStringList cells = row.split(QLatin1Char(' '));
        const unsigned cpu = cells[0].toUInt();
        QCOMPARE(FormatSingleBitMask(cpu), cells[1].toStdString());
        QCOMPARE(SetGenericAffinityBit(&mask, cpu), 0);
        QCOMPARE(FormatHexMask(&mask), cells[2].toStdString());
        QVERIFY(TestGenericAffinityBit(&mask, cpu) == 1 && !CompareEqualGenericAffinity(&mask, &empty));
        QVERIFY(TestGenericAffinityBit(&mask, cpu ^ 1) == 0 && SetGenericAffinityBit(&mask, cpu ^ 1) == 0);
        QCOMPARE(ClearGenericAffinityBit(&mask, cpu), 0);
        QVERIFY(TestGenericAffinityBit(&mask, cpu) == 0 && TestGenericAffinityBit(&mask, cpu ^ 1) == 1);
        ClearGenericAffinityMask(&mask);
        QVERIFY(CompareEqualGenericAffinity(&mask, &empty));
    }
    QCOMPARE(SetGenericAffinityBit(&mask, 1023), 0); // room comes in whole bytes
    QVERIFY(SetGenericAffinityBit(&mask, 1024) == -1 && ClearGenericAffinityBit(&mask, 1024) == -1
            && TestGenericAffinityBit(&mask, 1024) == 255);
    QCOMPARE(FormatHexMask(&mask).substr(0, 4), std::string("8z32"));
    FreeGenericAffinityMask(&mask);
    QVERIFY(!mask.bits && mask.maxByteLength == 0);
    QCOMPARE(countBits(0xF00000000000000Full), 8u);
}

QTEST_GUILESS_MAIN(tst_CpuTopo)
#include "cpu_topo_test.moc"
