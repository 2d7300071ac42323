// Enumeration and numbering of the processors, and affinity masks.
#include "cpu_topo.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

constexpr const char *kSource = "cpu_topo.cpp"; // for messages

/// Thrown to end InitCpuTopology() when the processors' data is inconsistent.
struct Inconsistent { };

[[noreturn]] void __attribute__((format(printf, 1, 2))) Bye(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    throw Inconsistent();
}

void AllocArrays(unsigned count)
{
    CpuTopology &g = *glbl_ptr;
    g.threadRecords.assign(size_t(count) + 1, {});
    g.perPkg_detectedCoresCount.Allocate(count, 1);
    g.perCore_detectedThreadsCount.Allocate(count, MAX_CORES);
    g.perEachCache_detectedThreadCount.Allocate(count, MAX_CACHE_SUBLEAFS);
}

void TakeFields(const ApicFields &fields)
{
    CpuTopology &g = *glbl_ptr;
    g.smtMask = fields.smtMask;
    g.coreMask = fields.coreMask;
    g.packageMask = fields.packageMask;
    g.packageShift = fields.packageShift;
    g.smtWidth = fields.smtWidth;
    g.error |= fields.error;
}

void CPUTopologyLeafBConstants()
{
    TakeFields(LeafBFields(CurrentCpuMachine()));
}

void CPUTopologyLegacyConstants()
{
    TakeFields(LegacyFields(CurrentCpuMachine()));
}

/// Returns whether the list of subleaves of leaf 4 or 11 ends at these registers.
bool EndsList(unsigned leaf, const CpuidRegisters &r)
{
    return leaf == 4 ? getBitsFromDWORD(r.eax, 0, 4) == 0 : r.ebx == 0;
}

void ReadLeaf(unsigned leaf)
{
    CpuidLeafSnapshot &snapshot = glbl_ptr->cpuidSnapshot[leaf];
    _CPUID(&snapshot.subleaf[0], leaf, 0);
    snapshot.subleafCount = 1;
    if (leaf != 4 && leaf != 11)
        return;
    for (unsigned subleaf = 1; !EndsList(leaf, snapshot.subleaf[subleaf - 1]); ++subleaf) {
        if (subleaf >= MAX_CACHE_SUBLEAFS)
            Bye("Need bigger MAX_CACHE_SUBLEAFS(%d) at %s %d\n", MAX_CACHE_SUBLEAFS, kSource, __LINE__);
        _CPUID(&snapshot.subleaf[subleaf], leaf, subleaf);
        snapshot.subleafCount = subleaf + 1;
    }
}

void InitStructuredLeafBuffers()
{
    const unsigned maxLeaf = MaxLeaf(CurrentCpuMachine());
    if (maxLeaf >= MAX_LEAFS)
        Bye("got maxCPUID= 0x%x but the array only handles up to 0x%x. Bye at %s %d\n", maxLeaf, MAX_LEAFS, kSource,
            __LINE__);
    for (unsigned leaf = 0; leaf <= maxLeaf; ++leaf)
        ReadLeaf(leaf);
}

/// Adds the cache to the record. Returns its index, or -1 after the last one.
int FindEachCacheIndex(unsigned maxLeaf, unsigned subleaf)
{
    CpuTopology &g = *glbl_ptr;
    CacheDescription cache;
    if (maxLeaf < 4) {
        if (maxLeaf < 2 || subleaf > 0)
            return -1;
        cache.shortName = "$";
        cache.longName = "described by cpuid leaf 2";
        const unsigned perPackage = getBitsFromDWORD(CurrentCpuMachine().Cpuid(1, 0).ebx, 16, 23);
        cache.sharingCount = HasMultiThreading(CurrentCpuMachine()) ? perPackage : 1;
    } else {
        cache = DescribeCache(CurrentCpuMachine(), subleaf);
        if (cache.type == 0 || subleaf >= MAX_CACHE_SUBLEAFS)
            return -1;
    }
    g.cacheRecords.push_back(cache);
    return static_cast<int>(subleaf);
}

