// The reference reads: plant description, module and measurement rows, result arrays,
// recalculation jobs and instance records.
#include "store/WorkPostgreSQL.h"

#include <stdexcept>

namespace {
[[noreturn]] void notYet(const char* operation) {
  throw std::logic_error(std::string("WorkPostgreSQL::") + operation + " is not written yet");
}
} // namespace

void WorkPostgreSQL::getOrganization(std::map<std::string, int>&) { notYet("getOrganization"); }
void WorkPostgreSQL::getGateway(int, std::vector<gateway>&) { notYet("getGateway"); }
void WorkPostgreSQL::readParamInfo(long, std::string, std::string, std::vector<param_info>&) {
  notYet("readParamInfo");
}
void WorkPostgreSQL::readMotor(int, int&, int&, int&, int&, int&, int&) { notYet("readMotor"); }
void WorkPostgreSQL::readBearing(int, double&, int&, int&, double&, double&, double&) {
  notYet("readBearing");
}
void WorkPostgreSQL::readModule(long, unsigned int&, int&, int&, int&, int&, bool&, int&,
                                std::string&, std::string&, int&) {
  notYet("readModule");
}
void WorkPostgreSQL::readModule(std::vector<module_data>&) { notYet("readModule"); }
void WorkPostgreSQL::getModulesGateway(int, std::vector<module_data>&) {
  notYet("getModulesGateway");
}
void WorkPostgreSQL::readChannel(long, std::vector<channel>&) { notYet("readChannel"); }
void WorkPostgreSQL::readControlPoint(int, std::map<int, float>&) { notYet("readControlPoint"); }
void WorkPostgreSQL::readModuleParam(int, int, std::vector<module_param>&) {
  notYet("readModuleParam");
}
void WorkPostgreSQL::readAggregate(int, int&, int&, int&, int&, int&, int&, std::string&,
                                   std::string&, std::string&) {
  notYet("readAggregate");
}
void WorkPostgreSQL::readStatusElement(int, float&) { notYet("readStatusElement"); }
void WorkPostgreSQL::getArrayResult(std::string, std::string, std::vector<std::string>&,
                                    std::vector<long>&, std::vector<double>&) {
  notYet("getArrayResult");
}
void WorkPostgreSQL::getArrayResultId(std::string, std::string, std::vector<int>&,
                                      std::vector<std::string>&, std::vector<long>&,
                                      std::vector<double>&) {
  notYet("getArrayResultId");
}
void WorkPostgreSQL::getArrayResultFRM(std::string, std::vector<int>&, std::vector<double>&) {
  notYet("getArrayResultFRM");
}
void WorkPostgreSQL::readVisualization(long, std::vector<visualization>&) {
  notYet("readVisualization");
}
void WorkPostgreSQL::readRaw(int, std::vector<raw>&) { notYet("readRaw"); }
void WorkPostgreSQL::readResult(std::string, std::vector<int>&, std::vector<int>&,
                                std::vector<std::string>&, std::vector<int>&,
                                std::vector<double>&) {
  notYet("readResult");
}
void WorkPostgreSQL::readRecalculation(int&, long&, std::string&, std::string&, std::string&) {
  notYet("readRecalculation");
}
void WorkPostgreSQL::getStateRecalculation(int, int&, int&) { notYet("getStateRecalculation"); }
void WorkPostgreSQL::readCalculation(std::vector<int>&, int&) { notYet("readCalculation"); }
void WorkPostgreSQL::readVekCalculation(int, std::string&) { notYet("readVekCalculation"); }
