#pragma once

#include <string>

// Process-wide state with static storage. Set once during start-up by the main thread and only
// read afterwards: by the signal handler, and by recalculation jobs, which take copies of the
// connection values to open connections of their own. The namespace keeps these names from
// shadowing the parameters of the same names that the store and the jobs take.
namespace process {

extern unsigned int vek_id;         // this instance's row in VEK_CALCULATION (-id), 1 by default
extern std::string db_host;         // server address for the connection string (-host)
extern std::string db_name;         // database name (-name); also the prefix of all log names
extern std::string user;            // database user (-user)
extern std::string passwd;          // database password (-pass)
extern std::string run_ip;          // this host's address as found at start
extern std::string file_name_error; // path of the error log; all that the signal handler needs

// Appends text to the error log, opening and closing the file around the write so that the
// last line survives whatever happens to the process next. A file that cannot be opened
// loses the text.
void appendErrorLog(const std::string& text);

} // namespace process
