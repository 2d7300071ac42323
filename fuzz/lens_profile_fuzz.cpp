// Reads arbitrary bytes as a lens profile and corrects small pictures plainly with the result.
#include "ProfileUses.h"
#include "Target.h"

FUZZ_TARGET(lens_profile)
{
    CorrectPlainly(AsBytes(data, size));
}
