#include "coder/detrend.h"

#include <cmath>
#include <utility>
#include <vector>

namespace coder {

namespace {

// Householder reflector of LAPACK's dlarfg on v (length m): on return v[0] is beta, v[1..]
// the reflector's tail with an implied leading 1, and the result is tau.
double makeReflector(double* v, int m) {
  if (m <= 1)
    return 0.0;
  double tail = 0.0;
  for (int i = 1; i < m; ++i)
    tail = std::hypot(tail, v[i]);
  if (tail == 0.0)
    return 0.0;
  const double alpha = v[0];
  const double beta = -std::copysign(std::hypot(alpha, tail), alpha);
  const double tau = (beta - alpha) / beta;
  const double scale = 1.0 / (alpha - beta);
  for (int i = 1; i < m; ++i)
    v[i] *= scale;
  v[0] = beta;
  return tau;
}

// Applies I - tau * u u' (u = [1, v[1..m-1]]) to the column c of length m.
void applyReflector(const double* v, double tau, double* c, int m) {
  if (tau == 0.0)
    return;
  double dot = c[0];
  for (int i = 1; i < m; ++i)
    dot += v[i] * c[i];
  dot *= tau;
  c[0] -= dot;
  for (int i = 1; i < m; ++i)
    c[i] -= dot * v[i];
}

// Least-squares line through (s/(n-1), x) by QR with column pivoting, as MATLAB's
// backslash solves the detrend regression; fills y = x - fit.
void removeLine(const double* x, int n, double* y) {
  if (n == 1) {
    y[0] = x[0] - x[0];
    return;
  }
  const double last = static_cast<double>(n - 1);
  std::vector<double> cols[2] = {std::vector<double>(static_cast<size_t>(n)),
                                 std::vector<double>(static_cast<size_t>(n), 1.0)};
  for (int i = 0; i < n; ++i)
    cols[0][static_cast<size_t>(i)] = static_cast<double>(i) / last;
  // Pivot: the column of larger norm goes first; on a tie the slope column, the first one,
  // stays first as in xgeqp3.
  double norm_slope = 0.0;
  for (double v : cols[0])
    norm_slope = std::hypot(norm_slope, v);
  const double norm_ones = std::sqrt(static_cast<double>(n));
  int order[2] = {0, 1};
  if (norm_ones > norm_slope)
    std::swap(order[0], order[1]);
  std::vector<double> q0 = cols[order[0]];
  std::vector<double> q1 = cols[order[1]];
  std::vector<double> rhs(x, x + n);
  const double tau0 = makeReflector(q0.data(), n);
  applyReflector(q0.data(), tau0, q1.data(), n);
  applyReflector(q0.data(), tau0, rhs.data(), n);
  const double tau1 = makeReflector(q1.data() + 1, n - 1);
  applyReflector(q1.data() + 1, tau1, rhs.data() + 1, n - 1);
  const double r00 = q0[0];
  const double r01 = q1[0];
  const double r11 = q1[1];
  // Rank by the tolerance of the least-squares solver; a dropped coefficient is exactly 0.
  const double tol = 2.220446049250313e-15 * static_cast<double>(n) * std::fabs(r00);
  double p[2] = {0.0, 0.0};
  if (std::fabs(r11) > tol) {
    p[1] = rhs[1] / r11;
  }
  if (r00 != 0.0) {
    p[0] = (rhs[0] - r01 * p[1]) / r00;
  }
  double coef[2] = {0.0, 0.0};
  coef[order[0]] = p[0];
  coef[order[1]] = p[1];
  for (int i = 0; i < n; ++i) {
    y[i] = x[i] - (cols[0][static_cast<size_t>(i)] * coef[0] + coef[1]);
  }
}

} // namespace

template <int N> void detrend(const array<double, N>& x, array<double, N>& y) {
  const int n = x.numel();
  std::vector<double> result(static_cast<size_t>(n));
  bool has_nan = false;
  for (int i = 0; i < n; ++i)
    has_nan = has_nan || std::isnan(x[i]);
  if (has_nan) {
    for (double& v : result)
      v = std::nan("");
  } else if (n > 0) {
    removeLine(x.data(), n, result.data());
  }
  if constexpr (N == 1) {
    y.set_size(n);
  } else {
    y.set_size(x.size(0), x.size(1));
  }
  for (int i = 0; i < n; ++i)
    y[i] = result[static_cast<size_t>(i)];
}

template void detrend<1>(const array<double, 1>&, array<double, 1>&);
template void detrend<2>(const array<double, 2>&, array<double, 2>&);

} // namespace coder
