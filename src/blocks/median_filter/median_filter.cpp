#include "blocks/median_filter/median_filter.h"

#include "blocks/median_filter/SortedBuffer.h"

namespace median_filter_ns {

void median_filter(const coder::array<double, 2>& x, coder::array<double, 2>& y) {
  // The window: the value itself and up to nine before it.
  constexpr int kWindow = 10;
  y.set_size(x.size(0), x.size(1));
  const int n = x.numel();
  if (n == 0)
    return;
  // Local to the call: the loop and a recalculation job may run the block at once.
  SortedBuffer window;
  window.insert(x[0]);
  y[0] = window.median();
  for (int i = 1; i < n && i < kWindow; ++i) {
    window.insert(x[i]);
    y[i] = window.median();
  }
  for (int i = kWindow; i < n; ++i) {
    window.replace(x[i - kWindow], x[i]);
    y[i] = window.median();
  }
}

} // namespace median_filter_ns
