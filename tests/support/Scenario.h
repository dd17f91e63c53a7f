#pragma once

// Scenario files: a plant and measurement rows as SQL, runs of the real vek process over
// them, and the rows and log lines expected afterwards. A program made by
// vek_scenarios(NAME DIRECTORY) has one test per DIRECTORY/*.scn, named after the file's
// stem; each file gets a fresh database and one working directory for all its runs.
//
//   # comment lines before the first directive, or directly after a directive line
//   --- sql              statements, run in one transaction
//   --- run -stop 4      vek -host H -name DB -user U -stop 4, until it ends (60 s); exit 0
//   --- expect
//   SELECT a, b FROM t ORDER BY a;     the query: up to the first line ending in ";"
//   1|x|NULL                           every row, fields joined by "|"; none for no row
//   --- log run          each line a substring of the file, in order; the file is stdout or
//   --- nolog error      stderr of all runs so far, run (the run logs) or error (the error
//                        logs); nolog: none of the lines occurs
//   --- wait 11          sleeps 11 seconds

#include <pqxx/pqxx>
#include <string>
#include <vector>

namespace vek_test {

// The rows of a query, fields joined by "|", NULL written NULL.
std::vector<std::string> rowsText(pqxx::connection& connection, const std::string& query);

// Runs one scenario file, reporting every mismatch through GoogleTest.
void runScenario(const std::string& path);

// Registers a test named after each .scn file of directory in suite and runs them all.
int scenarioMain(int argc, char** argv, const char* suite, const std::string& directory);

} // namespace vek_test
