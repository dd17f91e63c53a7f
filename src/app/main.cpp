#include "process/CommandLine.h"
#include "process/process_state.h"
#include "process/start_up.h"

#include <cstdlib>
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

// The middle and the trend turn the dates of a parameter's history into seconds in the host's
// zone, up to a thousand of them per parameter and measurement. With TZ unset glibc looks at
// /etc/localtime again for each one; naming that same file as TZ has it read once. A zone the
// operator has set is kept.
void readZoneOnce() {
  setenv("TZ", ":/etc/localtime", 0);
}

} // namespace

int main(int argc, char* argv[]) {
  keepBuffersInHeap();
  readZoneOnce();
  process::run_ip = findRunIp();
  installSignalHandlers();
  const CommandLine options = readCommandLine(argc, argv);
  applyCommandLine(options);
  return runService(options, argc, argv);
}
