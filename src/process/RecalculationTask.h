#pragma once

#include <string>
#include <vector>

#include "records/types.h"

// A recalculation job: the measurements of an operator's time range computed again on a
// thread of its own, beside the live loop. The job shares no object with the loop: it opens
// its own connection with copies of the credentials, writes its own log file and keeps its own
// status cache, and the rows were read for it before the thread started. The operator steers
// it through recalculation.control (1 run, 2 pause, 3 stop), asked after every row; the job
// reports through state (2 running, 1 paused, 3 finished) and time_calculation, the receipt
// date of the last row done, from which a paused job resumes.

// The thread function of job `id` over `rows` (PARAM_INFO rows by rising receipt date, not
// empty). `passwd` stands before `user`. The sixth argument is not used. Each row is guarded
// by itself: a rejected statement or any other fault gives the row up and the walk goes on,
// a lost connection is waited out and the row done again. A fault before the walk (the log,
// the connection, the first state) is not caught and ends the process.
void task(std::string db_host, std::string db_name, std::string passwd, std::string user,
          std::vector<param_info> rows, int unused, int id);
