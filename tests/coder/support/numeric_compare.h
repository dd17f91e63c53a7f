// Comparison of numeric results against references, and the reader of golden data files.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace vek_test {

// Norm-wise relative error: max |got - want| over max |want| (the absolute error when the
// reference is all zero). NaN must stand where the reference has NaN, and infinities must
// match exactly; a mismatch there fails whatever the tolerance. The failure message names
// the error, the tolerance, the worst index and both values there.
::testing::AssertionResult closeRelative(const std::vector<double>& got,
                                         const std::vector<double>& want, double tol);

// Element-wise: |got - want| <= tol * max(|want|, floor) for every element, for results
// whose small entries matter as much as the large ones.
::testing::AssertionResult closeElementwise(const std::vector<double>& got,
                                            const std::vector<double>& want, double tol,
                                            double floor);

// A golden file: its first line names the script that wrote it and is skipped; every other
// non-empty line is "name: v1 v2 ...", numbers as printed with %.17g (NaN, Inf, -Inf too).
// A name may stand once only.
class GoldenFile {
public:
  // Path relative to the source tree, e.g. "tests/coder/golden/fft.txt". Throws
  // std::runtime_error when the file is missing or a line is malformed.
  explicit GoldenFile(const std::string& relative_path);

  // The values of one entry; throws std::out_of_range when the name is absent.
  const std::vector<double>& operator[](const std::string& name) const;
  bool has(const std::string& name) const { return entries_.count(name) != 0; }
  const std::map<std::string, std::vector<double>>& entries() const { return entries_; }

private:
  std::map<std::string, std::vector<double>> entries_;
};

} // namespace vek_test
