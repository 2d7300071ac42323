#include "FakeHost.h" // for its meta-object
