#include "numeric_compare.h"

#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace vek_test {

namespace {

// The worst of |got - want| / scale(want) over the elements; a NaN where a number belongs, or
// a wrong infinity, fails whatever the tolerance.
template <typename Scale>
::testing::AssertionResult worstError(const std::vector<double>& got,
                                      const std::vector<double>& want, double tol, Scale scale) {
  if (got.size() != want.size())
    return ::testing::AssertionFailure() << "length " << got.size() << ", want " << want.size();
  double worst = 0.0;
  size_t at = 0;
  for (size_t i = 0; i < got.size(); ++i) {
    if (std::isnan(got[i]) != std::isnan(want[i]) ||
        ((std::isinf(got[i]) || std::isinf(want[i])) && got[i] != want[i]))
      return ::testing::AssertionFailure()
             << "non-finite mismatch at " << i << ": got " << got[i] << ", want " << want[i];
    const double err = std::isfinite(want[i]) ? std::fabs(got[i] - want[i]) / scale(i) : 0.0;
    if (err > worst) {
      worst = err;
      at = i;
    }
  }
  if (worst <= tol)
    return ::testing::AssertionSuccess() << "relative error " << worst;
  return ::testing::AssertionFailure()
         << "relative error " << worst << " exceeds " << tol << " at " << at << ": got " << got[at]
         << ", want " << want[at] << " (n " << got.size() << ")";
}

} // namespace

::testing::AssertionResult closeRelative(const std::vector<double>& got,
                                         const std::vector<double>& want, double tol) {
  double scale = 0.0;
  for (double w : want)
    scale = std::isfinite(w) ? std::max(scale, std::fabs(w)) : scale;
  return worstError(got, want, tol, [&](size_t) { return scale > 0.0 ? scale : 1.0; });
}

::testing::AssertionResult closeElementwise(const std::vector<double>& got,
                                            const std::vector<double>& want, double tol,
                                            double floor) {
  return worstError(got, want, tol, [&](size_t i) { return std::max(std::fabs(want[i]), floor); });
}

GoldenFile::GoldenFile(const std::string& relative_path) {
  const std::string path = std::string(VEK_SOURCE_DIR) + "/" + relative_path;
  std::ifstream in(path);
  if (!in)
    throw std::runtime_error("golden file missing: " + path);
  std::string line;
  std::getline(in, line); // the generator's name
  for (int line_no = 2; std::getline(in, line); ++line_no) {
    const auto colon = line.find(':');
    const std::string where = path + ":" + std::to_string(line_no) + ": ";
    if (line.empty())
      continue;
    if (colon == std::string::npos || colon == 0 || has(line.substr(0, colon)))
      throw std::runtime_error(where + "no name or a repeated one");
    std::vector<double>& values = entries_[line.substr(0, colon)];
    std::istringstream fields(line.substr(colon + 1));
    for (std::string token; fields >> token;) {
      char* end = nullptr;
      values.push_back(std::strtod(token.c_str(), &end));
      if (end == token.c_str() || *end != '\0')
        throw std::runtime_error(where + "bad number " + token);
    }
  }
}

const std::vector<double>& GoldenFile::operator[](const std::string& name) const {
  const auto it = entries_.find(name);
  if (it == entries_.end())
    throw std::out_of_range("golden entry missing: " + name);
  return it->second;
}

} // namespace vek_test
