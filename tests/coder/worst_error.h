// Collects the relative errors that the comparisons of one test report, and prints the
// worst of them when the test ends, so a run shows how much margin each tolerance has.
#pragma once

#include "support/numeric_compare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace vek_test {

class WorstError {
public:
  explicit WorstError(std::string what) : what_(std::move(what)) {}
  WorstError(const WorstError&) = delete;
  WorstError& operator=(const WorstError&) = delete;
  ~WorstError() { std::printf("[  worst   ] %s: %.3g\n", what_.c_str(), worst_); }

  // Expects the comparison to hold and keeps the error it reports ("relative error E").
  void expect(const ::testing::AssertionResult& result) {
    EXPECT_TRUE(result);
    const std::string message = result.message();
    const auto at = message.find("relative error ");
    if (at != std::string::npos) {
      worst_ = std::max(worst_, std::strtod(message.c_str() + at + 15, nullptr));
    }
  }

private:
  std::string what_;
  double worst_ = 0.0;
};

} // namespace vek_test
