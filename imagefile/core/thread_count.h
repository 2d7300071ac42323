// Number of threads that one load or save may use.
#pragma once

namespace imagefile {

/// Returns the number set last, at least 1; if none was set, one per processor.
int ThreadCount();
/// Sets the number; 0 means one thread per processor.
void SetThreadCount(int threads);

} // namespace imagefile
