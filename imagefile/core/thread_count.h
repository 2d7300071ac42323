// The number of threads that one load or save may use.
#pragma once

namespace imagefile {

/// Returns the number set last, from 1; without one, one thread per processor.
int ThreadCount();
/// 0: one thread per processor.
void SetThreadCount(int threads);

} // namespace imagefile
