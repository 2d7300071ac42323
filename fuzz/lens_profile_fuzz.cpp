// Reads arbitrary bytes as a lens profile and applies plain corrections with it to small pictures.
#include "ProfileUses.h"
#include "Target.h"

FUZZ_TARGET(lens_profile)
{
    CorrectPlainly(AsBytes(data, size));
}
