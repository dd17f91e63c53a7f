// Linear solves of the fitting routines: least squares by column-pivoted QR and the square
// solve by LU with partial pivoting.
#pragma once

namespace coder {

// x = A \ b for an m-by-n A (column-major) with m != n, as the runtime's qrsolve: Householder
// QR with column pivoting (the column of largest remaining norm first), rank = number of
// leading |R(k,k)| above 2.220446049250313e-15 * max(m, n) * |R(1,1)|, back substitution on
// the leading rank-by-rank block, and the pivoted-out coefficients exactly 0 (the basic
// solution, not the minimum-norm one). x has n elements. *rank receives the rank when not
// null. m or n of 0 gives x = 0; a NaN or infinity in A or b gives x all NaN (rank 0).
void qrsolve(const double* a, int m, int n, const double* b, double* x, int* rank);

// x = A \ b as MATLAB mldivide: square A by LU with partial pivoting (a singular A gives
// Inf/NaN as the division by a zero pivot does), any other shape by qrsolve.
void mldivide(const double* a, int m, int n, const double* b, double* x);

} // namespace coder
