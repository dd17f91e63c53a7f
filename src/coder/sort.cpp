#include "coder/sort.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace coder {
namespace internal {

void sort(double* x, int n, int* index) {
  if (n <= 0)
    return;
  std::vector<int> order(static_cast<size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [x](int a, int b) {
    if (std::isnan(x[a]))
      return false;
    if (std::isnan(x[b]))
      return true;
    return x[a] < x[b];
  });
  const std::vector<double> copy(x, x + n);
  for (int k = 0; k < n; ++k) {
    x[k] = copy[static_cast<size_t>(order[static_cast<size_t>(k)])];
    if (index != nullptr)
      index[k] = order[static_cast<size_t>(k)] + 1;
  }
}

} // namespace internal

void sortrows(const double* a, int m, int c, double* b, int* idx) {
  if (m <= 0)
    return;
  std::vector<int> order(static_cast<size_t>(m));
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [a](int r, int s) {
    // descending with NaN as the largest key
    if (std::isnan(a[s]))
      return false;
    if (std::isnan(a[r]))
      return true;
    return a[r] > a[s];
  });
  for (int i = 0; i < m; ++i) {
    const int src = order[static_cast<size_t>(i)];
    for (int j = 0; j < c; ++j)
      b[i + j * m] = a[src + j * m];
    if (idx != nullptr)
      idx[i] = src + 1;
  }
}

} // namespace coder
