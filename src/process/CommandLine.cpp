#include "process/CommandLine.h"

#include <cstdlib>
#include <cstring>

#include "process/process_state.h"

namespace {

// Supervisors and operators' scripts already pass lines that rely on these exact rules, so
// the loop keeps them: no skipping of value tokens, no validation beyond what atoi gives.
void readOption(const char* option, const char* value, CommandLine& options) {
  if (std::strcmp(option, "-s") == 0 && value != nullptr) {
    const int v = std::atoi(value);
    // Any -s means a manual replay, so a text that is no number still starts at the first
    // row and never at the "continue" position.
    options.id_start = v > 0 ? v : 1;
  }
  if (std::strcmp(option, "-stop") == 0 && value != nullptr) {
    const int v = std::atoi(value);
    if (v > 0) {
      options.id_stop = v;
    }
  }
  if (std::strcmp(option, "-p") == 0) {
    options.print_file = true;
  }
  if (std::strcmp(option, "-source") == 0 && value != nullptr) {
    options.source = static_cast<long>(std::atoi(value));
  }
  if (std::strcmp(option, "-host") == 0 && value != nullptr) {
    options.db_host = value;
  }
  if (std::strcmp(option, "-name") == 0 && value != nullptr) {
    options.db_name = value;
  }
  if (std::strcmp(option, "-user") == 0 && value != nullptr) {
    options.user = value;
  }
  if (std::strcmp(option, "-pass") == 0 && value != nullptr) {
    options.passwd = value;
  }
  if (std::strcmp(option, "-middle") == 0 && value != nullptr) {
    int middle = std::atoi(value);
    if (middle > 10000) {
      middle = 10000;
    }
    if (middle > 0 && middle < 5) {
      middle = 5;
    }
    if (middle < 0) {
      middle = 100;
    }
    options.middle = middle;
  }
  if (std::strcmp(option, "-middlecounter") == 0 && value != nullptr) {
    options.middlecounter = std::atoi(value);
  }
  if (std::strcmp(option, "-id") == 0 && value != nullptr) {
    options.vek_id = static_cast<unsigned int>(std::atoi(value));
  }
}

} // namespace

CommandLine readCommandLine(int argc, const char* const argv[]) {
  CommandLine options;
  for (int i = 1; i < argc; ++i) {
    const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
    readOption(argv[i], value, options);
  }
  return options;
}

void applyCommandLine(const CommandLine& options) {
  process::vek_id = options.vek_id;
  process::db_host = options.db_host;
  process::db_name = options.db_name;
  process::user = options.user;
  process::passwd = options.passwd;
}
