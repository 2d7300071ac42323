// Number of threads that one load or save may use.
#pragma once

namespace imagefile {

/// Returns the number set last or, if that is 0 or none was set, the number of processors; always from 1 to 64.
int ThreadCount();
/// Sets the number; 0 means one thread per processor.
void SetThreadCount(int threads);

} // namespace imagefile
