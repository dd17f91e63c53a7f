// The scans and FIR filters in their direct forms (a sine and a cosine per term, convolution by
// loops), under the names the linker gives the kernels' callers (--wrap): a bench built with
// them and linked with the wrapping options runs the blocks as the method is written, for
// their speed-up by the fast kernels.
#pragma once

#include "coder/correlation_scan.h"
#include "coder/filter.h"

#include <vector>

namespace direct {

void scan(const creal_T* y, int n, double dt, int p, const double* f, int m,
          creal_T* out) asm("__wrap__ZN5coder16correlation_scanEPK7creal_TidiPKdiPS0_");
void scan(const double* y, int n, double dt, int p, const double* f, int m,
          creal_T* out) asm("__wrap__ZN5coder16correlation_scanEPKdidiS1_iP7creal_T");
void grid(const creal_T* y, int n, double dt, int p, double f0, double step, int m,
          creal_T* out) asm("__wrap__ZN5coder21correlation_scan_gridEPK7creal_TididdiPS0_");
void grid(const double* y, int n, double dt, int p, double f0, double step, int m,
          creal_T* out) asm("__wrap__ZN5coder21correlation_scan_gridEPKdididdiP7creal_T");
void fir(const double* b, int nb, const double* x, int nx,
         double* y) asm("__wrap__ZN5coder8internal9firFilterEPKdiS2_iPd");
void fir(const double* b, int nb, const creal_T* x, int nx,
         creal_T* y) asm("__wrap__ZN5coder8internal9firFilterEPKdiPK7creal_TiPS3_");

void scan(const creal_T* y, int n, double dt, int p, const double* f, int m, creal_T* out) {
  coder::correlation_scan_direct(y, n, dt, p, f, m, out);
}
void scan(const double* y, int n, double dt, int p, const double* f, int m, creal_T* out) {
  std::vector<creal_T> z(size_t(n > 0 ? n : 0));
  for (size_t k = 0; k < z.size(); ++k)
    z[k] = {y[k], 0.0};
  coder::correlation_scan_direct(z.data(), n, dt, p, f, m, out);
}
template <typename T>
void gridOf(const T* y, int n, double dt, int p, double f0, double step, int m, creal_T* out) {
  std::vector<double> f(size_t(m > 0 ? m : 0));
  for (int i = 0; i < m; ++i)
    f[size_t(i)] = f0 + i * step;
  scan(y, n, dt, p, f.data(), m, out);
}
void grid(const creal_T* y, int n, double dt, int p, double f0, double step, int m, creal_T* out) {
  gridOf(y, n, dt, p, f0, step, m, out);
}
void grid(const double* y, int n, double dt, int p, double f0, double step, int m, creal_T* out) {
  gridOf(y, n, dt, p, f0, step, m, out);
}
void fir(const double* b, int nb, const double* x, int nx, double* y) {
  coder::internal::firFilterDirect(b, nb, x, nx, y);
}
void fir(const double* b, int nb, const creal_T* x, int nx, creal_T* y) {
  coder::internal::firFilterDirect(b, nb, x, nx, y);
}

} // namespace direct
