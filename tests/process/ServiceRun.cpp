#include "ServiceRun.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(50);

} // namespace

std::string vekExecutable() {
  return VEK_EXECUTABLE;
}

ServiceRun::ServiceRun(const std::vector<std::string>& arguments) {
  argv_texts.push_back(vekExecutable());
  argv_texts.insert(argv_texts.end(), arguments.begin(), arguments.end());

  std::string pattern = std::filesystem::temp_directory_path().string() + "/vek-run.XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("cannot make a working directory");
  }
  working_directory = pattern;
  const std::string out_path = working_directory + "/stdout.txt";
  const std::string err_path = working_directory + "/stderr.txt";

  std::vector<char*> argv;
  for (std::string& text : argv_texts) {
    argv.push_back(text.data());
  }
  argv.push_back(nullptr);

  pid = fork();
  if (pid == 0) {
    const int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (out < 0 || err < 0 || chdir(working_directory.c_str()) != 0) {
      _exit(127);
    }
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }
  if (pid < 0) {
    throw std::runtime_error("cannot fork");
  }
}

ServiceRun::~ServiceRun() {
  if (pid > 0) {
    kill(pid, SIGKILL);
    int status = 0;
    waitpid(pid, &status, 0);
  }
  std::error_code ignored;
  std::filesystem::remove_all(working_directory, ignored);
}

bool ServiceRun::waitForExit(int seconds, int& exit_status) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (pid > 0) {
    int status = 0;
    const pid_t done = waitpid(pid, &status, WNOHANG);
    if (done == pid) {
      pid = -1;
      if (!WIFEXITED(status)) {
        return false;
      }
      exit_status = WEXITSTATUS(status);
      return true;
    }
    if (std::chrono::steady_clock::now() > deadline) {
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
      pid = -1;
      return false;
    }
    std::this_thread::sleep_for(kPollInterval);
  }
  return false;
}

bool ServiceRun::waitForOutput(const std::string& text, int seconds) const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (std::chrono::steady_clock::now() < deadline) {
    if (standardOutput().find(text) != std::string::npos) {
      return true;
    }
    std::this_thread::sleep_for(kPollInterval);
  }
  return false;
}

void ServiceRun::sendSignal(int signal_number) const {
  if (pid > 0) {
    kill(pid, signal_number);
  }
}

std::string ServiceRun::standardOutput() const {
  return fileContent("stdout.txt");
}

std::vector<std::string> ServiceRun::logFiles() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(working_directory)) {
    const std::string name = entry.path().filename().string();
    if (name.size() > 4 && name.compare(name.size() - 4, 4, ".log") == 0) {
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string ServiceRun::fileContent(const std::string& name) const {
  std::ifstream in(working_directory + "/" + name);
  std::stringstream all;
  all << in.rdbuf();
  return all.str();
}

std::string ServiceRun::joinedCommandLine() const {
  std::string joined;
  for (const std::string& text : argv_texts) {
    joined += text;
  }
  return joined;
}
