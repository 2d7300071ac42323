// CPUID registers of various processors, built field by field from the published documentation.
#pragma once

#include "cpuid2/cpu_machine.h"

#include <cstring>
#include <map>
#include <utility>
#include <vector>

/// One entry of leaf 4 or 0x8000001D.
struct RecordedCache {
    unsigned level;
    unsigned type; // 1 data, 2 instruction, 3 unified
    unsigned sharing;
    unsigned sets;
    unsigned ways;
    unsigned lineBytes = 64;
};

/// One level of leaf 11.
struct RecordedLevel {
    unsigned type; // 1 thread, 2 core, then module and die
    unsigned shift;
    unsigned processors;
};

/// A machine whose processors differ only in their identifiers. By default any thread may run on any of them.
class RecordedMachine : public CpuMachine {
public:
    enum Vendor { Intel, Amd };

    RecordedMachine(Vendor vendor, unsigned maxLeaf, std::vector<unsigned> apicIds) : m_apicIds(std::move(apicIds))
    {
        const char *const name = vendor == Intel ? "GenuineIntel" : "AuthenticAMD"; // in EBX, EDX and ECX
        CpuidRegisters &leaf0 = At(0, 0);
        leaf0.eax = maxLeaf;
        std::memcpy(&leaf0.ebx, name, 4);
        std::memcpy(&leaf0.edx, name + 4, 4);
        std::memcpy(&leaf0.ecx, name + 8, 4);
    }

    /// Sets leaf 1: the multithreading flag, which is clear by default, and the number of identifiers reserved for a
    /// package.
    RecordedMachine &PerPackage(unsigned identifiers)
    {
        At(1, 0).ebx |= identifiers << 16;
        At(1, 0).edx |= 1u << 28;
        return *this;
    }
    /// Sets leaf 4, including the number of identifiers reserved for cores.
    RecordedMachine &Caches(unsigned coreIdentifiers, const std::vector<RecordedCache> &caches)
    {
        ListCaches(4, caches);
        for (unsigned i = 0; i < caches.size(); ++i)
            At(4, i).eax |= (coreIdentifiers - 1) << 26;
        return *this;
    }
    RecordedMachine &Levels(const std::vector<RecordedLevel> &levels)
    {
        m_hasLeafB = true;
        for (unsigned i = 0; i < levels.size(); ++i)
            Set(11, i, {levels[i].shift, levels[i].processors, i | levels[i].type << 8, 0});
        return *this;
    }
    /// Sets the extended leaves that describe the topology of an AMD processor; used if leaf 11 is missing.
    RecordedMachine &AmdCores(unsigned family, unsigned threads, unsigned idWidth)
    {
        At(1, 0).eax = 0xFu << 8 | (family - 0xF) << 20;
        At(0x80000000u, 0).eax = 0x80000008u;
        At(0x80000001u, 0).ecx |= 1u << 1; // leaf 1 counts cores
        At(0x80000008u, 0).ecx = (threads - 1) | idWidth << 12;
        return *this;
    }
    /// Sets the topology extensions: leaf 0x8000001D, and the threads per core in 0x8000001E.
    RecordedMachine &AmdExtensions(unsigned threadsPerCore, const std::vector<RecordedCache> &caches)
    {
        At(0x80000000u, 0).eax = 0x8000001Fu;
        At(0x80000001u, 0).ecx |= 1u << 22; // the topology extensions
        At(0x8000001Eu, 0).ebx = (threadsPerCore - 1) << 8;
        ListCaches(0x8000001Du, caches);
        return *this;
    }
    RecordedMachine &Set(unsigned leaf, unsigned subleaf, const CpuidRegisters &registers)
    {
        At(leaf, subleaf) = registers;
        return *this;
    }

    unsigned ProcessorCount() override { return static_cast<unsigned>(m_apicIds.size()); }
    bool Affinity(AffinityBytes *mask) override
    {
        for (unsigned cpu = 0; cpu < m_apicIds.size() && cpu < mask->size() * 8; ++cpu) {
            if (static_cast<int>(cpu) != forbiddenCpu)
                (*mask)[cpu / 8] = static_cast<unsigned char>((*mask)[cpu / 8] | 1u << (cpu % 8));
        }
        return true;
    }
    bool Bind(const AffinityBytes &mask) override
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
    CpuidRegisters Cpuid(unsigned leaf, unsigned subleaf) override
    {
        const auto found = m_leaves.find({leaf, subleaf});
        CpuidRegisters r = found == m_leaves.end() ? CpuidRegisters() : found->second;
        if (leaf == 1 && !m_apicIds.empty())
            r.ebx |= m_apicIds[current] << 24;
        if (leaf == 11 && m_hasLeafB)
            r.edx = m_apicIds[current];
        return r;
    }

    int forbiddenCpu = -1;  // the process may not run there
    int unbindableCpu = -1; // allowed, but binding fails
    int bindings = 0;
    unsigned current = 0;

private:
    CpuidRegisters &At(unsigned leaf, unsigned subleaf) { return m_leaves[{leaf, subleaf}]; }
    void ListCaches(unsigned leaf, const std::vector<RecordedCache> &caches)
    {
        for (unsigned i = 0; i < caches.size(); ++i) {
            const RecordedCache &cache = caches[i];
            CpuidRegisters &r = At(leaf, i);
            r.eax = cache.type | cache.level << 5 | (cache.sharing - 1) << 14;
            r.ebx = (cache.lineBytes - 1) | (cache.ways - 1) << 22;
            r.ecx = cache.sets - 1;
        }
    }

    std::vector<unsigned> m_apicIds;
    bool m_hasLeafB = false;
    std::map<std::pair<unsigned, unsigned>, CpuidRegisters> m_leaves;
};
