#include "support/Scenario.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <pqxx/pqxx>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "support/ThrowawayDatabase.h"

namespace vek_test {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// A run over a handful of rows ends within seconds; one that waits for new rows never does.
constexpr auto kLimit = std::chrono::seconds(60);
constexpr auto kPoll = std::chrono::milliseconds(50);

std::string fileText(const fs::path& path) {
  std::stringstream all;
  all << std::ifstream(path).rdbuf();
  return all.str();
}

std::string listed(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += "  " + line + "\n";
  }
  return text.empty() ? "  (no row)\n" : text;
}

struct Directive {
  std::string word, argument;
  int line;
  std::vector<std::string> body;
};

std::vector<Directive> parse(const fs::path& path) {
  std::ifstream in(path);
  std::vector<Directive> directives;
  bool heading = true; // before the first directive or among a directive's comment lines
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.rfind("--- ", 0) == 0) {
      std::istringstream words(line.substr(4));
      directives.push_back({"", "", number, {}});
      std::getline(words >> directives.back().word >> std::ws, directives.back().argument);
      heading = true;
    } else if (!heading || (!line.empty() && line[0] != '#')) {
      if (directives.empty()) {
        throw std::runtime_error("line " + std::to_string(number) + ": text before a directive");
      }
      heading = false;
      directives.back().body.push_back(line);
    }
  }
  if (directives.empty()) {
    throw std::runtime_error("no directive in " + path.string());
  }
  return directives;
}

