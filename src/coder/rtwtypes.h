// Scalar types of the numeric runtime that the math blocks share.
#pragma once

#include <cstdint>

using real_T = double;
using real32_T = float;
using int32_T = std::int32_t;
using uint16_T = std::uint16_t;
using boolean_T = bool;

// A complex double: real part, then imaginary part, laid out as two adjacent doubles (the
// layout of fftw_complex and std::complex<double>, which the FFT relies on).
struct creal_T {
  double re;
  double im;
};
