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

  // Lengths kept planned for each kind. Beyond them a length is planned for the one call
  // and destroyed after it, so signals of ever new lengths cannot make the process grow
  // without end.
  static constexpr size_t kMaxPlans = 64;

  // A plan ready to execute for the duration of the handle's life.
  class Plan {
  public:
    Plan(Plan&& other) noexcept
        : owner_(other.owner_), plan_(other.plan_), temporary_(other.temporary_) {
      other.temporary_ = false;
    }
    Plan(const Plan&) = delete;
    Plan& operator=(const Plan&) = delete;
    Plan& operator=(Plan&&) = delete;
    ~Plan();
    fftw_plan get() const { return plan_; }

  private:
    friend class FftPlanCache;
    Plan(FftPlanCache* owner, fftw_plan plan, bool temporary)
        : owner_(owner), plan_(plan), temporary_(temporary) {}
    FftPlanCache* owner_;
    fftw_plan plan_;
    bool temporary_;
  };

  // The process-wide cache.
  static FftPlanCache& instance();

  // The plan for `kind` and length n >= 1, planned on first use with FFTW_ESTIMATE, so that
  // the same input always gives the same bits (a measured plan may differ from run to
  // run). Plans are out of place, for buffers from fftw_malloc: real-to-complex reads n
  // doubles and writes n/2 + 1 complex values; the complex kinds read and write n complex
  // values, unscaled.
  Plan plan(Kind kind, int n);

  // How many plans of `kind` are kept.
  size_t size(Kind kind);

  FftPlanCache(const FftPlanCache&) = delete;
  FftPlanCache& operator=(const FftPlanCache&) = delete;

private:
  FftPlanCache() = default;
  ~FftPlanCache();
  fftw_plan make(Kind kind, int n);

  std::mutex mutex_;
  std::map<std::pair<Kind, int>, fftw_plan> plans_;
  size_t kept_[3] = {0, 0, 0};
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
