#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "process/MeasurementLoop.h"

TEST(MeasurementLoop, TimerPastItsPeriodHoldsAndNeverLeavesTheIntRange) {
  // Below its period a timer takes every pass's duration, up to the first pass beyond it;
  // past it, it is due and holds however many passes a replay makes without the action.
  int timer = 290000;
  for (int pass = 0; pass < 100000; ++pass) {
    MeasurementLoop::advanceTimer(timer, 300000, 30000);
  }
  EXPECT_EQ(timer, 320000);
  // A longer period set meanwhile lets it run on; a period of 0 stops it where it stands.
  MeasurementLoop::advanceTimer(timer, 1200000, 30000);
  MeasurementLoop::advanceTimer(timer, 0, 30000);
  EXPECT_EQ(timer, 350000);
  // The largest period that the settings can give: the sum stops at the end of the range.
  timer = 2147483000;
  MeasurementLoop::advanceTimer(timer, 2147483000, 30000);
  MeasurementLoop::advanceTimer(timer, 2147483000, 30000);
  EXPECT_EQ(timer, std::numeric_limits<int>::max());
}

TEST(MeasurementLoop, MachineStatusIsDueOnceInTenSecondsAndAgainAfterTheClockWraps) {
  // Machine 7 last reckoned at 120 s; 8 never. A clock below the last pass has wrapped (it is
  // reset above ten minutes) and counts as due, so no machine waits for the clock to catch up.
  const std::map<int, int> written_at{{7, 120000}};
  std::string due;
  for (const auto& [machine, clock] : std::vector<std::pair<int, int>>{
           {7, 120000}, {7, 130000}, {7, 130001}, {8, 120000}, {8, 0}, {7, 0}, {7, 119999}}) {
    due += MeasurementLoop::aggregateStatusDue(written_at, machine, clock) ? "1" : "0";
  }
  EXPECT_EQ(due, "0011111");
}
