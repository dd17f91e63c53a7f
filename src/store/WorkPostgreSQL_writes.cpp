// The result writes: results, history, statuses, latest values, job progress, instance
// records and connection states.
#include "store/WorkPostgreSQL.h"

#include <stdexcept>

namespace {
[[noreturn]] void notYet(const char* operation) {
  throw std::logic_error(std::string("WorkPostgreSQL::") + operation + " is not written yet");
}
} // namespace

void WorkPostgreSQL::setHardwareStatusModule(long, unsigned int) {
  notYet("setHardwareStatusModule");
}
void WorkPostgreSQL::writeVersion(int, std::string) { notYet("writeVersion"); }
std::string WorkPostgreSQL::writeResultTmp(std::vector<result_temp>) {
  notYet("writeResultTmp");
}
void WorkPostgreSQL::writeResult(std::string, calc_result) { notYet("writeResult"); }
void WorkPostgreSQL::writeResultBase(std::string, calc_result, bool) {
  notYet("writeResultBase");
}
void WorkPostgreSQL::writeResultMathHistory(std::string, calc_result) {
  notYet("writeResultMathHistory");
}
void WorkPostgreSQL::writeStatusStatusElement(long, float, int, int, int) {
  notYet("writeStatusStatusElement");
}
void WorkPostgreSQL::writeStatusStatusAggregate(float, int, std::string) {
  notYet("writeStatusStatusAggregate");
}
void WorkPostgreSQL::writeStatusControlPoint(float, float, int, std::string) {
  notYet("writeStatusControlPoint");
}
void WorkPostgreSQL::writeStatusAggregate(float, float, int, std::string) {
  notYet("writeStatusAggregate");
}
void WorkPostgreSQL::writeLatestData(calc_result) { notYet("writeLatestData"); }
void WorkPostgreSQL::writeAggregateMode(int, int) { notYet("writeAggregateMode"); }
void WorkPostgreSQL::writeRulVisualization(int, std::string) { notYet("writeRulVisualization"); }
void WorkPostgreSQL::writeRecalculation(int, int, std::string) { notYet("writeRecalculation"); }
void WorkPostgreSQL::writeCalculation(int, std::string, int) { notYet("writeCalculation"); }
void WorkPostgreSQL::updateCalculation(int, int, int, std::string) {
  notYet("updateCalculation");
}
void WorkPostgreSQL::updateCalculation(int, std::string) { notYet("updateCalculation"); }
void WorkPostgreSQL::setConnectionStatus(std::string, int, int) { notYet("setConnectionStatus"); }
void WorkPostgreSQL::setConnectionStatusOrganization(std::string, int) {
  notYet("setConnectionStatusOrganization");
}
