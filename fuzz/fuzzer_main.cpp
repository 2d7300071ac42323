// libFuzzer's entry point, which runs the program's only target.
#include "Target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzTargets().front().run(data, size);
    return 0;
}
