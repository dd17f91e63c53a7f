#include "coder/grp2idx.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace coder {

void grp2idx(const double* s, int n, std::vector<double>& g, std::vector<double>& labels) {
  labels.clear();
  for (int i = 0; i < n; ++i) {
    if (!std::isnan(s[i]))
      labels.push_back(s[i] == 0.0 ? 0.0 : s[i]);
  }
  std::sort(labels.begin(), labels.end());
  labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
  g.assign(static_cast<size_t>(n > 0 ? n : 0), std::numeric_limits<double>::quiet_NaN());
  for (int i = 0; i < n; ++i) {
    if (std::isnan(s[i]))
      continue;
    const auto it = std::lower_bound(labels.begin(), labels.end(), s[i]);
    g[static_cast<size_t>(i)] = static_cast<double>(it - labels.begin() + 1);
  }
}

} // namespace coder
