#include "coder/FftPlanCache.h"

#include <new>

namespace coder {
namespace internal {

FftPlanCache& FftPlanCache::instance() {
  // Never destroyed: a detached recalculation thread may still transform while the process
  // exits, and the plans die with the process anyway.
  static FftPlanCache* cache = new FftPlanCache();
  return *cache;
}

FftPlanCache::~FftPlanCache() {
  for (auto& entry : plans_)
    fftw_destroy_plan(entry.second);
}

FftPlanCache::Plan::~Plan() {
  if (!temporary_)
    return;
  std::lock_guard<std::mutex> lock(owner_->mutex_);
  fftw_destroy_plan(plan_);
}

size_t FftPlanCache::size(Kind kind) {
  std::lock_guard<std::mutex> lock(mutex_);
  return kept_[static_cast<size_t>(kind)];
}

FftPlanCache::Plan FftPlanCache::plan(Kind kind, int n) {
  std::lock_guard<std::mutex> lock(mutex_);
  const auto key = std::make_pair(kind, n);
  const auto found = plans_.find(key);
  if (found != plans_.end())
    return Plan(this, found->second, false);
  fftw_plan made = make(kind, n);
  size_t& kept = kept_[static_cast<size_t>(kind)];
  if (kept >= kMaxPlans)
    return Plan(this, made, true);
  plans_.emplace(key, made);
  ++kept;
  return Plan(this, made, false);
}

// Called with the lock held: the planner is not thread-safe.
fftw_plan FftPlanCache::make(Kind kind, int n) {
  const size_t count = static_cast<size_t>(n);
  fftw_plan made = nullptr;
  // Planning with FFTW_ESTIMATE does not touch the buffers; they only fix the alignment
  // and placement that later executions must share.
  if (kind == Kind::RealForward) {
    FftBuffer<double> in(count);
    FftBuffer<fftw_complex> out(count / 2 + 1);
    made = fftw_plan_dft_r2c_1d(n, in.get(), out.get(), FFTW_ESTIMATE);
  } else {
    FftBuffer<fftw_complex> in(count);
    FftBuffer<fftw_complex> out(count);
    made = fftw_plan_dft_1d(n, in.get(), out.get(),
                            kind == Kind::ComplexForward ? FFTW_FORWARD : FFTW_BACKWARD,
                            FFTW_ESTIMATE);
  }
  if (made == nullptr)
    throw std::bad_alloc();
  return made;
}

} // namespace internal
} // namespace coder
