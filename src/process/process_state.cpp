#include "process/process_state.h"

#include <fstream>

#include "logging/time_helpers.h"

namespace process {

unsigned int vek_id = 1;
std::string db_host;
std::string db_name;
std::string user = "postgres";
std::string passwd = "K_rm41T";
std::string run_ip;
// Named before main runs, so that a signal that arrives while the options are still being
// read finds a file to write its line to; main replaces it once db_name and vek_id are known.
std::string file_name_error = time_now(1, "") + "_error.log";

void appendErrorLog(const std::string& text) {
  std::ofstream file(file_name_error, std::ios::out | std::ios::app);
  file << text;
}

} // namespace process
