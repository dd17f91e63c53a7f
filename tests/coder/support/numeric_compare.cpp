#include "numeric_compare.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace vek_test {

namespace {

// Non-finite entries are compared exactly: a NaN where a number belongs is a wrong result,
// however small the tolerance is elsewhere.
::testing::AssertionResult checkShapeAndNonFinite(const std::vector<double>& got,
                                                  const std::vector<double>& want) {
  if (got.size() != want.size()) {
    return ::testing::AssertionFailure()
           << "length " << got.size() << ", reference length " << want.size();
  }
  for (size_t i = 0; i < got.size(); ++i) {
    const bool nan_got = std::isnan(got[i]);
    const bool nan_want = std::isnan(want[i]);
    if (nan_got != nan_want || (std::isinf(want[i]) && got[i] != want[i]) ||
        (std::isinf(got[i]) && got[i] != want[i])) {
      return ::testing::AssertionFailure()
             << "non-finite mismatch at index " << i << ": got " << got[i] << ", want "
             << want[i];
    }
  }
  return ::testing::AssertionSuccess();
}

} // namespace

::testing::AssertionResult closeRelative(const std::vector<double>& got,
                                         const std::vector<double>& want, double tol) {
  auto shape = checkShapeAndNonFinite(got, want);
  if (!shape) return shape;
  double scale = 0.0;
  for (double w : want) {
    if (std::isfinite(w)) scale = std::max(scale, std::fabs(w));
  }
  double worst = 0.0;
  size_t worst_index = 0;
  for (size_t i = 0; i < got.size(); ++i) {
    if (!std::isfinite(want[i])) continue;
    const double diff = std::fabs(got[i] - want[i]);
    if (diff > worst) {
      worst = diff;
      worst_index = i;
    }
  }
  const double err = scale > 0.0 ? worst / scale : worst;
  if (err <= tol) return ::testing::AssertionSuccess() << "relative error " << err;
  return ::testing::AssertionFailure()
         << "relative error " << err << " exceeds " << tol << " at index " << worst_index
         << ": got " << got[worst_index] << ", want " << want[worst_index] << " (n "
         << got.size() << ")";
}

::testing::AssertionResult closeElementwise(const std::vector<double>& got,
                                            const std::vector<double>& want, double tol,
                                            double floor) {
  auto shape = checkShapeAndNonFinite(got, want);
  if (!shape) return shape;
  double worst = 0.0;
  size_t worst_index = 0;
  for (size_t i = 0; i < got.size(); ++i) {
    if (!std::isfinite(want[i])) continue;
    const double err =
        std::fabs(got[i] - want[i]) / std::max(std::fabs(want[i]), floor);
    if (err > worst) {
      worst = err;
      worst_index = i;
    }
  }
  if (worst <= tol) return ::testing::AssertionSuccess() << "relative error " << worst;
  return ::testing::AssertionFailure()
         << "element-wise relative error " << worst << " exceeds " << tol << " at index "
         << worst_index << ": got " << got[worst_index] << ", want " << want[worst_index];
}

GoldenFile::GoldenFile(const std::string& relative_path) {
  const std::string path = std::string(VEK_SOURCE_DIR) + "/" + relative_path;
  std::ifstream in(path);
  if (!in) throw std::runtime_error("golden file missing: " + path);
  std::string line;
  std::getline(in, line); // the generator's name
  int line_no = 1;
  while (std::getline(in, line)) {
    ++line_no;
    if (line.empty()) continue;
    const auto colon = line.find(':');
    if (colon == std::string::npos || colon == 0) {
      throw std::runtime_error(path + ":" + std::to_string(line_no) + ": no name");
    }
    std::string name = line.substr(0, colon);
    if (entries_.count(name)) {
      throw std::runtime_error(path + ":" + std::to_string(line_no) + ": repeated " + name);
    }
    std::vector<double> values;
    std::istringstream fields(line.substr(colon + 1));
    std::string token;
    while (fields >> token) {
      char* end = nullptr;
      const double v = std::strtod(token.c_str(), &end);
      if (end == token.c_str() || *end != '\0') {
        throw std::runtime_error(path + ":" + std::to_string(line_no) + ": bad number " +
                                 token);
      }
      values.push_back(v);
    }
    entries_.emplace(std::move(name), std::move(values));
  }
}

const std::vector<double>& GoldenFile::operator[](const std::string& name) const {
  auto it = entries_.find(name);
  if (it == entries_.end()) throw std::out_of_range("golden entry missing: " + name);
  return it->second;
}

} // namespace vek_test