void FindCaches()
{
    CpuTopology &g = *glbl_ptr;
    const unsigned maxLeaf = MaxLeaf(CurrentCpuMachine());
    if (maxLeaf >= 4)
        InitStructuredLeafBuffers();
    g.maxCacheSubleaf = 0;
    for (unsigned subleaf = 0;; ++subleaf) {
        const int index = FindEachCacheIndex(maxLeaf, subleaf);
        if (index < 0)
            return;
        const unsigned width = WidthOf(g.cacheRecords.back().sharingCount);
        g.maxCacheSubleaf = static_cast<unsigned>(index);
        g.cacheWidth[index] = width;
        g.cacheMask[index] = width == 31 ? ~0u : (1u << width) - 1;
    }
}

void SetChkProcessAffinityConsistency()
{
    CpuTopology &g = *glbl_ptr;
    AffinityBytes allowed = {};
    const bool isKnown = CurrentCpuMachine().Affinity(&allowed);
    for (unsigned cpu = 0; cpu < g.osProcessorCount; ++cpu) {
        if (isKnown && cpu / 8 < allowed.size() && (allowed[cpu / 8] >> (cpu % 8) & 1)) {
            SetGenericAffinityBit(&g.processAffinity, cpu);
            SetGenericAffinityBit(&g.systemAffinity, cpu);
        } else {
            g.error |= kTopologyAffinityError;
        }
    }
}

void ParseIDS4EachThread(unsigned cpu, unsigned index)
{
    CpuTopology &g = *glbl_ptr;
    CpuThreadRecord &record = g.threadRecords[index];
    const unsigned apic = ApicId(CurrentCpuMachine(), g.hasLeafB != 0);
    record.apicId = apic;
    record.cpu = cpu;
    record.packageId = (apic & g.packageMask) >> g.packageShift;
    record.coreId = (apic & g.coreMask) >> g.smtWidth;
    record.smtId = apic & g.smtMask;
    for (unsigned i = 0; i < MAX_CACHE_SUBLEAFS; ++i) {
        record.cacheSmtId[i] = apic & g.cacheMask[i];
        record.cacheId[i] = apic & ~g.cacheMask[i];
    }
}

/// Reads the identifier of every processor. Returns their number, or -1.
int QueryParseSubIDs()
{
    CpuTopology &g = *glbl_ptr;
    if (AllocateGenericAffinityMask(&g.processAffinity, g.osProcessorCount) != 0
        || AllocateGenericAffinityMask(&g.systemAffinity, g.osProcessorCount) != 0) {
        g.error |= kTopologyGeneralError;
        return -1;
    }
    SetChkProcessAffinityConsistency();
    if (g.error)
        return -1;
    unsigned index = 0;
    for (unsigned cpu = 0; cpu < g.osProcessorCount; ++cpu) {
        if (TestGenericAffinityBit(&g.processAffinity, cpu) != 1)
            continue;
        if (BindContext(cpu) != 0) {
            g.error |= kTopologyBindError;
            break;
        }
        ParseIDS4EachThread(cpu, index++);
    }
    g.threadCount = index;
    return g.error ? -1 : static_cast<int>(index);
}

/// Returns the counter; ends the analysis if the table has no room for it.
unsigned &Counter(CounterTable &table, unsigned row, unsigned column)
{
    if (row >= table.dim[0])
        Bye("got too large 1st dimension %d which is bigger than %d at %s %d. Bye\n", row, table.dim[0], kSource,
            __LINE__);
    if (column >= table.dim[1])
        Bye("got too large 2nd dimension %d which is bigger than %d at %s %d. Bye\n", column, table.dim[1], kSource,
            __LINE__);
    return table.At(row, column);
}

