// Comparison of numeric results against references, the reader of golden data files and the
// conversions between their vectors and coder arrays.
#pragma once

#include "coder/coder_array.h"
#include "coder/rtwtypes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace vek_test {

using V = std::vector<double>;

// Element-wise: |got - want| <= tol * max(|want|, floor). A NaN where a number belongs, or a
// wrong infinity, fails whatever the tolerance.
inline ::testing::AssertionResult closeElementwise(const V& got, const V& want, double tol,
                                                   double floor) {
  if (got.size() != want.size())
    return ::testing::AssertionFailure() << "length " << got.size() << ", want " << want.size();
  for (size_t i = 0; i < got.size(); ++i) {
    const double err = std::fabs(got[i] - want[i]) / std::max(std::fabs(want[i]), floor);
    if (std::isnan(got[i]) != std::isnan(want[i]) || (std::isinf(want[i]) && got[i] != want[i]) ||
        (std::isfinite(want[i]) && err > tol))
      return ::testing::AssertionFailure() << "at " << i << " of " << got.size() << ": got "
                                           << got[i] << ", want " << want[i] << ", error " << err;
  }
  return ::testing::AssertionSuccess();
}
// Norm-wise: max |got - want| over max |want| (absolute when the reference is all zero); a
// tolerance of 0 asks for the same values.
inline ::testing::AssertionResult closeRelative(const V& got, const V& want, double tol) {
  double scale = 0.0;
  for (double w : want)
    scale = std::isfinite(w) ? std::max(scale, std::fabs(w)) : scale;
  return closeElementwise(got, want, tol, scale > 0.0 ? scale : 1.0);
}

// A golden file: its first line names the script that wrote it; every other line is
// "name: v1 v2 ..." (%.17g, NaN and Inf too). The path is relative to the source tree; a
// missing file throws, and so does an absent name.
class GoldenFile {
public:
  explicit GoldenFile(const std::string& relative_path) {
    std::ifstream in(std::string(VEK_SOURCE_DIR) + "/" + relative_path);
    std::string line;
    if (!std::getline(in, line))
      throw std::runtime_error("golden file missing: " + relative_path);
    while (std::getline(in, line)) {
      V& values = entries_[line.substr(0, line.find(':'))];
      char* end = nullptr;
      for (const char* p = line.c_str() + line.find(':') + 1;
           values.push_back(std::strtod(p, &end)), end != p;)
        p = end;
      values.pop_back();
    }
  }
  const V& operator[](const std::string& name) const { return entries_.at(name); }
  bool has(const std::string& name) const { return entries_.count(name) != 0; }
  const std::map<std::string, V>& entries() const { return entries_; }

private:
  std::map<std::string, V> entries_;
};

// The Park-Miller sequence s = 16807 s mod (2^31 - 1) from `seed`, mapped to [-0.5, 0.5): the
// same doubles as golden/lcg_signal.m, so long inputs need not be stored.
inline V lcgSignal(std::int64_t seed, int n) {
  V x;
  for (std::int64_t s = seed; static_cast<int>(x.size()) < n;)
    x.push_back(static_cast<double>(s = (16807 * s) % 2147483647) / 2147483647.0 - 0.5);
  return x;
}

inline coder::array<double, 2> toRow(const V& v) {
  coder::array<double, 2> a;
  a.set_size(1, int(v.size()));
  std::copy(v.begin(), v.end(), a.data());
  return a;
}
inline coder::array<double, 1> toColumn(const V& v) {
  coder::array<double, 1> a;
  a.set_size(int(v.size()));
  std::copy(v.begin(), v.end(), a.data());
  return a;
}
template <typename T, int N> std::vector<T> toVector(const coder::array<T, N>& a) {
  return std::vector<T>(a.data(), a.data() + a.numel());
}
inline V join(V first, const V& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}
// Real parts, then imaginary parts: one norm-wise error covers both.
template <int N> V flatten(const coder::array<creal_T, N>& a) {
  V v(size_t(2 * a.numel()));
  for (int k = 0; k < a.numel(); ++k)
    v[size_t(k)] = a[k].re, v[size_t(k + a.numel())] = a[k].im;
  return v;
}

} // namespace vek_test
