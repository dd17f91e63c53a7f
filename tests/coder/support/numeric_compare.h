// Comparison of numeric results against references, the reader of golden data files and the
// conversions between their vectors and coder arrays.
#pragma once

#include "coder/coder_array.h"
#include "coder/rtwtypes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vek_test {

// Norm-wise relative error: max |got - want| over max |want| (absolute when the reference is
// all zero). NaN must stand where the reference has NaN and infinities must match exactly,
// whatever the tolerance; a tolerance of 0 asks for the same values.
::testing::AssertionResult closeRelative(const std::vector<double>& got,
                                         const std::vector<double>& want, double tol);
// Element-wise: |got - want| <= tol * max(|want|, floor), for results whose small entries
// matter as much as the large ones.
::testing::AssertionResult closeElementwise(const std::vector<double>& got,
                                            const std::vector<double>& want, double tol,
                                            double floor);

// A golden file: its first line names the script that wrote it; every other non-empty line
// is "name: v1 v2 ..." (%.17g, NaN and Inf too), each name once.
class GoldenFile {
public:
  // Path relative to the source tree; throws std::runtime_error on a missing or bad file.
  explicit GoldenFile(const std::string& relative_path);
  // Throws std::out_of_range when the name is absent.
  const std::vector<double>& operator[](const std::string& name) const;
  bool has(const std::string& name) const { return entries_.count(name) != 0; }
  const std::map<std::string, std::vector<double>>& entries() const { return entries_; }

private:
  std::map<std::string, std::vector<double>> entries_;
};

// The Park-Miller sequence s = 16807 s mod (2^31 - 1) from `seed`, mapped to [-0.5, 0.5): the
// same doubles as golden/lcg_signal.m, so long inputs need not be stored.
inline std::vector<double> lcgSignal(std::int64_t seed, int n) {
  std::vector<double> x;
  for (std::int64_t s = seed; static_cast<int>(x.size()) < n;)
    x.push_back(static_cast<double>(s = (16807 * s) % 2147483647) / 2147483647.0 - 0.5);
  return x;
}

inline coder::array<double, 2> toRow(const std::vector<double>& v) {
  coder::array<double, 2> a;
  a.set_size(1, static_cast<int>(v.size()));
  std::copy(v.begin(), v.end(), a.data());
  return a;
}
inline coder::array<double, 1> toColumn(const std::vector<double>& v) {
  coder::array<double, 1> a;
  a.set_size(static_cast<int>(v.size()));
  std::copy(v.begin(), v.end(), a.data());
  return a;
}
template <typename T, int N> std::vector<T> toVector(const coder::array<T, N>& a) {
  return std::vector<T>(a.data(), a.data() + a.numel());
}
inline std::vector<double> join(std::vector<double> first, const std::vector<double>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}
// Real parts, then imaginary parts: one norm-wise error covers both.
template <int N> std::vector<double> flatten(const coder::array<creal_T, N>& a) {
  std::vector<double> re, im;
  for (int k = 0; k < a.numel(); ++k) {
    re.push_back(a[k].re);
    im.push_back(a[k].im);
  }
  return join(re, im);
}

} // namespace vek_test
