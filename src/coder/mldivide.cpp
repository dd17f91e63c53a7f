#include "coder/mldivide.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <limits>

namespace coder {
namespace {

using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::ColMajor>;
using Vector = Eigen::Matrix<double, Eigen::Dynamic, 1>;

} // namespace

void qrsolve(const double* a, int m, int n, const double* b, double* x, int* rank) {
  for (int j = 0; j < n; ++j)
    x[j] = 0.0;
  if (rank != nullptr)
    *rank = 0;
  if (m <= 0 || n <= 0)
    return;
  // A NaN or infinity mixes into every Householder reflection and so into every coefficient;
  // Eigen's pivoting would instead step around it, so the MATLAB result is set directly.
  bool finite = true;
  for (int k = 0; k < m * n; ++k)
    finite = finite && std::isfinite(a[k]);
  for (int k = 0; k < m; ++k)
    finite = finite && std::isfinite(b[k]);
  if (!finite) {
    for (int j = 0; j < n; ++j)
      x[j] = std::numeric_limits<double>::quiet_NaN();
    return;
  }
  const Eigen::Map<const Matrix> A(a, m, n);
  const Eigen::Map<const Vector> B(b, m);
  const Eigen::ColPivHouseholderQR<Matrix> qr(A);
  const Matrix& r = qr.matrixQR();
  const int kmax = std::min(m, n);
  const double tol = 2.220446049250313e-15 * std::max(m, n) * std::fabs(r(0, 0));
  int k = 0;
  while (k < kmax && std::fabs(r(k, k)) > tol)
    ++k;
  if (rank != nullptr)
    *rank = k;
  if (k == 0)
    return;
  const Vector qtb = qr.householderQ().transpose() * B;
  const Vector z = r.topLeftCorner(k, k).triangularView<Eigen::Upper>().solve(qtb.head(k));
  const auto& perm = qr.colsPermutation().indices();
  for (int j = 0; j < k; ++j)
    x[perm(j)] = z(j);
}

void mldivide(const double* a, int m, int n, const double* b, double* x) {
  if (m != n || m == 0) {
    qrsolve(a, m, n, b, x, nullptr);
    return;
  }
  const Eigen::Map<const Matrix> A(a, m, n);
  const Eigen::Map<const Vector> B(b, m);
  const Vector solution = Eigen::PartialPivLU<Matrix>(A).solve(B);
  for (int j = 0; j < n; ++j)
    x[j] = solution(j);
}

} // namespace coder
