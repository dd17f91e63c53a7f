// MATLAB implicit expansion for element-wise operations between two arrays. The blocks
// write element-wise operations for equal sizes; when sizes differ at run time this one
// routine repeats every extent-1 dimension against the other operand, as MATLAB does.
#pragma once

#include "coder/coder_array.h"

#include <algorithm>

namespace coder {

// out(i) = op(x(ix), y(iy)) over the expanded size: per dimension the extent is the other
// operand's where one operand has extent 1; an operand of lower rank has extent 1 in the
// missing trailing dimensions. Where both extents differ and neither is 1 (MATLAB would
// stop with an error) the result has extent 0 there, so malformed sizes give an empty
// result instead of reading out of bounds. `out` must not be `x` or `y`.
template <typename R, typename A, typename B, int NO, int NX, int NY, typename Op>
void binary_expand_op(array<R, NO>& out, const array<A, NX>& x, const array<B, NY>& y, Op op) {
  static_assert(NO == (NX > NY ? NX : NY), "the result has the larger rank");
  int sx[NO];
  int sy[NO];
  int so[NO];
  for (int d = 0; d < NO; ++d) {
    sx[d] = d < NX ? x.size(d) : 1;
    sy[d] = d < NY ? y.size(d) : 1;
    if (sx[d] == sy[d]) {
      so[d] = sx[d];
    } else if (sx[d] == 1) {
      so[d] = sy[d];
    } else if (sy[d] == 1) {
      so[d] = sx[d];
    } else {
      so[d] = 0;
    }
  }
  int total = 1;
  for (int d = 0; d < NO; ++d)
    total *= so[d];
  static_assert(NO <= 2, "arrays of the blocks have rank 1 or 2");
  if constexpr (NO == 1) {
    out.set_size(so[0]);
  } else {
    out.set_size(so[0], so[1]);
  }
  if (total == 0)
    return;
  // Strides of 0 repeat a singleton dimension.
  int stride_x[NO];
  int stride_y[NO];
  int step_x = 1;
  int step_y = 1;
  for (int d = 0; d < NO; ++d) {
    stride_x[d] = sx[d] == 1 ? 0 : step_x;
    stride_y[d] = sy[d] == 1 ? 0 : step_y;
    step_x *= sx[d];
    step_y *= sy[d];
  }
  if constexpr (NO == 1) {
    for (int i = 0; i < so[0]; ++i)
      out[i] = op(x[i * stride_x[0]], y[i * stride_y[0]]);
  } else {
    int k = 0;
    for (int c = 0; c < so[1]; ++c) {
      for (int r = 0; r < so[0]; ++r) {
        out[k++] = op(x[r * stride_x[0] + c * stride_x[1]], y[r * stride_y[0] + c * stride_y[1]]);
      }
    }
  }
}

// The arithmetic members of the family.
template <typename R, typename A, typename B, int NO, int NX, int NY>
void plus(array<R, NO>& out, const array<A, NX>& x, const array<B, NY>& y) {
  binary_expand_op(out, x, y, [](const A& u, const B& v) { return u + v; });
}

template <typename R, typename A, typename B, int NO, int NX, int NY>
void minus(array<R, NO>& out, const array<A, NX>& x, const array<B, NY>& y) {
  binary_expand_op(out, x, y, [](const A& u, const B& v) { return u - v; });
}

template <typename R, typename A, typename B, int NO, int NX, int NY>
void times(array<R, NO>& out, const array<A, NX>& x, const array<B, NY>& y) {
  binary_expand_op(out, x, y, [](const A& u, const B& v) { return u * v; });
}

template <typename R, typename A, typename B, int NO, int NX, int NY>
void rdivide(array<R, NO>& out, const array<A, NX>& x, const array<B, NY>& y) {
  binary_expand_op(out, x, y, [](const A& u, const B& v) { return u / v; });
}

} // namespace coder
