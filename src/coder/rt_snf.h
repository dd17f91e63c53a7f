// Non-finite safe scalar helpers of the numeric runtime, shared by all math blocks. Each
// follows the MATLAB result for NaN and infinite inputs where the C library differs.
#pragma once

// Modulus of (a, b) by the scaled form x*sqrt(1 + (y/x)^2) with x the larger magnitude;
// equal magnitudes give 1.4142135623730951 * x exactly (so (3, 3) is not sqrt(18));
// NaN when either is NaN.
double rt_hypotd_snf(double a, double b);

// Four-quadrant angle of (x, y) in radians: NaN for a NaN input; two infinities give
// atan2(sign(y), sign(x)) with sign -1 for values not above 0; x == 0 gives +-pi/2 or 0
// by the sign of y without calling atan2.
double rt_atan2d_snf(double y, double x);

// MATLAB power a^b: NaN for a NaN input or a negative base with a non-whole exponent;
// infinite exponents by |a| against 1; exact forms for b = 0, +-1, 2 and 0.5.
double rt_powd_snf(double a, double b);

// MATLAB rem(u0, u1): NaN for a NaN input or infinite u0, u0 for infinite u1, 0 for
// u1 == 0, 0 when u0/u1 is whole to within eps times the quotient, else fmod(u0, u1).
double rt_remd_snf(double u0, double u1);
