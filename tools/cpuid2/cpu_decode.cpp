#include "cpu_decode.h"

#include "cpu_topo.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr unsigned kLeafBLevelsMax = 16; // more than any processor has; ends the loop if a processor reports no end
constexpr unsigned kSmtLevel = 1;
constexpr unsigned kCoreLevel = 2;
constexpr unsigned kAmdCacheLeaf = 0x8000001Du;
constexpr unsigned kAmdSmtFamily = 0x17; // in earlier families, leaf 0x8000001E counts cores of a compute unit

bool HasExtendedLeaf(CpuMachine &machine, unsigned leaf)
{
    return machine.Cpuid(0x80000000u, 0).eax >= leaf;
}

/// Returns whether the processor was made by AMD, or by Hygon to AMD's design: both leave leaf 4 empty.
bool IsAmd(CpuMachine &machine)
{
    const unsigned ebx = machine.Cpuid(0, 0).ebx;
    return ebx == 0x68747541u || ebx == 0x6F677948u; // "Auth", "Hygo"
}

bool HasAmdFlag(CpuMachine &machine, unsigned bit)
{
    return HasExtendedLeaf(machine, 0x80000001u) && getBitsFromDWORD(machine.Cpuid(0x80000001u, 0).ecx, bit, bit);
}

bool HasCmpLegacy(CpuMachine &machine)
{
    return HasAmdFlag(machine, 1);
}

bool HasTopologyExtensions(CpuMachine &machine)
{
    return HasAmdFlag(machine, 22) && HasExtendedLeaf(machine, kAmdCacheLeaf);
}

unsigned Family(CpuMachine &machine)
{
    const unsigned eax = machine.Cpuid(1, 0).eax;
    return getBitsFromDWORD(eax, 8, 11) + getBitsFromDWORD(eax, 20, 27);
}

ApicFields FieldsOfWidths(unsigned smtWidth, unsigned coreWidth)
{
    ApicFields fields;
    fields.smtWidth = smtWidth;
    fields.smtMask = (1u << smtWidth) - 1;
    fields.coreMask = ((1u << coreWidth) - 1) << smtWidth;
    fields.packageShift = coreWidth + smtWidth;
    fields.packageMask = ~(fields.coreMask | fields.smtMask);
    return fields;
}

/// Reads the extended leaves: leaf 0x80000008 has the combined width of the core and thread fields or, on older
/// processors, a count of threads; leaf 0x8000001E has the number of threads per core.
ApicFields AmdFields(CpuMachine &machine)
{
    const unsigned ecx = machine.Cpuid(0x80000008u, 0).ecx;
    const unsigned idWidth = getBitsFromDWORD(ecx, 12, 15);
    const unsigned bothWidth = idWidth ? idWidth : WidthOf(getBitsFromDWORD(ecx, 0, 7) + 1);
    unsigned smt = 1;
    if (HasTopologyExtensions(machine) && Family(machine) >= kAmdSmtFamily)
        smt = getBitsFromDWORD(machine.Cpuid(0x8000001Eu, 0).ebx, 8, 15) + 1;
    const unsigned smtWidth = std::min(WidthOf(smt), bothWidth);
    return FieldsOfWidths(smtWidth, bothWidth - smtWidth);
}

std::string ShortName(unsigned type, unsigned level)
{
    static const char *const kForms[] = {"Null", "L%dD", "L%dI", "L%d"};
    char text[16];
    std::snprintf(text, sizeof text, kForms[std::min(type, 3u)], level);
    return text;
}

std::string LongName(unsigned type, unsigned level, unsigned sizeKb)
{
    static const char *const kTypes[] = {"Null, end of cache_type list", "Data cache", "Instruction cache",
                                         "Unified cache", "cache type undefined"};
    char text[96];
    std::snprintf(text, sizeof text, "Level %u %s, size(KBytes)= %u", level, kTypes[std::min(type, 4u)], sizeKb);
    return text;
}

} // namespace

unsigned getBitsFromDWORD(unsigned value, unsigned from, unsigned to)
{
    if (from > to || to > 31)
        return 0;
    return (value >> from) & (~0u >> (31 - (to - from)));
}

unsigned char myBitScanReverse(unsigned *index, unsigned value)
{
    *index = value ? 31u - static_cast<unsigned>(__builtin_clz(value)) : 0;
    return value ? 1 : 0;
}

unsigned WidthOf(unsigned count)
{
    unsigned width;
    myBitScanReverse(&width, count ? 2 * count - 1 : 0);
    return width;
}