/// Returns the index of @p id among those seen so far; appends it if it is new.
unsigned Ordinal(std::vector<unsigned> *seen, unsigned id)
{
    const auto found = std::find(seen->begin(), seen->end(), id);
    const auto ordinal = static_cast<unsigned>(found - seen->begin());
    if (found == seen->end())
        seen->push_back(id);
    return ordinal;
}

void NumberThreads(int count)
{
    CpuTopology &g = *glbl_ptr;
    if (count < 0)
        return;
    bool failed = numberPackagesAndCores(static_cast<unsigned>(count)) < 0;
    for (unsigned index = 0; index < g.cacheRecords.size(); ++index)
        failed |= numberCaches(index, static_cast<unsigned>(count)) < 0;
    if (failed)
        g.error |= kTopologyAnalysisError;
}

void FindFields()
{
    CpuTopology &g = *glbl_ptr;
    CpuMachine &machine = CurrentCpuMachine();
    g.hasLeafB = HasLeafB(machine) ? 1 : 0;
    if (!HasMultiThreading(machine))
        TakeFields(ApicFields()); // one processor per package
    else if (g.hasLeafB)
        CPUTopologyLeafBConstants();
    else
        CPUTopologyLegacyConstants();
}

int PastMask(const char *format, const GenericAffinityMask &mask, unsigned cpu, int line)
{
    std::printf(format, cpu, mask.maxByteLength * 8, kSource, line);
    return -1;
}

} // namespace

CpuTopology *glbl_ptr = nullptr;

void CounterTable::Allocate(unsigned rows, unsigned columns)
{
    dim[0] = rows;
    dim[1] = columns;
    data.assign(size_t(rows) * columns, 0);
}

CpuTopology *CPUIDInit()
{
    if (!glbl_ptr)
        glbl_ptr = new CpuTopology;
    return glbl_ptr;
}

void CPUIDExit()
{
    delete glbl_ptr;
    glbl_ptr = nullptr;
}

void InitCpuTopology()
{
    if (!glbl_ptr || glbl_ptr->packageCount || glbl_ptr->error)
        return;
    CpuTopology &g = *glbl_ptr;
    try {
        g.osProcessorCount = GetMaxCPUSupportedByOS();
        AllocArrays(g.osProcessorCount);
        FindFields();
        if (g.error)
            return;
        FindCaches();
        NumberThreads(QueryParseSubIDs());
    } catch (const Inconsistent &) {
        g.error = kTopologyGeneralError;
    }
}

int BindContext(unsigned cpu)
{
    AffinityBytes mask = {};
    if (cpu / 8 < mask.size())
        mask[cpu / 8] = static_cast<unsigned char>(1u << (cpu % 8));
    return CurrentCpuMachine().Bind(mask) ? 0 : -1;
}

unsigned GetMaxCPUSupportedByOS()
{
    return CurrentCpuMachine().ProcessorCount();
}

void _CPUID(CpuidRegisters *registers, unsigned leaf, unsigned subleaf)
{
    *registers = CurrentCpuMachine().Cpuid(leaf, subleaf);
}

int numberPackagesAndCores(unsigned count)
{
    CpuTopology &g = *glbl_ptr;
    std::vector<unsigned> packages;
    std::vector<std::vector<unsigned>> cores; // of each package
    for (unsigned i = 0; i < count; ++i) {
        CpuThreadRecord &record = g.threadRecords[i];
        record.packageOrdinal = Ordinal(&packages, record.packageId);
        if (record.packageOrdinal >= g.perPkg_detectedCoresCount.dim[0])
            Bye("got error. maxPackageDetetcted(%d) >= glbl_ptr->perPkg_detectedCoresCount.dim[0](%d) at %s %d. Bye\n",
                record.packageOrdinal, g.perPkg_detectedCoresCount.dim[0], kSource, __LINE__);
        cores.resize(packages.size());
        std::vector<unsigned> &seen = cores[record.packageOrdinal];
        record.coreOrdinal = Ordinal(&seen, record.coreId);
        g.perPkg_detectedCoresCount.At(record.packageOrdinal, 0) = static_cast<unsigned>(seen.size());
        unsigned &threads = Counter(g.perCore_detectedThreadsCount, record.packageOrdinal, record.coreOrdinal);
        record.threadOrdinal = threads++;
        if (record.threadOrdinal == 0)
            ++g.coreCount;
    }
    g.packageCount = static_cast<unsigned>(packages.size());
    return count ? 0 : -1;
}

