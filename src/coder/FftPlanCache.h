// FFTW plans, made once per transform length and kept for the life of the process. The
// main loop and a recalculation job run the same blocks on two threads: FFTW's planner is
// not thread-safe, so planning is serialised here, while executing a finished plan on
// buffers of the caller's is safe from any thread.
#pragma once

#include <fftw3.h>

#include <map>
#include <mutex>
#include <new>
#include <utility>

namespace coder {
namespace internal {

class FftPlanCache {
public:
  enum class Kind { RealForward, ComplexForward, ComplexBackward };

  // The process-wide cache.
  static FftPlanCache& instance();

  // The plan for `kind` and length n >= 1, planned on first use with FFTW_ESTIMATE, so that
  // the same input always gives the same bits (a measured plan may differ from run to
  // run). Plans are out of place, for buffers from fftw_malloc: real-to-complex reads n
  // doubles and writes n/2 + 1 complex values; the complex kinds read and write n complex
  // values, unscaled.
  fftw_plan plan(Kind kind, int n);

  FftPlanCache(const FftPlanCache&) = delete;
  FftPlanCache& operator=(const FftPlanCache&) = delete;

private:
  FftPlanCache() = default;
  ~FftPlanCache();

  std::mutex mutex_;
  std::map<std::pair<Kind, int>, fftw_plan> plans_;
};

// An fftw_malloc buffer of n elements of T, freed with the scope; its alignment matches the
// buffers the plans were made on.
template <typename T> class FftBuffer {
public:
  explicit FftBuffer(size_t n) : data_(static_cast<T*>(fftw_malloc(sizeof(T) * (n > 0 ? n : 1)))) {
    if (data_ == nullptr)
      throw std::bad_alloc();
  }
  ~FftBuffer() { fftw_free(data_); }
  FftBuffer(const FftBuffer&) = delete;
  FftBuffer& operator=(const FftBuffer&) = delete;
  T* get() const { return data_; }
  T& operator[](size_t i) const { return data_[i]; }

private:
  T* data_;
};

} // namespace internal
} // namespace coder