// vek as a child process in the directory, its standard output and error appended to
// stdout.txt and stderr.txt there; killed if it still runs when the object goes.
struct ServiceRun {
  ServiceRun(std::vector<std::string> texts, const std::string& directory) {
    texts.insert(texts.begin(), VEK_EXECUTABLE);
    std::vector<char*> argv;
    for (std::string& text : texts) {
      argv.push_back(text.data());
    }
    argv.push_back(nullptr);
    const std::string out = directory + "/stdout.txt", err = directory + "/stderr.txt";
    if ((pid = fork()) == 0) {
      const int out_fd = open(out.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
      const int err_fd = open(err.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
      if (out_fd >= 0 && err_fd >= 0 && chdir(directory.c_str()) == 0 &&
          dup2(out_fd, STDOUT_FILENO) >= 0 && dup2(err_fd, STDERR_FILENO) >= 0) {
        execv(argv[0], argv.data());
      }
      _exit(127);
    }
  }
  ~ServiceRun() {
    if (pid > 0 && waitpid(pid, nullptr, WNOHANG) == 0) {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    }
  }
  // The exit status once the process has ended by itself; -1 when a signal ended it or it
  // still runs at the limit.
  int wait() const {
    const auto deadline = Clock::now() + kLimit;
    int status = -1;
    while (waitpid(pid, &status, WNOHANG) == 0 && Clock::now() < deadline) {
      std::this_thread::sleep_for(kPoll);
    }
    return Clock::now() < deadline && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  pid_t pid;
};

// One file's database, working directory and started run, and what its directives do.
class Scenario {
public:
  Scenario(const std::string& name, std::string directory)
      : db_(name), sql_(db_.connectionString()), directory_(std::move(directory)) {}

  // False when the scenario cannot go on.
  bool perform(const Directive& d) {
    std::string body;
    for (const std::string& line : d.body) {
      body += line + "\n";
    }
    if (d.word == "sql") {
      pqxx::work work(sql_);
      work.exec(body);
      work.commit();
    } else if (d.word == "run" || d.word == "start") {
      std::vector<std::string> arguments{"-host",    db_.host(), "-name",
                                         db_.name(), "-user",    db_.user()};
      std::istringstream words(d.argument);
      for (std::string word; words >> word;) {
        arguments.push_back(word);
      }
      awaited_ = output("stdout").size();
      started_ = std::make_unique<ServiceRun>(arguments, directory_);
      return d.word == "start" || ended();
    } else if (d.word == "await") {
      const auto deadline = Clock::now() + kLimit;
      std::size_t at = 0;
      while ((at = output("stdout").find(d.argument, awaited_)) == std::string::npos) {
        if (Clock::now() > deadline) {
          ADD_FAILURE() << "no \"" << d.argument << "\" in stdout:\n" << output("stdout");
          return false;
        }
        std::this_thread::sleep_for(kPoll);
      }
      awaited_ = at + d.argument.size();
    } else if (d.word == "signal") {
      kill(started_->pid, std::stoi(d.argument));
      return ended();
    } else if (d.word == "expect") {
      expectRows(d.body);
    } else if (d.word == "log" || d.word == "nolog") {
      const std::string text = output(d.argument);
      std::size_t at = 0;
      for (const std::string& line : d.body) {
        const std::size_t found = text.find(line, at);
        if (!line.empty() && (d.word == "log") == (found == std::string::npos)) {
          ADD_FAILURE() << "\"" << line << (d.word == "log" ? "\" does not follow" : "\" occurs")
                        << " in " << d.argument << ":\n"
                        << text.substr(at);
          break;
        }
        at = d.word == "log" ? found + line.size() : 0;
      }
    } else if (d.word == "wait") {
      std::this_thread::sleep_for(std::chrono::seconds(std::stoi(d.argument)));
    } else {
      ADD_FAILURE() << "unknown directive \"" << d.word << "\"";
      return false;
    }
    return true;
  }

private:
  bool ended() {
    const int status = started_->wait();
    started_.reset();
    EXPECT_EQ(status, 0) << "(-1: no end by itself)\nstdout:\n"
                         << output("stdout") << "stderr:\n"
                         << output("stderr");
    return status == 0;
  }

  // stdout or stderr of all runs so far; the run logs or the error logs in name order.
  std::string output(const std::string& word) const {
    if (word == "stdout" || word == "stderr") {
      return fileText(directory_ + "/" + word + ".txt");
    }
    if (word != "run" && word != "error") {
      throw std::runtime_error("no output \"" + word + "\": stdout, stderr, run or error");
    }
    std::vector<fs::path> logs;
    for (const auto& entry : fs::directory_iterator(directory_)) {
      const std::string name = entry.path().filename().string();
      const bool error_log = name.size() > 10 && name.substr(name.size() - 10) == "_error.log";
      if (name.rfind(db_.name() + "_c", 0) == 0 && entry.path().extension() == ".log" &&
          error_log == (word == "error")) {
        logs.push_back(entry.path());
      }
    }
    std::sort(logs.begin(), logs.end());
    std::string text;
    for (const fs::path& log : logs) {
      text += fileText(log);
    }
    return text;
  }

  void expectRows(std::vector<std::string> expected) {
    std::string query;
    while (!expected.empty() && (query.empty() || query.back() != ';')) {
      query += (query.empty() ? "" : "\n") + expected.front();
      query.erase(query.find_last_not_of(" \t") + 1);
      expected.erase(expected.begin());
    }
    while (!expected.empty() && expected.back().find_first_not_of(" \t") == std::string::npos) {
      expected.pop_back();
    }
    std::vector<std::string> actual;
    for (const auto& row : pqxx::nontransaction(sql_).exec(query)) {
      std::string text;
      for (const auto& field : row) {
        text +=
            (field.num() == 0 ? "" : "|") + std::string(field.is_null() ? "NULL" : field.c_str());
      }
      actual.push_back(text);
    }
    if (actual != expected) {
      ADD_FAILURE() << query << "\nexpected:\n"
                    << listed(expected) << "actual:\n"
                    << listed(actual);
    }
  }

  ThrowawayDatabase db_;
  pqxx::connection sql_;
  std::string directory_;
  std::unique_ptr<ServiceRun> started_;
  std::size_t awaited_ = 0;
};

class ScenarioCase : public ::testing::Test {
public:
  explicit ScenarioCase(fs::path path) : path_(std::move(path)) {}

  void TestBody() override {
    std::string directory = (fs::temp_directory_path() / "vek-run.XXXXXX").string();
    ASSERT_NE(mkdtemp(directory.data()), nullptr);
    try {
      Scenario scenario(path_.stem(), directory);
      for (const Directive& d : parse(path_)) {
        const ::testing::ScopedTrace trace(path_.c_str(), d.line,
                                           "--- " + d.word + " " + d.argument);
        if (!scenario.perform(d)) {
          break;
        }
      }
    } catch (const std::exception& e) {
      ADD_FAILURE() << path_ << ": " << e.what();
    }
    if (HasFailure()) {
      std::cout << "the runs' files are kept in " << directory << "\n";
    } else {
      fs::remove_all(directory);
    }
  }

private:
  fs::path path_;
};

} // namespace

int scenarioMain(int argc, char** argv, const char* suite, const std::string& directory) {
  ::testing::InitGoogleTest(&argc, argv);
  std::vector<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(directory)) {
    if (entry.path().extension() == ".scn") {
      paths.push_back(entry.path());
    }
  }
  std::sort(paths.begin(), paths.end());
  for (const fs::path& path : paths) {
    ::testing::RegisterTest(suite, path.stem().c_str(), nullptr, nullptr, path.c_str(), 1,
                            [path]() -> ::testing::Test* { return new ScenarioCase(path); });
  }
  return RUN_ALL_TESTS();
}

} // namespace vek_test
