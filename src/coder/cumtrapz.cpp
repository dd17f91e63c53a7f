#include "coder/cumtrapz.h"

#include <cmath>
#include <vector>

namespace coder {

template <int NT, int NY>
void cumtrapz(const array<double, NT>& t, const array<double, NY>& y, array<double, NY>& z) {
  const int n = y.numel();
  const int nt = t.numel();
  std::vector<double> result(static_cast<size_t>(n));
  double sum = 0.0;
  for (int k = 0; k < n; ++k) {
    if (k > 0) {
      const double half_step = k < nt ? (t[k] - t[k - 1]) / 2.0 : std::nan("");
      sum += half_step * (y[k - 1] + y[k]);
    }
    result[static_cast<size_t>(k)] = sum;
  }
  if constexpr (NY == 1) {
    z.set_size(n);
  } else {
    z.set_size(y.size(0), y.size(1));
  }
  for (int k = 0; k < n; ++k)
    z[k] = result[static_cast<size_t>(k)];
}

template void cumtrapz<1, 1>(const array<double, 1>&, const array<double, 1>&, array<double, 1>&);
template void cumtrapz<2, 2>(const array<double, 2>&, const array<double, 2>&, array<double, 2>&);
template void cumtrapz<1, 2>(const array<double, 1>&, const array<double, 2>&, array<double, 2>&);
template void cumtrapz<2, 1>(const array<double, 2>&, const array<double, 1>&, array<double, 1>&);

} // namespace coder
