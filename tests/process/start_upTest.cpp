#include "process/start_up.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <regex>
#include <string>

#include "logging/time_helpers.h"
#include "process/process_state.h"

TEST(StartUp, LogNamesCarryDatabaseInstanceAndUnpaddedLocalTime) {
  const std::regex run_log(R"(plant_c3_\d{4}-[1-9]\d?-[1-9]\d?(-(0|[1-9]\d?)){3}\.log)");
  const std::regex error_log(R"(plant_c3_\d{4}-[1-9]\d?-[1-9]\d?(-(0|[1-9]\d?)){3}_error\.log)");
  EXPECT_TRUE(std::regex_match(runLogName("plant", 3), run_log)) << runLogName("plant", 3);
  EXPECT_TRUE(std::regex_match(errorLogName("plant", 3), error_log)) << errorLogName("plant", 3);
  // With no database name the names begin with "_c".
  EXPECT_EQ(runLogName("", 1).rfind("_c1_", 0), 0u);
  EXPECT_EQ(errorLogName("", 1).rfind("_c1_", 0), 0u);
}

TEST(StartUp, ErrorLogIsNamedBeforeMainRuns) {
  // Static initialisation gives a name of local time even before the options are read.
  const std::regex early(R"(\d{4}-[1-9]\d?-[1-9]\d?(-(0|[1-9]\d?)){3}_error\.log)");
  EXPECT_TRUE(std::regex_match(process::file_name_error, early)) << process::file_name_error;
}

TEST(StartUp, RunIpIsADottedAddressOfThisHost) {
  const std::string ip = findRunIp();
  in_addr parsed{};
  // Every host here has at least the loopback interface, which is not excluded.
  ASSERT_FALSE(ip.empty());
  EXPECT_EQ(inet_pton(AF_INET, ip.c_str(), &parsed), 1) << ip;
}
