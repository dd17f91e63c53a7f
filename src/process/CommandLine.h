#pragma once

#include <string>

// What the command line sets: the connection values and instance id that become process-wide
// state, and the values that steer the measurement loop.
struct CommandLine {
  int id_start = 0;        // first row id; 0 continues after the last calculated row
  int id_stop = 0;         // row id at which the process ends, not done itself; 0 never
  long source = 0;         // single-module filter; 0 means no filter
  bool print_file = false; // the run log is written from the start (-p)
  int middle = 100;        // values for the middle computation; 0 turns it off
  int middlecounter = 0;   // row stride for the middle computation; 0 means every row
  int pause = 30;          // seconds to sleep when no new row exists; no option sets it
  unsigned int vek_id = 1;
  std::string db_host;
  std::string db_name;
  std::string user = "postgres";
  std::string passwd = "K_rm41T";
};

// Reads argv[1] .. argv[argc-1]. Every argument is compared with every option in turn, and a
// value token is compared again on the next step, so a value that spells an option also acts
// as one ("-host -name db" sets the host to "-name" and the database to "db"). An option whose
// value would lie beyond the end of the line is ignored, unknown arguments are ignored, a later
// occurrence overrides an earlier one, and numbers are read with atoi (no number gives 0).
CommandLine readCommandLine(int argc, const char* const argv[]);

// Copies the connection values and the instance id of `options` into the process-wide state.
void applyCommandLine(const CommandLine& options);
