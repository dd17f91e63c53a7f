// The defaults of the shared records, on which readers that leave fields alone rely.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>

#include "records/types.h"

namespace {

std::uint32_t bitsOf(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

TEST(SharedRecords, ParametersWithoutValueAreTheQuietNaN) {
  const result_param p;
  for (const float value : {p.value, p.middle, p.trend, p.monotone}) {
    EXPECT_EQ(bitsOf(value), 0x7FC00000u);
  }
  EXPECT_EQ(p.visualization_id, 0);
  EXPECT_TRUE(p.rul.empty());
}

TEST(SharedRecords, DefaultsThatAreNotZero) {
  EXPECT_TRUE(channel().active);
  EXPECT_EQ(visualization().type_corridor, 1);
  EXPECT_TRUE(calc_result().has_raw_data);
}

TEST(SharedRecords, ModuleDataStartsAtZero) {
  // The store always sets id, source, type and gateway; a record made elsewhere must still
  // hold no indeterminate value.
  const module_data m{};
  const module_data* heap = new module_data;
  for (const module_data* record : {&m, static_cast<const module_data*>(heap)}) {
    EXPECT_EQ(record->id, 0);
    EXPECT_EQ(record->source, 0);
    EXPECT_EQ(record->type_module, 0);
    EXPECT_EQ(record->gateway_id, 0);
    EXPECT_EQ(record->broadcasting_period, 0);
    EXPECT_FALSE(record->data_in_utc_0);
  }
  delete heap;
}

} // namespace
