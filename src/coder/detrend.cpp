#include "coder/detrend.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace coder {

namespace {

// 2-norm of v[0..m-1] without overflow or underflow, as a chain of hypot would give it but at
// the cost of two plain passes: the largest magnitude fixes a power of two that brings every
// element to at most 1 (an exact scaling), then the squares are summed. Four running values
// per pass let the passes run at the machine's width; a record of a row is 16384 samples
// and every line removal takes three such norms. An infinite element gives infinity; else a
// NaN gives NaN.
double norm2(const double* v, int m) {
  double largest[4] = {0.0, 0.0, 0.0, 0.0};
  int i = 0;
  for (; i + 4 <= m; i += 4)
    for (int j = 0; j < 4; ++j)
      largest[j] = std::max(largest[j], std::fabs(v[i + j]));
  for (; i < m; ++i)
    largest[0] = std::max(largest[0], std::fabs(v[i]));
  const double top = std::max(std::max(largest[0], largest[1]), std::max(largest[2], largest[3]));
  if (std::isinf(top))
    return top;
  int exponent = 0;
  std::frexp(top, &exponent);
  // Kept within the range where 2^-exponent is a normal number.
  exponent = std::clamp(exponent, -1020, 1020);
  const double scale = std::ldexp(1.0, -exponent);
  double squares[4] = {0.0, 0.0, 0.0, 0.0};
  i = 0;
  for (; i + 4 <= m; i += 4)
    for (int j = 0; j < 4; ++j)
      squares[j] += (v[i + j] * scale) * (v[i + j] * scale);
  for (; i < m; ++i)
    squares[0] += (v[i] * scale) * (v[i] * scale);
  return std::ldexp(std::sqrt((squares[0] + squares[1]) + (squares[2] + squares[3])), exponent);
}

// Sum of a[i] * b[i] in four running sums, so that each addition need not wait for the one
// before it: a single chain of 16384 dependent additions is most of a line removal's time.
double innerProduct(const double* a, const double* b, int m) {
  double sums[4] = {0.0, 0.0, 0.0, 0.0};
  int i = 0;
  for (; i + 4 <= m; i += 4)
    for (int j = 0; j < 4; ++j)
      sums[j] += a[i + j] * b[i + j];
  for (; i < m; ++i)
    sums[0] += a[i] * b[i];
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

// Householder reflector of LAPACK's dlarfg on v (length m): on return v[0] is beta, v[1..]
// the reflector's tail with an implied leading 1, and the result is tau.
double makeReflector(double* v, int m) {
  if (m <= 1)
    return 0.0;
  const double tail = norm2(v + 1, m - 1);
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
  const double dot = tau * (c[0] + innerProduct(v + 1, c + 1, m - 1));
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
  // The regressors, factored in place: the slope column is computed again for the fit, the
  // same doubles as here.
  std::vector<double> cols[2] = {std::vector<double>(static_cast<size_t>(n)),
                                 std::vector<double>(static_cast<size_t>(n), 1.0)};
  for (int i = 0; i < n; ++i)
    cols[0][static_cast<size_t>(i)] = static_cast<double>(i) / last;
  // Pivot: the column of larger norm goes first; on a tie the slope column, the first one,
  // stays first as in xgeqp3.
  const double norm_slope = norm2(cols[0].data(), n);
  const double norm_ones = std::sqrt(static_cast<double>(n));
  int order[2] = {0, 1};
  if (norm_ones > norm_slope)
    std::swap(order[0], order[1]);
  std::vector<double>& q0 = cols[order[0]];
  std::vector<double>& q1 = cols[order[1]];
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
    y[i] = x[i] - (static_cast<double>(i) / last * coef[0] + coef[1]);
  }
}

} // namespace

template <int N> void detrend(const array<double, N>& x, array<double, N>& y) {
  const int n = x.numel();
  bool has_nan = false;
  for (int i = 0; i < n; ++i)
    has_nan |= std::isnan(x[i]);
  // Sizing y keeps its buffer when y is x (same count), and removeLine reads each sample
  // before it writes the same place, so the line is removed in place without a copy.
  if constexpr (N == 1) {
    y.set_size(n);
  } else {
    y.set_size(x.size(0), x.size(1));
  }
  if (has_nan) {
    for (int i = 0; i < n; ++i)
      y[i] = std::nan("");
  } else if (n > 0) {
    removeLine(x.data(), n, y.data());
  }
}

template void detrend<1>(const array<double, 1>&, array<double, 1>&);
template void detrend<2>(const array<double, 2>&, array<double, 2>&);

} // namespace coder
