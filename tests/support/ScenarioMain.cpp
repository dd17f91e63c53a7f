// The main of a scenario program; vek_scenarios() names its suite and directory.
#include "support/Scenario.h"
int main(int argc, char** argv) {
  return vek_test::scenarioMain(argc, argv, VEK_SCENARIO_SUITE, VEK_SCENARIO_DIR);
}
