#pragma once

// Scenario files: a plant and rows as SQL, runs of the real vek process over them, and the
// rows and log lines expected afterwards. vek_scenarios(NAME DIRECTORY) makes a program with
// one test per DIRECTORY/*.scn, named after its stem, each with a fresh database and one
// working directory for all its runs.
//   # comments: before the first directive, or lines directly after a directive line
//   --- sql              statements, run in one transaction
//   --- run -stop 4      vek -host H -name DB -user U -stop 4 until it ends (60 s), exit 0
//   --- expect
//   SELECT a, b FROM t ORDER BY a;   the query: up to the first line ending in ";"
//   1|x|NULL                         then every row, fields joined by "|"; none for no row
//   --- log stdout       each line occurs, in this order, in stdout or stderr of all runs so
//   --- nolog error      far, run (the run logs DB_c*.log) or error (DB_c*_error.log); nolog:
//                        none of the lines occurs
//   --- wait 11          sleeps 11 seconds
//   --- start -id 2      vek as for run, left running while the next directives go on
//   --- await pause: 30  waits (60 s) for the started run to print the text after its last
//   --- signal 15        sends the signal to the started run (0: none), which must then end
//                        by itself (60 s) with status 0
#include <string>

namespace vek_test {
int scenarioMain(int argc, char** argv, const char* suite, const std::string& directory);
} // namespace vek_test