unsigned MaxLeaf(CpuMachine &machine)
{
    return machine.Cpuid(0, 0).eax;
}

bool HasLeafB(CpuMachine &machine)
{
    return MaxLeaf(machine) >= 11 && machine.Cpuid(11, 0).ebx != 0;
}

bool HasMultiThreading(CpuMachine &machine)
{
    return getBitsFromDWORD(machine.Cpuid(1, 0).edx, 28, 28) != 0;
}

unsigned ApicId(CpuMachine &machine, bool hasLeafB)
{
    return hasLeafB ? machine.Cpuid(11, 0).edx : getBitsFromDWORD(machine.Cpuid(1, 0).ebx, 24, 31);
}

ApicFields LeafBFields(CpuMachine &machine)
{
    ApicFields fields;
    bool hasSmt = false, hasCore = false;
    unsigned coreAndSmt = 0;
    for (unsigned subleaf = 0; subleaf < kLeafBLevelsMax; ++subleaf) {
        const CpuidRegisters r = machine.Cpuid(11, subleaf);
        if (r.ebx == 0)
            break;
        const unsigned type = getBitsFromDWORD(r.ecx, 8, 15);
        const unsigned shift = getBitsFromDWORD(r.eax, 0, 4);
        const unsigned mask = ~0u << shift;
        if (type == kSmtLevel) {
            hasSmt = true;
            fields.smtMask = ~mask;
            fields.smtWidth = shift;
        } else if (type == kCoreLevel) {
            hasCore = true;
            coreAndSmt = ~mask;
            fields.packageShift = shift;
            fields.packageMask = mask;
        }
    }
    if (!hasSmt) {
        fields.error = kTopologyGeneralError;
    } else if (hasCore) {
        fields.coreMask = coreAndSmt ^ fields.smtMask;
    } else {
        fields.packageShift = fields.smtWidth;
        fields.coreMask = 0;
        fields.packageMask = ~fields.smtMask;
    }
    return fields;
}

ApicFields LegacyFields(CpuMachine &machine)
{
    const unsigned perPackage = getBitsFromDWORD(machine.Cpuid(1, 0).ebx, 16, 23);
    unsigned cores = 1;
    if (MaxLeaf(machine) >= 4) {
        const CpuidRegisters leaf4 = machine.Cpuid(4, 0);
        if (IsAmd(machine) && getBitsFromDWORD(leaf4.eax, 0, 4) == 0 && HasExtendedLeaf(machine, 0x80000008u))
            return AmdFields(machine);
        cores = getBitsFromDWORD(leaf4.eax, 26, 31) + 1;
    } else if (HasCmpLegacy(machine)) {
        ApicFields fields; // leaf 1 counts cores, not threads; the layout of the identifier is unknown
        fields.error = kTopologyLegacyError;
        return fields;
    }
    const unsigned smt = std::max(perPackage / cores, 1u); // some hypervisors report fewer threads than cores
    return FieldsOfWidths(WidthOf(smt), WidthOf(cores));
}

unsigned CacheLeaf(CpuMachine &machine)
{
    return IsAmd(machine) && HasTopologyExtensions(machine) ? kAmdCacheLeaf : 4;
}

CacheDescription DescribeCache(CpuMachine &machine, unsigned subleaf)
{
    const CpuidRegisters r = machine.Cpuid(CacheLeaf(machine), subleaf);
    CacheDescription cache;
    cache.type = getBitsFromDWORD(r.eax, 0, 4);
    cache.level = getBitsFromDWORD(r.eax, 5, 7);
    cache.sizeKb = static_cast<unsigned>(CacheBytes(r) >> 10);
    cache.sharingCount = getBitsFromDWORD(r.eax, 14, 25) + 1;
    cache.shortName = ShortName(cache.type, cache.level);
    cache.longName = LongName(cache.type, cache.level, cache.sizeKb);
    return cache;
}

unsigned long long CacheBytes(const CpuidRegisters &cacheLeaf)
{
    const unsigned long long sets = cacheLeaf.ecx + 1ull;
    const unsigned long long ways = getBitsFromDWORD(cacheLeaf.ebx, 22, 31) + 1;
    const unsigned long long partitions = getBitsFromDWORD(cacheLeaf.ebx, 12, 21) + 1;
    const unsigned long long lineBytes = getBitsFromDWORD(cacheLeaf.ebx, 0, 11) + 1;
    return sets * ways * partitions * lineBytes;
}
