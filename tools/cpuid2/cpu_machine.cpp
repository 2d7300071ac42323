#include "cpu_machine.h"

#include <sched.h>
#include <unistd.h>

#include <cstring>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace {

static_assert(sizeof(AffinityBytes) == sizeof(cpu_set_t), "masks must have the same size");

class ThisMachine : public CpuMachine {
public:
    unsigned ProcessorCount() override
    {
        const long count = sysconf(_SC_NPROCESSORS_CONF);
        return count > 0 ? static_cast<unsigned>(count) : 0;
    }

    bool Affinity(AffinityBytes *mask) override
    {
        cpu_set_t set; // little endian: its words hold the bits in the order of our bytes
        CPU_ZERO(&set);
        const bool isKnown = sched_getaffinity(0, sizeof set, &set) == 0;
        std::memcpy(mask->data(), &set, sizeof set);
        return isKnown;
    }

    bool Bind(const AffinityBytes &mask) override
    {
        cpu_set_t set;
        std::memcpy(&set, mask.data(), sizeof set);
        return sched_setaffinity(0, sizeof set, &set) == 0;
    }

    CpuidRegisters Cpuid([[maybe_unused]] unsigned leaf, [[maybe_unused]] unsigned subleaf) override
    {
        CpuidRegisters r = {};
#if defined(__x86_64__)
        __cpuid_count(leaf, subleaf, r.eax, r.ebx, r.ecx, r.edx);
#endif // other architectures: all zero, which means that nothing is known
        return r;
    }
};

CpuMachine *s_machine = nullptr;

} // namespace

CpuMachine::~CpuMachine() = default;

CpuMachine &CurrentCpuMachine()
{
    static ThisMachine thisMachine;
    if (s_machine)
        return *s_machine;
    return thisMachine;
}

void SetCpuMachine(CpuMachine *machine)
{
    s_machine = machine;
}
