#pragma once

#include <map>
#include <string>
#include <vector>

#include "logging/PrintLog.h"
#include "records/types.h"
#include "store/DataBase.h"

// The watch over modules, gateways and organizations that stop delivering. A silent module
// says nothing about itself, so the measurement loop runs this watch on a timer: each run
// judges the gateways and organizations first (analyze_gateway), then every module with a
// broadcasting period (analyze), and records the verdicts in the CONNECTION_STATUS columns
// with notifications for the places concerned.
//
// MODULE.CONNECTION_STATUS: 0 connected, 1 lost (no row for two broadcasting periods), 2
// silent because its gateway is lost. GATEWAY and ORGANIZATION_OBJECT: 0 connected, 1 lost.
//
// Nothing is guarded here: a store failure leaves a run at the module or gateway where it
// happened and passes to the loop's catches; the rest waits for the next run. The object lives
// on the loop's thread.
//
// ModuleWork.cpp holds the modules' side, ModuleWork_gateway.cpp the gateways' side.
class ModuleWork {
public:
  // Reads every module (and prints one line per module on standard output) and the
  // organizations' statuses as they stand at start. db and log are borrowed and outlive the
  // object. Store failures pass through.
  ModuleWork(DataBase* db, PrintLog* log);

  // Re-reads every module into the list and prints "source period gateway  offset alias" for
  // each on standard output.
  void read();
  // Judges the gateways of both kinds and the organizations of the kind-1 gateways. Runs
  // directly before analyze(), which takes the gateways' verdicts from this run.
  void analyze_gateway();
  // Judges every module with a broadcasting period: lost, silent behind its lost gateway, or
  // restored. Afterwards the status of each judged module as the table held it at the start of
  // this run (0 when restored in it) can be asked with connectionStatus().
  void analyze();
  // The channel and control point of every active binding of the module's channels.
  std::vector<std::vector<int>> readChannelControlPoint(long source);
  // The quick restoration taken when a row of a module counted as lost (1) or gateway-silent
  // (2) arrives: "8" and the closing of "1" per binding for status 1, no notification for 2;
  // the module is connected again. A source that the list does not hold is left alone.
  void setConnectionStatusModule(long source, int status);
  // The status that the last analyze() saw for a module, 0 for one it did not judge.
  int connectionStatus(long source) const;

private:
  // Whether a gateway of either kind with this id is lost by this run's verdicts.
  bool gatewayLost(int gateway_id) const;
  // Rows of the module within `minutes` of its own clock: "+0:00" for a module that sends
  // UTC, else its organization's offset. 64 bits, so that twice the largest period fits.
  int countRecentRows(const module_data& module, long long minutes);
  // "8" and the closing of "1" at each binding (channel, control point), at time t0.
  void notifyRestored(const module_data& module, const std::vector<std::vector<int>>& bindings,
                      const std::string& t0);

  DataBase* db;
  PrintLog* log;
  // A kind-1 gateway that has not reported its SYNC_TIME for this long is lost.
  int gateway_timeout = 1200;
  std::vector<gateway> gateways_sync;       // kind 1: judged by the age of SYNC_TIME
  std::vector<gateway> gateways_modules;    // kind 2: judged by the silence of its modules
  std::map<std::string, int> organizations; // alias -> CONNECTION_STATUS at process start
  std::vector<module_data> modules;
  int last_period = 60; // the last non-zero broadcasting period judged; kept for a debugger
  std::map<long, int> status;
};
