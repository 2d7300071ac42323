// libFuzzer's entry point of the only target in the program.
#include "Target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzTargets().front().run(data, size);
    return 0;
}
