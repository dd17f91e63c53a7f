#include "support/ServiceRun.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vek_test {

namespace {
constexpr auto kPollInterval = std::chrono::milliseconds(50);
} // namespace

std::string makeWorkingDirectory() {
  std::string pattern = std::filesystem::temp_directory_path().string() + "/vek-run.XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("cannot make a working directory");
  }
  return pattern;
}

ServiceRun::ServiceRun(const std::vector<std::string>& arguments, std::string directory)
    : directory_(std::move(directory)) {
  if (directory_.empty()) {
    directory_ = makeWorkingDirectory();
    own_directory_ = true;
  }
  std::vector<std::string> texts{VEK_EXECUTABLE};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& text : texts) {
    argv.push_back(text.data());
  }
  argv.push_back(nullptr);
  const std::string out_path = directory_ + "/stdout.txt";
  const std::string err_path = directory_ + "/stderr.txt";

  pid_ = fork();
  if (pid_ == 0) {
    const int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    const int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (out < 0 || err < 0 || chdir(directory_.c_str()) != 0) {
      _exit(127);
    }
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }
  if (pid_ < 0) {
    throw std::runtime_error("cannot fork");
  }
}

ServiceRun::~ServiceRun() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  if (own_directory_) {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }
}

bool ServiceRun::waitForExit(int seconds, int& exit_status) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (pid_ > 0) {
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) == pid_) {
      pid_ = -1;
      exit_status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      return WIFEXITED(status);
    }
    if (std::chrono::steady_clock::now() > deadline) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
      pid_ = -1;
      return false;
    }
    std::this_thread::sleep_for(kPollInterval);
  }
  return false;
}

bool ServiceRun::waitForOutput(const std::string& text, int seconds) const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (standardOutput().find(text) == std::string::npos) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(kPollInterval);
  }
  return true;
}

void ServiceRun::sendSignal(int signal_number) const {
  if (pid_ > 0) {
    kill(pid_, signal_number);
  }
}

std::vector<std::string> ServiceRun::logFiles() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory_)) {
    if (entry.path().extension() == ".log") {
      names.push_back(entry.path().filename().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string ServiceRun::fileContent(const std::string& name) const {
  std::ifstream in(directory_ + "/" + name);
  std::stringstream all;
  all << in.rdbuf();
  return all.str();
}

} // namespace vek_test
