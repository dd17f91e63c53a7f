// The loop's cache of control-point statuses.
#include <gtest/gtest.h>

#include "assessment/DataCache.h"

TEST(DataCache, FirstStatusOfAPointStaysAndUnknownPointsAreZero) {
  DataCache cache;
  EXPECT_EQ(cache.getCpStatus(11), 0.0f);
  cache.setCpStatus(11, 2.5f);
  // A second measurement of the same point in the loop's life does not replace the first.
  cache.setCpStatus(11, 3.75f);
  cache.setCpStatus(12, 1.0f);
  EXPECT_EQ(cache.getCpStatus(11), 2.5f);
  EXPECT_EQ(cache.getCpStatus(12), 1.0f);
  EXPECT_EQ(cache.getCpStatus(13), 0.0f);
}
