#include "RecordedMachine.h"

#include <cstring>

namespace {

constexpr unsigned kTopologyExtensions = 1u << 22;

void SetName(CpuidRegisters *leaf0, const char *ebx, const char *edx, const char *ecx)
{
    std::memcpy(&leaf0->ebx, ebx, 4);
    std::memcpy(&leaf0->edx, edx, 4);
    std::memcpy(&leaf0->ecx, ecx, 4);
}

} // namespace

RecordedMachine::RecordedMachine(Vendor vendor, unsigned maxLeaf, std::vector<unsigned> apicIds)
    : m_apicIds(std::move(apicIds))
{
    At(0, 0).eax = maxLeaf;
    if (vendor == Intel)
        SetName(&At(0, 0), "Genu", "ineI", "ntel");
    else
        SetName(&At(0, 0), "Auth", "enti", "cAMD");
}

RecordedMachine &RecordedMachine::PerPackage(unsigned identifiers)
{
    At(1, 0).ebx |= identifiers << 16;
    At(1, 0).edx |= 1u << 28;
    return *this;
}

void RecordedMachine::ListCaches(unsigned leaf, const std::vector<RecordedCache> &caches)
{
    for (unsigned i = 0; i < caches.size(); ++i) {
        const RecordedCache &cache = caches[i];
        CpuidRegisters &r = At(leaf, i);
        r.eax = cache.type | cache.level << 5 | (cache.sharing - 1) << 14;
        r.ebx = (cache.lineBytes - 1) | (cache.ways - 1) << 22;
        r.ecx = cache.sets - 1;
    }
}

RecordedMachine &RecordedMachine::Caches(unsigned coreIdentifiers, const std::vector<RecordedCache> &caches)
{
    ListCaches(4, caches);
    for (unsigned i = 0; i < caches.size(); ++i)
        At(4, i).eax |= (coreIdentifiers - 1) << 26;
    return *this;
}

RecordedMachine &RecordedMachine::Levels(const std::vector<RecordedLevel> &levels)
{
    m_hasLeafB = true;
    for (unsigned i = 0; i < levels.size(); ++i)
        Set(11, i, {levels[i].shift, levels[i].processors, i | levels[i].type << 8, 0});
    return *this;
}

RecordedMachine &RecordedMachine::AmdCores(unsigned family, unsigned threads, unsigned idWidth)
{
    At(1, 0).eax = 0xFu << 8 | (family - 0xF) << 20;
    At(0x80000000u, 0).eax = 0x80000008u;
    At(0x80000001u, 0).ecx |= 1u << 1; // leaf 1 counts cores
    At(0x80000008u, 0).ecx = (threads - 1) | idWidth << 12;
    return *this;
}

RecordedMachine &RecordedMachine::AmdExtensions(unsigned threadsPerCore, const std::vector<RecordedCache> &caches)
{
    At(0x80000000u, 0).eax = 0x8000001Fu;
    At(0x80000001u, 0).ecx |= kTopologyExtensions;
    At(0x8000001Eu, 0).ebx = (threadsPerCore - 1) << 8;
    ListCaches(0x8000001Du, caches);
    return *this;
}

RecordedMachine &RecordedMachine::Set(unsigned leaf, unsigned subleaf, const CpuidRegisters &registers)
{
    At(leaf, subleaf) = registers;
    return *this;
}

bool RecordedMachine::Affinity(AffinityBytes *mask)
{
    for (unsigned cpu = 0; cpu < m_apicIds.size() && cpu < mask->size() * 8; ++cpu) {
        if (static_cast<int>(cpu) != forbiddenCpu)
            (*mask)[cpu / 8] = static_cast<unsigned char>((*mask)[cpu / 8] | 1u << (cpu % 8));
    }
    return true;
}

bool RecordedMachine::Bind(const AffinityBytes &mask)
{
    ++bindings;
    for (unsigned cpu = 0; cpu < m_apicIds.size(); ++cpu) {
        if (!(mask[cpu / 8] >> (cpu % 8) & 1))
            continue;
        current = cpu;
        return static_cast<int>(cpu) != unbindableCpu;
    }
    return false;
}

CpuidRegisters RecordedMachine::Cpuid(unsigned leaf, unsigned subleaf)
{
    const auto found = m_leaves.find({leaf, subleaf});
    CpuidRegisters r = found == m_leaves.end() ? CpuidRegisters() : found->second;
    if (leaf == 1)
        r.ebx |= m_apicIds[current] << 24;
    if (leaf == 11 && m_hasLeafB)
        r.edx = m_apicIds[current];
    return r;
}
