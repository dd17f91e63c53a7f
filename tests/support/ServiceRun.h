#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace vek_test {

// The real vek executable run as a child process in a working directory, so that its log
// files land where the test can find them. Standard output and standard error are appended
// to stdout.txt and stderr.txt there, so several runs in one directory leave one record.
// Without a directory the run makes one of its own and removes it at the end. The destructor
// kills a process that still runs.
class ServiceRun {
public:
  explicit ServiceRun(const std::vector<std::string>& arguments, std::string directory = "");
  ~ServiceRun();
  ServiceRun(const ServiceRun&) = delete;
  ServiceRun& operator=(const ServiceRun&) = delete;

  // Waits for the process to end; true with its exit status, false (after killing it) when
  // it still runs after `seconds`, or when it ended by a signal.
  bool waitForExit(int seconds, int& exit_status);
  // Waits until standard output holds `text`; false after `seconds`.
  bool waitForOutput(const std::string& text, int seconds) const;
  void sendSignal(int signal_number) const;

  std::string standardOutput() const { return fileContent("stdout.txt"); }
  const std::string& directory() const { return directory_; }
  // Names of the files ending in ".log" in the working directory, sorted.
  std::vector<std::string> logFiles() const;
  // The whole text of a file of the working directory, "" when there is none.
  std::string fileContent(const std::string& name) const;

private:
  std::string directory_;
  bool own_directory_ = false;
  pid_t pid_ = -1;
};

// A fresh directory under the temporary directory.
std::string makeWorkingDirectory();

} // namespace vek_test
