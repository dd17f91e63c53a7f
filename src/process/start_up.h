#pragma once

#include <string>

#include "process/CommandLine.h"

// The start-up steps of the service, in the order main takes them.

// The host's address as the dotted text of the last interface that the kernel lists
// (loopback included); empty when no interface is found. Failures are not looked at.
std::string findRunIp();

// The one handler for every signal: appends "| signal: N : text" to the error log and ends
// the process with status 0. It does not return.
void sigint(int signal_number);

// Installs sigint for SIGINT, SIGHUP, SIGABRT, SIGKILL, SIGSEGV and SIGTERM. The kernel
// refuses SIGKILL; that refusal is ignored.
void installSignalHandlers();

// The one-line JSON document with the versions of the service and its math blocks, as it is
// stored in VEK_CALCULATION and printed at start.
std::string versionDocument();

// The run log, db_name + "_c" + vek_id + "_" + local time + ".log", and the error log, the
// same with "_error.log". Each takes the clock anew, so the two can differ by a second.
std::string runLogName(const std::string& name, unsigned int id);
std::string errorLogName(const std::string& name, unsigned int id);

// Everything after the options: logs, the store (which waits for the server), the start
// position, and the measurement loop. Returns the exit status, which is always 0.
int runService(const CommandLine& options, int argc, const char* const argv[]);
