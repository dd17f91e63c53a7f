#include "coder/polyfit.h"

#include "coder/mldivide.h"
#include "coder/moments.h"
#include "coder/sum.h"

#include <Eigen/Dense>

#include <cmath>

namespace coder {

void polyfit(const double* x, const double* y, int n, int deg, std::vector<double>& p, polyfit_S* s,
             double mu[2]) {
  const int cols = deg + 1;
  mu[0] = mean(x, n);
  mu[1] = b_std(x, n);
  std::vector<double> v(static_cast<size_t>(n) * static_cast<size_t>(cols));
  for (int i = 0; i < n; ++i) {
    const double xh = (x[i] - mu[0]) / mu[1];
    // last column ones, each column to the left the next one times x_hat
    double power = 1.0;
    v[static_cast<size_t>(i + deg * n)] = power;
    for (int j = deg - 1; j >= 0; --j) {
      power = xh * v[static_cast<size_t>(i + (j + 1) * n)];
      v[static_cast<size_t>(i + j * n)] = power;
    }
  }
  p.assign(static_cast<size_t>(cols), 0.0);
  if (n > 0)
    mldivide(v.data(), n, cols, y, p.data());
  if (s == nullptr)
    return;
  s->df = n - cols > 0 ? n - cols : 0;
  double ssq = 0.0;
  for (int i = 0; i < n; ++i) {
    double fit = 0.0;
    for (int j = 0; j < cols; ++j)
      fit += v[static_cast<size_t>(i + j * n)] * p[static_cast<size_t>(j)];
    ssq += (y[i] - fit) * (y[i] - fit);
  }
  s->normr = std::sqrt(ssq);
  s->R.assign(static_cast<size_t>(cols) * static_cast<size_t>(cols), 0.0);
  if (n == 0)
    return;
  using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::ColMajor>;
  const Eigen::Map<const Matrix> V(v.data(), n, cols);
  const Eigen::ColPivHouseholderQR<Matrix> qr(V);
  const auto& perm = qr.colsPermutation().indices();
  const int rows = n < cols ? n : cols;
  for (int j = 0; j < cols; ++j) {
    for (int i = 0; i <= j && i < rows; ++i) {
      s->R[static_cast<size_t>(i + perm(j) * cols)] = qr.matrixQR()(i, j);
    }
  }
}

void polyval(const std::vector<double>& p, const double* x, int n, const double mu[2],
             double* out) {
  for (int i = 0; i < n; ++i) {
    const double xh = (x[i] - mu[0]) / mu[1];
    double y = p.empty() ? 0.0 : p[0];
    for (size_t k = 1; k < p.size(); ++k)
      y = xh * y + p[k];
    out[i] = y;
  }
}

} // namespace coder
