#include "support/Scenario.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <pqxx/pqxx>
#include <sstream>
#include <stdexcept>
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
  std::ifstream in(path);
  std::stringstream all;
  all << in.rdbuf();
  return all.str();
}

// vek as a child process in the directory, its standard output and error appended to
// stdout.txt and stderr.txt there; killed if it still runs when the object goes.
class ServiceRun {
public:
  ServiceRun(std::vector<std::string> texts, const std::string& directory) {
    texts.insert(texts.begin(), VEK_EXECUTABLE);
    std::vector<char*> argv;
    for (std::string& text : texts) {
      argv.push_back(text.data());
    }
    argv.push_back(nullptr);
    const std::string out = directory + "/stdout.txt", err = directory + "/stderr.txt";
    pid_ = fork();
    if (pid_ == 0) {
      const int out_fd = open(out.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
      const int err_fd = open(err.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
      if (out_fd >= 0 && err_fd >= 0 && chdir(directory.c_str()) == 0) {
        dup2(out_fd, STDOUT_FILENO);
        dup2(err_fd, STDERR_FILENO);
        execv(argv[0], argv.data());
      }
      _exit(127);
    }
  }
  ~ServiceRun() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
  }
  ServiceRun(const ServiceRun&) = delete;
  ServiceRun& operator=(const ServiceRun&) = delete;
  void signal(int number) const { kill(pid_, number); }
  // The exit status once the process ends by itself; -1 when it ends by a signal or still
  // runs at the limit (and is killed).
  int wait() {
    const auto deadline = Clock::now() + kLimit;
    int status = -1;
    while (pid_ > 0 && waitpid(pid_, &status, WNOHANG) == 0 && Clock::now() < deadline) {
      std::this_thread::sleep_for(kPoll);
    }
    if (Clock::now() >= deadline) {
      return -1; // the destructor kills it
    }
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

private:
  pid_t pid_ = -1;
};

struct Directive {
  std::string word, argument;
  int line = 0;
  std::vector<std::string> body;
};

std::vector<Directive> parse(const std::string& path) {
  std::ifstream in(path);
  if (!in) {
    throw std::runtime_error("cannot read " + path);
  }
  std::vector<Directive> directives;
  bool heading = true; // before the first directive or in a directive's comment lines
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.rfind("--- ", 0) == 0) {
      std::istringstream words(line.substr(4));
      directives.push_back({"", "", number, {}});
      std::getline(words >> directives.back().word >> std::ws, directives.back().argument);
      heading = true;
    } else if (!heading || (!line.empty() && line[0] != '#')) {
      if (directives.empty()) {
        throw std::runtime_error(path + ":" + std::to_string(number) + ": text before a directive");
      }
      heading = false;
      directives.back().body.push_back(line);
    }
  }
  for (Directive& directive : directives) {
    auto& body = directive.body;
    while (!body.empty() && body.back().find_first_not_of(" \t") == std::string::npos) {
      body.pop_back();
    }
  }
  return directives;
}

std::string listed(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += "  " + line + "\n";
  }
  return text.empty() ? "  (no row)\n" : text;
}

// One scenario file's database, working directory and started run.
class Scenario {
public:
  Scenario(const std::string& stem, const std::string& directory)
      : db_(stem), sql_(db_.connectionString()), directory_(directory) {}

  // False when the scenario cannot go on.
  bool perform(const Directive& directive) {
    const std::string& word = directive.word;
    if (word == "sql") {
      std::string statements;
      for (const std::string& line : directive.body) {
        statements += line + "\n";
      }
      pqxx::work work(sql_);
      work.exec(statements);
      work.commit();
    } else if (word == "run" || word == "start") {
      started_ = std::make_unique<ServiceRun>(arguments(directive.argument), directory_);
      awaited_ = output("stdout").size();
      return word == "start" || ended();
    } else if (word == "await") {
      const auto deadline = Clock::now() + kLimit;
      std::size_t found = std::string::npos;
      while ((found = output("stdout").find(directive.argument, awaited_)) == std::string::npos) {
        if (Clock::now() > deadline) {
          ADD_FAILURE() << "no \"" << directive.argument << "\" in stdout:\n" << output("stdout");
          return false;
        }
        std::this_thread::sleep_for(kPoll);
      }
      awaited_ = found + directive.argument.size();
    } else if (word == "signal") {
      started_->signal(std::stoi(directive.argument));
      return ended();
    } else if (word == "expect") {
      expectRows(directive.body);
    } else if (word == "log" || word == "nolog") {
      expectOutput(directive, word == "log");
    } else if (word == "wait") {
      std::this_thread::sleep_for(std::chrono::seconds(std::stoi(directive.argument)));
    } else {
      ADD_FAILURE() << "unknown directive \"" << word << "\"";
      return false;
    }
    return true;
  }

private:
  std::vector<std::string> arguments(const std::string& extra) const {
    std::vector<std::string> all{"-host", db_.host(), "-name", db_.name(), "-user", db_.user()};
    std::istringstream words(extra);
    for (std::string word; words >> word;) {
      all.push_back(word);
    }
    return all;
  }

  bool ended() {
    const int status = started_ ? started_->wait() : -1;
    started_.reset();
    if (status != 0) {
      ADD_FAILURE() << (status < 0 ? "no end by itself" : "exit status " + std::to_string(status))
                    << "\nstdout:\n"
                    << output("stdout") << "stderr:\n"
                    << output("stderr");
    }
    return status == 0;
  }

  // stdout and stderr of all runs so far; the run logs or the error logs in name order.
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

  void expectRows(const std::vector<std::string>& body) {
    std::string query;
    auto line = body.begin();
    while (line != body.end() && (query.empty() || query.back() != ';')) {
      query += (query.empty() ? "" : "\n") + *line++;
      query.erase(query.find_last_not_of(" \t") + 1);
    }
    const std::vector<std::string> expected(line, body.end());
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

  void expectOutput(const Directive& directive, bool present) {
    const std::string text = output(directive.argument);
    std::size_t at = 0;
    for (const std::string& line : directive.body) {
      const std::size_t found = text.find(line, at);
      if (!line.empty() && present == (found == std::string::npos)) {
        ADD_FAILURE() << "\"" << line << (present ? "\" does not follow in " : "\" occurs in ")
                      << directive.argument << ":\n"
                      << text.substr(at);
        return;
      }
      at = present ? found + line.size() : 0;
    }
  }

  ThrowawayDatabase db_;
  pqxx::connection sql_;
  std::string directory_;
  std::unique_ptr<ServiceRun> started_;
  std::size_t awaited_ = 0;
};

void runScenario(const fs::path& path) {
  std::string directory = (fs::temp_directory_path() / "vek-run.XXXXXX").string();
  if (mkdtemp(directory.data()) == nullptr) {
    FAIL() << "cannot make a working directory";
  }
  try {
    const std::vector<Directive> directives = parse(path);
    Scenario scenario(path.stem(), directory);
    for (const Directive& directive : directives) {
      const ::testing::ScopedTrace trace(path.c_str(), directive.line,
                                         "--- " + directive.word + " " + directive.argument);
      if (!scenario.perform(directive)) {
        break;
      }
    }
  } catch (const std::exception& e) {
    ADD_FAILURE() << path << ": " << e.what();
  }
  if (::testing::Test::HasFailure()) {
    std::cout << "the runs' files are kept in " << directory << "\n";
  } else {
    fs::remove_all(directory);
  }
}

class ScenarioCase : public ::testing::Test {
public:
  explicit ScenarioCase(fs::path path) : path_(std::move(path)) {}
  void TestBody() override { runScenario(path_); }

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
