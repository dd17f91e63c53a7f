#include <gtest/gtest.h>

#include <limits>
#include <map>

#include "process/MeasurementLoop.h"

TEST(MeasurementLoop, TimerPastItsPeriodHoldsAndNeverLeavesTheIntRange) {
  // Below its period a timer takes every pass's duration, up to the first pass beyond it.
  int timer = 290000;
  MeasurementLoop::advanceTimer(timer, 300000, 30000);
  EXPECT_EQ(timer, 320000);
  // Past its period it is due and holds, however many passes a replay makes without the
  // action that would reset it.
  for (int pass = 0; pass < 100000; ++pass) {
    MeasurementLoop::advanceTimer(timer, 300000, 30000);
  }
  EXPECT_EQ(timer, 320000);
  // A longer period set meanwhile lets it run on.
  MeasurementLoop::advanceTimer(timer, 1200000, 30000);
  EXPECT_EQ(timer, 350000);
  // A period of 0 stops it where it stands.
  MeasurementLoop::advanceTimer(timer, 0, 30000);
  EXPECT_EQ(timer, 350000);
  // The largest period that the settings can give: the sum stops at the end of the range.
  const int largest = std::numeric_limits<int>::max();
  timer = 2147483000;
  MeasurementLoop::advanceTimer(timer, 2147483000, 30000);
  EXPECT_EQ(timer, largest);
  MeasurementLoop::advanceTimer(timer, 2147483000, 30000);
  EXPECT_EQ(timer, largest);
}

TEST(MeasurementLoop, MachineStatusIsDueOnceInTenSecondsAndAgainAfterTheClockWraps) {
  std::map<int, int> written_at;
  // A machine seen for the first time is due whatever the clock says.
  EXPECT_TRUE(MeasurementLoop::aggregateStatusDue(written_at, 7, 0));
  written_at[7] = 120000;
  // Within ten seconds of its last pass it is not, and exactly ten seconds is not yet more.
  EXPECT_FALSE(MeasurementLoop::aggregateStatusDue(written_at, 7, 120000));
  EXPECT_FALSE(MeasurementLoop::aggregateStatusDue(written_at, 7, 130000));
  EXPECT_TRUE(MeasurementLoop::aggregateStatusDue(written_at, 7, 130001));
  // Another machine keeps its own turn.
  EXPECT_TRUE(MeasurementLoop::aggregateStatusDue(written_at, 8, 120000));
  // The clock is reset above ten minutes: a machine whose last pass stands above the clock
  // would otherwise wait until the clock caught up, up to ten minutes without a status.
  written_at[7] = 599000;
  EXPECT_TRUE(MeasurementLoop::aggregateStatusDue(written_at, 7, 0));
  EXPECT_TRUE(MeasurementLoop::aggregateStatusDue(written_at, 7, 598999));
}
