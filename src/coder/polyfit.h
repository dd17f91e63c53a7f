// Polynomial fitting on a centred and scaled axis, and its evaluation, as the trend block
// fits a cubic through a parameter's history.
#pragma once

#include <vector>

namespace coder {

// The structure S of MATLAB polyfit: R the upper triangular factor ((deg+1) by (deg+1),
// column-major, columns in the original order), df the degrees of freedom max(0, n-(deg+1)),
// normr the 2-norm of the residual y - V*p.
struct polyfit_S {
  std::vector<double> R;
  int df = 0;
  double normr = 0.0;
};

// MATLAB [p, S, mu] = polyfit(x, y, deg): mu = [mean(x), std(x)] (std normalised by n-1),
// x_hat = (x - mu[0]) / mu[1], Vandermonde columns built by repeated multiplication
// (x_hat^deg .. x_hat^0), p = V \ y by qrsolve (basic solution when rank-deficient, some
// coefficients exactly 0). p has deg+1 elements, highest power first. All x equal gives
// mu[1] = 0 and NaN coefficients, as MATLAB does.
void polyfit(const double* x, const double* y, int n, int deg, std::vector<double>& p, polyfit_S* s,
             double mu[2]);

// MATLAB polyval(p, x, S, mu): Horner's rule on x_hat = (x - mu[0]) / mu[1], y = p[0], then
// y = x_hat * y + p[k]. S affects only MATLAB's second output and is not needed here.
// out receives n values.
void polyval(const std::vector<double>& p, const double* x, int n, const double mu[2], double* out);

} // namespace coder
