// The allocator settings that the service makes at the start of its main (src/app/main.cpp),
// made here before the main of every bench program: a bench times a row the way the service
// computes it, with the buffers of one row kept in the heap for the next instead of mapped
// afresh and cleared by the kernel on every call.
#include <malloc.h>

namespace {

const bool kBuffersKeptInHeap = [] {
#ifdef M_MMAP_THRESHOLD
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 256 << 20);
#endif
  return true;
}();

} // namespace
