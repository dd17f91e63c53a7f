#include "process/start_up.h"

#include <arpa/inet.h>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "assessment/DataCache.h"
#include "connectivity/ModuleWork.h"
#include "logging/PrintLog.h"
#include "logging/time_helpers.h"
#include "process/Calculation.h"
#include "process/MeasurementLoop.h"
#include "process/process_state.h"
#include "store/WorkPostgreSQL.h"

namespace {

const char* const kVersion = "130b";

// Room for 100 interface records; a host with more lists only the first hundred.
constexpr int kInterfaceBufferBytes = 4000;

const char* signalText(int signal_number) {
  switch (signal_number) {
  case 1:
    return "SIGHUP: завершение работы";
  case 2:
    return "SIGINT: команда прервать процесс Ctrl-C";
  case 6:
    return "SIGABRT: завершение программы";
  case 9:
    return "SIGKILL: ОС убивает процесс";
  case 11:
    return "SIGSEGV: доступ к непренадлежащей памяти";
  case 15:
    return "SIGTERM: ОС завершает процесс";
  default:
    return "";
  }
}

} // namespace

std::string findRunIp() {
  std::string ip;
  const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  char buffer[kInterfaceBufferBytes] = {};
  ifconf config{};
  config.ifc_len = sizeof(buffer);
  config.ifc_buf = buffer;
  if (ioctl(descriptor, SIOCGIFCONF, &config) != 0) {
    // No list (no socket, no permission): as with no interface, the address stays empty
    // rather than being read from a buffer the kernel never filled.
    config.ifc_len = 0;
  }
  const int count = config.ifc_len / static_cast<int>(sizeof(ifreq));
  for (int i = 0; i < count; ++i) {
    // Every interface is taken, loopback too: installations identify an instance by the
    // address of its last listed interface, and tools compare VEK_CALCULATION.IP with it.
    ifreq record{};
    std::memcpy(&record, buffer + static_cast<std::size_t>(i) * sizeof(ifreq), sizeof(ifreq));
    sockaddr_in address{};
    std::memcpy(&address, &record.ifr_addr, sizeof(address));
    ip = inet_ntoa(address.sin_addr);
  }
  if (descriptor >= 0) {
    close(descriptor);
  }
  return ip;
}

void sigint(int signal_number) {
  // The exit status is 0 for every end, crashes included; this line in the error log is how
  // a supervisor's operator tells a crash from a stop.
  process::appendErrorLog("| signal: " + std::to_string(signal_number) + " : " +
                          signalText(signal_number) + "\n");
  std::exit(0);
}

void installSignalHandlers() {
  for (const int signal_number : {SIGINT, SIGHUP, SIGABRT, SIGKILL, SIGSEGV, SIGTERM}) {
    std::signal(signal_number, sigint);
  }
}

std::string versionDocument() {
  // Built by joining text with its historic spacing: readers of VEK_CALCULATION.VERSION
  // compare the document as a whole.
  return std::string("{ \"vek\" : \"") + kVersion + "\" ,  " +
         "\"calc_modul_7R_full\" : \"16.06.2023\" ,  " + "\"vibro_tk701_2_ve\": \"16.03.2023\",  " +
         "\"vibro_tk701_3_ve\": \"23.08.2024\",  " + "\"vibro_tk703_2_ve\": \"24.11.2022\",  " +
         "\"vibro_tk703_2_single_ve\": \"24.11.2022\",  " +
         "\"vibro_tk703_3_ve\": \"24.11.2022\",  " + "\"vibro_tk703_4_ve\": \"24.11.2022\",  " +
         "\"vibro_rs893_4_ve\": \"24.11.2022\",  " + "\"vibro_rs893_2_ve\": \"24.11.2022\",  " +
         "\"detrend_filter_group_mon_rul\": \"08.08.2023\",  " +
         "\"median_filter\": \"15.03.2022\",  " + "\"v_data_d\": \"05.08.2021\",  " +
         "\"coder_array\": \"matlabR2022a\"}";
}

std::string runLogName(const std::string& name, unsigned int id) {
  return name + "_c" + std::to_string(id) + "_" + time_now(1, "") + ".log";
}

std::string errorLogName(const std::string& name, unsigned int id) {
  return name + "_c" + std::to_string(id) + "_" + time_now(1, "") + "_error.log";
}

int runService(const CommandLine& options, int argc, const char* const argv[]) {
  const std::string version = versionDocument();
  const std::string run_log = runLogName(process::db_name, process::vek_id);
  process::file_name_error = errorLogName(process::db_name, process::vek_id);
  PrintLog log(true, options.print_file, run_log);
  DataCache cache;

  std::string command;
  for (int i = 0; i < argc; ++i) {
    command += argv[i];
  }
  log.print(false, true,
            command + ", vek " + std::to_string(process::vek_id) + " version: " + version + "\n");
  std::cout << "vek " + std::to_string(process::vek_id) + " version: " + version + "\n"
            << std::flush;

  WorkPostgreSQL store(process::db_host, process::db_name, process::user, process::passwd, &log);
  DataBase* db = &store;
  Calculation calculation(db, static_cast<int>(process::vek_id));

  // A start with -s is a manual replay beside the running instance of the same id: it must
  // not take over that instance's registration, address or version.
  bool registered = true;
  if (options.id_start == 0) {
    registered = calculation.initCalculation(process::run_ip);
    calculation.setVersion(version);
  }
  int middle = options.middle;
  if (calculation.getMiddle() != 0) {
    middle = calculation.getMiddle();
  }
  if (!registered) {
    return 0;
  }
  ModuleWork module_work(db, &log);

  const int id_history = db->getValueInt("SELECT MAX(param_info_id) FROM MATH_HISTORY");
  const int id_current = options.id_start != 0 ? options.id_start : id_history + 1;

  log.print("start id: " + std::to_string(id_current) + "\n");
  if (options.id_stop != 0) {
    log.print("stop id: " + std::to_string(options.id_stop) + "\n");
  }
  if (options.source != 0) {
    log.print("source: " + std::to_string(options.source) + "\n");
  }
  if (middle != 100) {
    log.print("middle: " + std::to_string(middle) + "\n");
  }
  if (options.middlecounter != 0) {
    log.print("middlecounter: " + std::to_string(options.middlecounter) + "\n");
  }

  MeasurementLoop loop(db, &log, &calculation, &cache, &module_work, options, middle, id_history,
                       id_current);
  loop.run();
  return 0;
}
