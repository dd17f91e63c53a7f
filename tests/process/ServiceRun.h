#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

// The real vek executable run as a child process in a working directory of its own, so that
// its log files land where the test can find them. Standard output and standard error go to
// files in that directory. The destructor kills a process that still runs and removes the
// directory.
class ServiceRun {
public:
  explicit ServiceRun(const std::vector<std::string>& arguments);
  ~ServiceRun();
  ServiceRun(const ServiceRun&) = delete;
  ServiceRun& operator=(const ServiceRun&) = delete;

  // Waits for the process to end; true with its exit status, false (after killing it) when
  // it still runs after `seconds`, or when it ended by a signal.
  bool waitForExit(int seconds, int& exit_status);
  // Waits until standard output holds `text`; false after `seconds`.
  bool waitForOutput(const std::string& text, int seconds) const;
  void sendSignal(int signal_number) const;

  std::string standardOutput() const;
  const std::string& directory() const { return working_directory; }
  // Names of the files ending in ".log" in the working directory, sorted.
  std::vector<std::string> logFiles() const;
  std::string fileContent(const std::string& name) const;
  // The argument list as the service joins it in the first line of its run log.
  std::string joinedCommandLine() const;

private:
  std::vector<std::string> argv_texts;
  std::string working_directory;
  pid_t pid = -1;
};

// The path of the vek executable under test.
std::string vekExecutable();
