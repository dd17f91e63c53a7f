// Conversions between the vectors of golden files and coder arrays, for the numeric tests.
#pragma once

#include "coder/coder_array.h"
#include "coder/rtwtypes.h"

#include <vector>

namespace vek_test {

inline coder::array<double, 2> toRow(const std::vector<double>& v) {
  coder::array<double, 2> a;
  a.set_size(1, static_cast<int>(v.size()));
  for (size_t k = 0; k < v.size(); ++k)
    a[static_cast<int>(k)] = v[k];
  return a;
}

inline coder::array<double, 1> toColumn(const std::vector<double>& v) {
  coder::array<double, 1> a;
  a.set_size(static_cast<int>(v.size()));
  for (size_t k = 0; k < v.size(); ++k)
    a[static_cast<int>(k)] = v[k];
  return a;
}

template <int N> std::vector<double> toVector(const coder::array<double, N>& a) {
  return std::vector<double>(a.data(), a.data() + a.numel());
}

// Real parts, then imaginary parts: one norm-wise error covers both.
template <int N> std::vector<double> flatten(const coder::array<creal_T, N>& a) {
  std::vector<double> v;
  for (int k = 0; k < a.numel(); ++k)
    v.push_back(a[k].re);
  for (int k = 0; k < a.numel(); ++k)
    v.push_back(a[k].im);
  return v;
}

inline std::vector<double> join(std::vector<double> first, const std::vector<double>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

} // namespace vek_test
