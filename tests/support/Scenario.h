#pragma once
// Scenario files: SQL, runs of the real vek, the rows and log lines expected. vek_scenarios(NAME
// DIR) makes a program with one test per DIR/*.scn (a fresh database, one working directory for
// all runs). "#" lines before the first directive or right after a directive line are comments.
//   --- sql             the body's statements in one transaction
//   --- run ARGS        vek -host H -name DB -user U ARGS until it ends (60 s) with status 0
//   --- start ARGS      the same, left running;  --- signal N: sends N (0: none), then as run
//   --- await TEXT      waits (60 s) for the started run to print TEXT after its last await
//   --- expect          a query up to the first line ending in ";", then every row, "|" between
//                       fields, NULL for none
//   --- log F, nolog F  the lines occur in this order / none occurs in F: stdout or stderr of all
//                       runs so far, run or error (the logs DB_c*.log, DB_c*_error.log)
//   --- wait N          sleeps N seconds
//   --- restart         stops the server fast and starts it again; a file with a restart runs
//                       only where VEK_OWN_CLUSTER is set, on a cluster no other test shares
#include <string>

namespace vek_test {
int scenarioMain(int argc, char** argv, const char* suite, const std::string& directory);
} // namespace vek_test
