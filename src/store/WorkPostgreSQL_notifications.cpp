// Notifications, recommendations and defects.
#include "store/WorkPostgreSQL.h"

#include <stdexcept>

namespace {
[[noreturn]] void notYet(const char* operation) {
  throw std::logic_error(std::string("WorkPostgreSQL::") + operation + " is not written yet");
}
} // namespace

void WorkPostgreSQL::setNotificationStatus(std::string, long, std::string, int, int, int,
                                           std::string, int, int) {
  notYet("setNotificationStatus");
}
void WorkPostgreSQL::notificationSave(std::string, long, std::string, int, int, std::string, int,
                                      std::string, int, int, int, bool, int) {
  notYet("notificationSave");
}
void WorkPostgreSQL::notificationSystemSave(std::string, long, std::string, int, int,
                                            std::string, int, std::string, int, int) {
  notYet("notificationSystemSave");
}
void WorkPostgreSQL::writeDefects(int, std::map<int, int>) { notYet("writeDefects"); }
bool WorkPostgreSQL::isMessageActive(std::string) { notYet("isMessageActive"); }
bool WorkPostgreSQL::isRecommendationActive(int, int) { notYet("isRecommendationActive"); }
int WorkPostgreSQL::getRecommendationCode(std::string, int) { notYet("getRecommendationCode"); }
