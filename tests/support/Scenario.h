#pragma once

// Scenario files: a plant and measurement rows as SQL, runs of the real vek process over
// them, and the rows and log lines expected afterwards. A program made by
// vek_scenarios(NAME DIRECTORY) has one test per DIRECTORY/*.scn, named after the file's
// stem; each file gets a fresh database and one working directory for all its runs.
//
//   # comments: before the first directive, or lines directly after a directive line
//   --- sql              statements, run in one transaction
//   --- run -stop 4      vek -host H -name DB -user U -stop 4 until it ends (60 s), exit 0
//   --- expect
//   SELECT a, b FROM t ORDER BY a;   the query: up to the first line ending in ";"
//   1|x|NULL                         then every row, fields joined by "|"; none for no row
//   --- log stdout       each line occurs, in this order, in the output: stdout or stderr of
//   --- nolog error      all runs so far, run (the run logs DB_c*.log) or error (the error
//                        logs DB_c*_error.log); nolog: none of the lines occurs
//   --- wait 11          sleeps 11 seconds
//   --- start -id 2      vek as for run, left running while the next directives go on
//   --- await pause: 30  waits (60 s) until the started run prints the text, after the
//                        text it matched last
//   --- signal 15        sends the signal to the started run (0: none), which must then end
//                        by itself (60 s) with status 0

#include <string>

namespace vek_test {

// Registers a test named after each .scn file of directory in suite and runs them all.
int scenarioMain(int argc, char** argv, const char* suite, const std::string& directory);

} // namespace vek_test
