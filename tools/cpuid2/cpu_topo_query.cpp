// Queries on the record of cpu_topo.h, and masks as text.
#include "cpu_topo.h"

#include <cstdio>
#include <cstring>

namespace {

/// Reads the topology if @p counter is still 0. Returns whether a topology is known.
bool HasTopology(unsigned CpuTopology::*counter)
{
    if (!glbl_ptr)
        return false;
    if (glbl_ptr->*counter == 0)
        InitCpuTopology();
    return glbl_ptr->error == 0;
}

unsigned Count(unsigned CpuTopology::*counter)
{
    return HasTopology(counter) ? glbl_ptr->*counter : 0;
}

bool HasTopology()
{
    return HasTopology(&CpuTopology::packageCount);
}

unsigned CountIn(CounterTable CpuTopology::*table, unsigned row, unsigned column)
{
    return HasTopology() && (glbl_ptr->*table).Holds(row, column) ? (glbl_ptr->*table).At(row, column) : 0;
}

bool Fits(int wanted, unsigned ordinal)
{
    return wanted == -1 || (wanted >= 0 && static_cast<unsigned>(wanted) == ordinal);
}

std::string Replaced(std::string text, size_t zeros, const char *with)
{
    const std::string run(zeros, '0');
    for (size_t at = text.find(run); at != std::string::npos; at = text.find(run, at))
        text.replace(at, zeros, with);
    return text;
}

std::string WithoutLeadingZeros(const std::string &digits)
{
    const size_t first = digits.find_first_not_of('0');
    return first == std::string::npos ? "0" : digits.substr(first);
}

} // namespace

unsigned GetSysLogicalProcessorCount()
{
    return Count(&CpuTopology::threadCount);
}

unsigned GetSysProcessorCoreCount()
{
    return Count(&CpuTopology::coreCount);
}

unsigned GetSysProcessorPackageCount()
{
    return Count(&CpuTopology::packageCount);
}

unsigned GetOSLogicalProcessorCount()
{
    return Count(&CpuTopology::osProcessorCount);
}

unsigned GetSysEachCacheCount(unsigned subleaf)
{
    return HasTopology() && subleaf < MAX_CACHE_SUBLEAFS ? glbl_ptr->eachCacheCount[subleaf] : 0;
}

unsigned GetCoreCountPerEachCache(unsigned subleaf, unsigned cacheOrdinal)
{
    return CountIn(&CpuTopology::perEachCache_detectedThreadCount, cacheOrdinal, subleaf);
}

unsigned GetcoreCount(unsigned package)
{
    return CountIn(&CpuTopology::perPkg_detectedCoresCount, package, 0);
}

unsigned GetthreadCount(unsigned package, unsigned core)
{
    return CountIn(&CpuTopology::perCore_detectedThreadsCount, package, core);
}

unsigned getEnumerateAPICID(unsigned index)
{
    return index < GetOSLogicalProcessorCount() && HasTopology() ? glbl_ptr->threadRecords[index].apicId : 0xFFFFFFFFu;
}

unsigned SlectOrdfromPkg(int package, int core, int thread)
{
    for (unsigned i = 0; HasTopology() && i < glbl_ptr->threadCount; ++i) {
        const CpuThreadRecord &record = glbl_ptr->threadRecords[i];
        if (Fits(package, record.packageOrdinal) && Fits(core, record.coreOrdinal)
            && Fits(thread, record.threadOrdinal))
            return i;
    }
    return 0;
}

int GetHWMTConfig(unsigned package)
{
    if (package >= GetSysProcessorPackageCount())
        return -1;
    CpuTopology &g = *glbl_ptr;
    if (BindContext(g.threadRecords[SlectOrdfromPkg(static_cast<int>(package), -1, -1)].cpu) != 0)
        return -1;
    CpuMachine &machine = CurrentCpuMachine();
    if (g.hasLeafB) {
        g.hwmtThreadsPerCore = getBitsFromDWORD(machine.Cpuid(11, 0).ebx, 0, 15);
        g.hwmtThreadsPerPackage = getBitsFromDWORD(machine.Cpuid(11, 1).ebx, 0, 15);
    } else {
        g.hwmtThreadsPerCore = g.smtMask + 1;
        g.hwmtThreadsPerPackage = HasMultiThreading(machine) ? getBitsFromDWORD(machine.Cpuid(1, 0).ebx, 16, 23) : 1;
    }
    return 0;
}

unsigned long long GetCacheTotalLize(unsigned maxCPUID, unsigned subleaf)
{
    CpuMachine &machine = CurrentCpuMachine();
    return maxCPUID >= 4 ? CacheBytes(machine.Cpuid(CacheLeaf(machine), subleaf)) : 0;
}

const char *GetCpuDescription()
{
    static char text[48 + 1]; // the processor's 48 bytes may lack a terminating zero
    constexpr unsigned kFirst = 0x80000002u;
    const unsigned last = CurrentCpuMachine().Cpuid(0x80000000u, 0).eax;
    for (unsigned leaf = kFirst; leaf <= last && leaf < kFirst + 3; ++leaf) {
        const CpuidRegisters r = CurrentCpuMachine().Cpuid(leaf, 0);
        const unsigned words[4] = {r.eax, r.ebx, r.ecx, r.edx};
        std::memcpy(text + (leaf - kFirst) * sizeof words, words, sizeof words);
    }
    return text;
}

unsigned countBits(unsigned long long word)
{
    return static_cast<unsigned>(__builtin_popcountll(word));
}

std::string CompressHexMask(const std::string &digits)
{
    return Replaced(Replaced(digits, 32, "z32"), 16, "z16");
}

std::string FormatHexMask(const GenericAffinityMask *mask)
{
    std::string digits;
    for (unsigned i = mask->maxByteLength; i-- > 0;) {
        char two[3];
        std::snprintf(two, sizeof two, "%02x", static_cast<unsigned>(mask->bits[i]));
        digits += two;
    }
    return CompressHexMask(WithoutLeadingZeros(digits));
}

std::string FormatSingleBitMask(unsigned cpu)
{
    static const char *const kForms[] = {"%x", "%x0", "%x00", "%xz%d"};
    const unsigned zeros = cpu / 4;
    char text[24];
    std::snprintf(text, sizeof text, kForms[zeros < 3 ? zeros : 3], 1u << (cpu % 4), zeros);
    return text;
}
