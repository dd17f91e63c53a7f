// The modules' side of the connectivity watch: which modules have gone silent, which are
// silent only because their gateway is lost, and which have come back.
#include "connectivity/ModuleWork.h"

#include <algorithm>
#include <iostream>

#include "logging/time_helpers.h"
#include "store/sql_quote.h"

namespace {

// Module types that report the machine's running state: when they fall silent, the state of
// their machine is no longer known.
bool reportsMachineState(int type_module) {
  return type_module == 1 || type_module == 9;
}

} // namespace

ModuleWork::ModuleWork(DataBase* db_, PrintLog* log_) : db(db_), log(log_) {
  read();
  db->getOrganization(organizations);
}

void ModuleWork::read() {
  db->readModule(modules);
  for (const module_data& m : modules) {
    std::cout << std::to_string(m.source) + " " + std::to_string(m.broadcasting_period) + " " +
                     std::to_string(m.gateway_id) + "  " + m.utc_value + " " +
                     m.organization_alias + "\n"
              << std::flush;
  }
}

std::vector<std::vector<int>> ModuleWork::readChannelControlPoint(long source) {
  std::vector<std::vector<int>> bindings;
  db->getValue("SELECT channel_id, control_point_id FROM module JOIN channel c on module.source "
               "= c.source JOIN channel_contol_point ccp on c.id = ccp.channel_id JOIN "
               "control_point cp on ccp.control_point_id = cp.id WHERE c.source = " +
                   std::to_string(source) + " and ccp.active",
               bindings);
  return bindings;
}

int ModuleWork::countRecentRows(const module_data& module, long long minutes) {
  // RECEIPT_DATE is stored in the module's own time unless the module sends UTC, so "now" is
  // taken at that time base.
  const std::string offset = module.data_in_utc_0 ? "+0:00" : module.utc_value;
  return db->getValueInt(
      "SELECT COUNT(*) FROM PARAM_INFO WHERE SOURCE = " + std::to_string(module.source) +
      " AND RECEIPT_DATE >= (TO_TIMESTAMP(" + sql::quoted(time_now(2, offset)) +
      ",'yy-mm-dd hh24:mi:ss') - INTERVAL " + sql::quoted(std::to_string(minutes)) + " MINUTE)");
}

bool ModuleWork::gatewayLost(int gateway_id) const {
  const auto lost = [gateway_id](const gateway& g) {
    return g.id == gateway_id && g.connection_status == 1;
  };
  return std::any_of(gateways_sync.begin(), gateways_sync.end(), lost) ||
         std::any_of(gateways_modules.begin(), gateways_modules.end(), lost);
}

void ModuleWork::notifyRestored(const module_data& module,
                                const std::vector<std::vector<int>>& bindings,
                                const std::string& t0) {
  for (const std::vector<int>& binding : bindings) {
    if (binding.size() != 2) {
      continue;
    }
    db->notificationSystemSave("8", module.source, t0, 1, 0, "", 4, module.organization_alias,
                               binding[0], binding[1]);
    db->setNotificationStatus("1", module.source, t0, 1, 0, 4, module.organization_alias,
                              binding[0], binding[1]);
  }
}

void ModuleWork::analyze() {
  db->readModule(modules);
  for (module_data& m : modules) {
    // A module without a period (NULL reads as 0) has no rhythm to miss.
    if (m.broadcasting_period == 0) {
      continue;
    }
    last_period = m.broadcasting_period;
    const std::string source = std::to_string(m.source);

    // Behind a lost gateway a module's silence says nothing about the module itself: no
    // message is raised for it, and its data are not looked at.
    if (gatewayLost(m.gateway_id)) {
      db->setConnectionStatus("MODULE", m.id, 2);
      log->print(source + " - error communication gatewey\n");
      status[m.source] = m.connection_status;
      continue;
    }

    const std::string t0 = time_now(2, "+0:00");
    // Silent for twice its period: one missed row may be a radio hiccup, two are not.
    const int count = countRecentRows(m, 2LL * m.broadcasting_period);
    const std::vector<std::vector<int>> bindings = readChannelControlPoint(m.source);

    if (count == 0) {
      // Raised again on every run while lost; the store writes it once a day at most while
      // the earlier one stands open.
      for (const std::vector<int>& binding : bindings) {
        if (binding.size() == 2) {
          db->notificationSystemSave("1", m.source, t0, 0, 0, "", 4, m.organization_alias,
                                     binding[0], binding[1]);
        }
      }
      db->setConnectionStatus("MODULE", m.id, 1);
      log->print("error communication module: " + source + "\n");
      if (reportsMachineState(m.type_module)) {
        const int aggregate_id = db->getValueInt(
            "SELECT control_point.aggregate_id FROM module INNER JOIN channel ON module.source "
            "= channel.source INNER JOIN channel_contol_point ON channel.id = "
            "channel_contol_point.channel_id INNER JOIN control_point ON "
            "channel_contol_point.control_point_id = control_point.id WHERE module.source = " +
            source);
        if (aggregate_id != 0) {
          db->writeAggregateMode(aggregate_id, 0);
          log->print("aggregate: " + std::to_string(aggregate_id) + ", state: unknown\n");
        }
      }
    } else if (m.connection_status == 1) {
      m.connection_status = 0;
      notifyRestored(m, bindings, t0);
      db->setConnectionStatus("MODULE", m.id, 0);
      log->print("restoration of communication with the module: " + source + "\n");
    } else if (m.connection_status == 2) {
      // Nothing was raised for a gateway-silent module, so nothing is closed.
      m.connection_status = 0;
      db->setConnectionStatus("MODULE", m.id, 0);
      log->print(source + " - restoration of communication gatewey\n");
    }
    // A module found lost in this run keeps the status read at its start: the loop's quick
    // restoration takes it up after the next run, when the table gives the 1 back.
    status[m.source] = m.connection_status;
  }
}

void ModuleWork::setConnectionStatusModule(long source, int seen) {
  const auto found = std::find_if(modules.begin(), modules.end(),
                                  [source](const module_data& m) { return m.source == source; });
  if (found == modules.end()) {
    return;
  }
  if (seen == 1) {
    notifyRestored(*found, readChannelControlPoint(source), time_now(2, "+0:00"));
  }
  status[source] = 0;
  db->setConnectionStatus("MODULE", found->id, 0);
  log->print("restoration of communication with the module: " + std::to_string(source) + "\n");
}

int ModuleWork::connectionStatus(long source) const {
  const auto found = status.find(source);
  return found == status.end() ? 0 : found->second;
}
