// The gateways' side of the connectivity watch. A kind-1 gateway reports its own contact in
// SYNC_TIME and is judged by its age; a kind-2 gateway has no such contact and counts as lost
// when every one of its timed modules is silent. An organization is lost when all its kind-1
// gateways are.
#include <string>
#include <vector>

#include "connectivity/ModuleWork.h"
#include "logging/time_helpers.h"

namespace {

const char* const kTimeFormat = "%Y-%m-%d %H:%M:%S";
// A contact older than about thirty years was never made: a NULL SYNC_TIME reads as the far
// past. Such a clock is reported, and the gateway's status is left as it is.
constexpr long kOldestBelievableSec = 946000000;

} // namespace

void ModuleWork::analyze_gateway() {
  // The hyphenated form; TO_TIMESTAMP of the notification reads it all the same.
  const std::string t = time_now(1, "+0:00");

  gateways_sync.clear();
  db->getGateway(1, gateways_sync);
  for (const gateway& g : gateways_sync) {
    // A SYNC_TIME in the future counts as fresh.
    const long age = stringToSec(time_now(2), kTimeFormat) - stringToSec(g.sync_time, kTimeFormat);
    if (age > kOldestBelievableSec) {
      db->notificationSystemSave("12", 0, t, 1, g.id, "", 4, g.organization_alias, 0, 0);
    } else if (age > gateway_timeout) {
      // Repeated on every run while lost; the store writes it once a day at most.
      db->notificationSystemSave("2", 0, t, 0, g.id, "", 4, g.organization_alias, 0, 0);
      db->setConnectionStatus("GATEWAY", g.id, 1);
    } else if (g.connection_status == 1) {
      db->notificationSystemSave("9", 0, t, 1, g.id, "", 4, g.organization_alias, 0, 0);
      db->setNotificationStatus("2", 0, t, 1, g.id, 4, g.organization_alias, 0, 0);
      db->setConnectionStatus("GATEWAY", g.id, 0);
    }
  }

  // Organizations are judged by the statuses as read above, so a gateway lost in this run
  // counts on the next; their own status is the one read at process start.
  for (const auto& [alias, organization_status] : organizations) {
    int total = 0;
    int lost = 0;
    for (const gateway& g : gateways_sync) {
      if (g.organization_alias == alias) {
        ++total;
        lost += g.connection_status == 1 ? 1 : 0;
      }
    }
    if (total == 0 || lost == 0) {
      continue;
    }
    if (lost == total) {
      db->setConnectionStatusOrganization(alias, 1);
      db->notificationSystemSave("24", 0, t, 0, 0, "", 5, alias, 0, 0);
    } else if (organization_status == 1) {
      db->notificationSystemSave("25", 0, t, 1, 0, "", 5, alias, 0, 0);
      db->setNotificationStatus("24", 0, t, 1, 0, 5, alias, 0, 0);
      db->setConnectionStatusOrganization(alias, 0);
    }
  }

  gateways_modules.clear();
  db->getGateway(2, gateways_modules);
  for (gateway& g : gateways_modules) {
    std::vector<module_data> members;
    db->getModulesGateway(g.id, members);
    // A gateway without timed modules has nothing to be judged by.
    if (members.empty()) {
      continue;
    }
    const std::string t2 = time_now(1, "+0:00");
    // One period here, where a module alone gets two: the gateway is lost only when all its
    // modules missed their row, which a single hiccup does not explain. One module that sent
    // is enough to know that the gateway passes data.
    std::size_t silent = 0;
    for (const module_data& m : members) {
      if (countRecentRows(m, m.broadcasting_period) != 0) {
        break;
      }
      ++silent;
    }
    // The verdict is kept in the list, so that analyze() of this run already sees it.
    if (silent == members.size()) {
      g.connection_status = 1;
      db->notificationSystemSave("2", 0, t2, 0, g.id, "", 4, g.organization_alias, 0, 0);
      db->setConnectionStatus("GATEWAY", g.id, 1);
      log->print("error communication gateway: " + std::to_string(g.id) + "\n");
    } else if (g.connection_status == 1) {
      g.connection_status = 0;
      db->notificationSystemSave("9", 0, t2, 1, g.id, "", 4, g.organization_alias, 0, 0);
      db->setNotificationStatus("2", 0, t2, 1, g.id, 4, g.organization_alias, 0, 0);
      db->setConnectionStatus("GATEWAY", g.id, 0);
    }
  }
}
