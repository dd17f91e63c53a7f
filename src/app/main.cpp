#include "process/CommandLine.h"
#include "process/process_state.h"
#include "process/start_up.h"

#include <malloc.h>

namespace {

// The calculations of a row take and free buffers of hundreds of kilobytes to megabytes (the
// transforms' scratch, the records' copies). By default glibc maps such buffers afresh and
// gives them back to the kernel when freed (or trims them off the heap), so every row faults
// their pages in again and has them cleared: on a virtual machine that costs more than the
// transforms themselves. Kept in the heap, the pages of one row serve the next; the service
// stays at the size of its largest row, which it reaches on every cycle anyway.
void keepBuffersInHeap() {
#ifdef M_MMAP_THRESHOLD
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 256 << 20);
#endif
}

} // namespace

int main(int argc, char* argv[]) {
  keepBuffersInHeap();
  process::run_ip = findRunIp();
  installSignalHandlers();
  const CommandLine options = readCommandLine(argc, argv);
  applyCommandLine(options);
  return runService(options, argc, argv);
}
