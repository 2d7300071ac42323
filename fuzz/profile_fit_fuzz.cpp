// Reads arbitrary bytes as a lens profile in any XML form and fits it to a few pictures.
#include "ProfileUses.h"
#include "Target.h"

FUZZ_TARGET(profile_fit)
{
    CorrectFitted(AsBytes(data, size));
}
