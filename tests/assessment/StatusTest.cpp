#include "assessment/Status.h"
#include "assessment/DataCache.h"

#include <gtest/gtest.h>
#include <sstream>

static visualization parameter(const std::string& name, float g, float y, float o, float kz,
                               double value, int active = 1, int corridor = 1, int zero = 0,
                               int type = 1) {
  return {0, 42, 1,         100,   11, name, g,    y,    o,        kz, active,
          1, 0,  value / 2, value, "", 0,    type, zero, corridor, "", ""};
}

// Colours of mm/s, battery %, a frequency around 100 (97.5 .. 102.5 cut toward zero to 97 .. 102),
// -97.5 cut to -97, bounds beyond 32 bits held at its ends; a value on a bound is within, NaN red.
// Then "name:value:colour:weighted" each and status|maximum|has_data: inactive, switched-off and
// weightless parameters leave the mean; nothing assessed is good; a weighted 0.01 does not count;
// no rows, no status; yellow at orange: larger is better; a centre makes a corridor; type 2
// without a centre admits only 0; a name's first row wins; without a point the raw value counts.
// The first status kept for a point stays. A parameter's smoothed value, which a point judges, is
// half the raw one.
TEST(Status, ColoursReducedToThePointStatus) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  std::string c;
  for (const float v : {2.8f, 2.81f, 4.5f, 7.1f, 7.2f, nan})
    c += std::to_string(Status::color(v, 2.8f, 4.5f, 7.1f));
  for (const float v : {50.0f, 49.0f, 30.0f, 25.0f, 20.0f, 19.0f, nan})
    c += std::to_string(Status::color_invers(v, 50, 30, 20));
  for (const float v : {102.0f, 97.0f, 102.2f, 96.9f, 109.5f, 89.0f, nan})
    c += std::to_string(Status::color_corridor(v, 2.5f, 5, 10, 100));
  for (const float v : {-97.0f, -97.2f, 117.9f})
    c += std::to_string(Status::color_corridor(v, 10, 20, 1075, 10));
  for (const float v : {2e9f, 3e9f, -3e9f})
    c += std::to_string(Status::color_corridor(v, 25, 50, 1e9f, 2e9f));
  EXPECT_EQ(c, "122344" + std::string("1223344") + "1122344" + "344" + "144");
  std::ostringstream out;
  DataCache cache;
  const auto assess = [&](int point, const std::vector<visualization>& rows) {
    Status status(nullptr, 42, 1001, 100, point, false);
    status.readData(rows);
    status.calculateStatus();
    cache.setCpStatus(point, status.status);
    for (const auto& [name, p] : status.parameters)
      out << name << ":" << p.value << ":" << p.color << ":" << p.weighted << ",";
    out << "|" << status.status << "|" << status.status_max << "|" << status.has_data << " ";
  };
  assess(11, {parameter("V", 2.8f, 4.5f, 7.1f, 1, 10), parameter("T", 30, 40, 50, 2, 70),
              parameter("K", 3, 4, 5, 0, 20), parameter("A", 1, 2, 3, 1, 30, 0),
              parameter("U", 50, 30, 20, 1, 5, 1, 0)});
  assess(11, {parameter("A", 1, 2, 3, 1, 30, 0)});
  assess(11, {parameter("A", 3, 4, 5, 0.01f, 2), parameter("B", 3, 4, 5, 0.5f, 2)});
  assess(11, {});
  assess(12, {parameter("F", 10, 5, 5, 1, 14), parameter("Q", 2.5f, 5, 10, 1, 208, 1, 1, 100),
              parameter("Z", 2.5f, 5, 10, 1, 1, 1, 1, 0, 2)});
  assess(12, {parameter("V", 2.8f, 4.5f, 7.1f, 1, 6), parameter("V", 10, 20, 30, 1, 50)});
  assess(0, {parameter("V", 2.8f, 4.5f, 7.1f, 1, 6)});
  out << cache.getCpStatus(11) << "|" << cache.getCpStatus(12) << "|" << cache.getCpStatus(13);
  EXPECT_EQ(out.str(),
            "A:15:0:0,K:10:4:0,T:35:2:4,U:2.5:0:0,V:5:3:3,|3.5|4|1 A:15:0:0,|1|1|1 "
            "A:1:1:0.01,B:1:1:0.5,|0.5|1|1 |0|1|0 F:7:2:2,Q:104:2:2,Z:0.5:4:4,|2.66667|4|1 "
            "V:3:2:2,|2|2|1 V:6:3:3,|3|3|1 3.5|2.66667|0");
}