int numberCaches(unsigned subleaf, unsigned count)
{
    CpuTopology &g = *glbl_ptr;
    CounterTable &table = g.perEachCache_detectedThreadCount;
    if (subleaf >= table.dim[1])
        Bye("Error: Got subleaf(%d) >= glbl_ptr->perEachCache_detectedThreadCount.dim[1](%d) at %s %d. Bye\n", subleaf,
            table.dim[1], kSource, __LINE__);
    std::vector<unsigned> caches;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned cache = Ordinal(&caches, g.threadRecords[i].cacheId[subleaf]);
        if (cache >= table.dim[0])
            Bye("Error: Got maxCacheDetected(%d) >= glbl_ptr->perEachCache_detectedThreadCount.dim[0](%d) at %s %d. "
                "Bye\n",
                cache, table.dim[0], kSource, __LINE__);
        ++table.At(cache, subleaf);
    }
    g.eachCacheCount[subleaf] = static_cast<unsigned>(caches.size());
    return count ? 0 : -1;
}

int AllocateGenericAffinityMask(GenericAffinityMask *mask, unsigned cpuCount)
{
    const unsigned bytes = cpuCount / 8 + (cpuCount % 8 ? 1 : 0);
    mask->bits.reset(new (std::nothrow) unsigned char[bytes]());
    mask->maxByteLength = mask->bits ? bytes : 0;
    if (mask->bits)
        return 0;
    std::printf("Error: AllocateGenericAffinityMask 2nd malloc failed at %s %d. Bye\n", kSource, __LINE__);
    return -1;
}

void FreeGenericAffinityMask(GenericAffinityMask *mask)
{
    mask->bits.reset();
    mask->maxByteLength = 0;
}

int SetGenericAffinityBit(GenericAffinityMask *mask, unsigned cpu)
{
    if (cpu / 8 >= mask->maxByteLength)
        return PastMask("Error: Wanted cpu %u but mask only supports up to %u cpus at %s %d. Bye\n", *mask, cpu,
                        __LINE__);
    mask->bits[cpu / 8] = static_cast<unsigned char>(mask->bits[cpu / 8] | 1u << (cpu % 8));
    return 0;
}

int ClearGenericAffinityBit(GenericAffinityMask *mask, unsigned cpu)
{
    if (cpu / 8 >= mask->maxByteLength)
        return PastMask("Error: Wanted cpu %u but mask only supports up to %u cpus at %s %d. Bye\n", *mask, cpu,
                        __LINE__);
    mask->bits[cpu / 8] = static_cast<unsigned char>(mask->bits[cpu / 8] & ~(1u << (cpu % 8)));
    return 0;
}

void ClearGenericAffinityMask(GenericAffinityMask *mask)
{
    std::fill_n(mask->bits.get(), mask->maxByteLength, static_cast<unsigned char>(0));
}

unsigned char TestGenericAffinityBit(const GenericAffinityMask *mask, unsigned cpu)
{
    if (cpu / 8 < mask->maxByteLength)
        return mask->bits[cpu / 8] >> (cpu % 8) & 1;
    PastMask("Error: Wanted cpu %u but mask only supports up to %u cpus at %s %d. Bye\n", *mask, cpu, __LINE__);
    return 255;
}

bool CompareEqualGenericAffinity(const GenericAffinityMask *a, const GenericAffinityMask *b)
{
    return a->maxByteLength == b->maxByteLength
        && std::equal(a->bits.get(), a->bits.get() + a->maxByteLength, b->bits.get());
}
