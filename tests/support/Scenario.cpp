#include "support/Scenario.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "support/StoreTest.h"

namespace vek_test {
namespace {
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// Polls until done() holds, for at most a minute: a run over a handful of rows ends within
// seconds, one that waits for new rows never does. Whether done() held.
template <typename Done> bool within(Done done) {
  for (const auto end = Clock::now() + std::chrono::seconds(60); !done();
       std::this_thread::sleep_for(std::chrono::milliseconds(50)))
    if (Clock::now() > end)
      return false;
  return true;
}
// One file: its database, its working directory and the run of vek it started, if any.
class Scenario : public ::testing::Test {
public:
  explicit Scenario(fs::path path) : path_(std::move(path)) {}
  // Reads the file line by line and performs each directive once its body has been read.
  void TestBody() override {
    if (StoreTest::fileText(path_.string()).find("\n--- restart") != std::string::npos &&
        std::getenv("VEK_OWN_CLUSTER") == nullptr)
      GTEST_SKIP() << "restarts the server: runs alone, on a cluster of its own";
    directory_ = (fs::temp_directory_path() / "vek-run.XXXXXX").string();
    ASSERT_NE(mkdtemp(directory_.data()), nullptr);
    try {
      db_.emplace(path_.stem());
      sql_.emplace(db_->connectionString());
      std::ifstream in(path_);
      std::string word, argument, line;
      std::vector<std::string> body;
      bool heading = true; // before the first directive or among a directive's comment lines
      for (int number = 1, at = 0; at >= 0; ++number) { // at: the directive's line, 0 before one
        const bool read = static_cast<bool>(std::getline(in, line));
        if (!read || line.rfind("--- ", 0) == 0) {
          while (!body.empty() && body.back().find_first_not_of(" \t") == std::string::npos)
            body.pop_back(); // trailing blank lines
          const ::testing::ScopedTrace trace(path_.c_str(), at, "--- " + word + " " + argument);
          if (at == 0 && !read)
            throw std::runtime_error("no directive");
          if (at > 0 && !perform(word, argument, body))
            break;
          std::istringstream words(read ? line.substr(4) : "");
          word.clear(), argument.clear(), body.clear(), heading = true, at = read ? number : -1;
          std::getline(words >> word >> std::ws, argument);
        } else if (!heading || (!line.empty() && line[0] != '#')) {
          if (at == 0)
            throw std::runtime_error("line " + std::to_string(number) +
                                     ": text before a directive");
          heading = false;
          body.push_back(line);
        }
      }
    } catch (const std::exception& e) {
      ADD_FAILURE() << path_ << ": " << e.what();
    }
    stop();
    if (HasFailure())
      std::cout << "the runs' files are kept in " << directory_ << "\n";
    else
      fs::remove_all(directory_);
  }

private:
  // False when the file cannot go on.
  bool perform(const std::string& w, const std::string& argument,
               const std::vector<std::string>& body) {
    std::size_t at = 0;
    if (w == "sql") {
      pqxx::work work(*sql_);
      std::string statements;
      for (const std::string& line : body)
        statements += line + "\n";
      work.exec(statements);
      work.commit();
    } else if (w == "run" || w == "start") {
      std::vector<std::string> texts{VEK_EXECUTABLE, "-host", db_->host(), "-name",
                                     db_->name(),    "-user", db_->user()};
      std::istringstream words(argument);
      for (std::string word; words >> word;)
        texts.push_back(word);
      std::vector<char*> argv;
      for (std::string& text : texts)
        argv.push_back(text.data());
      argv.push_back(nullptr);
      stop();
      awaited_ = output("stdout").size();
      if ((pid_ = fork()) == 0) { // standard output and error appended to files of the directory
        if (chdir(directory_.c_str()) == 0 && std::freopen("stdout.txt", "a", stdout) != nullptr &&
            std::freopen("stderr.txt", "a", stderr) != nullptr)
          execv(argv[0], argv.data());
        _exit(127);
      }
      return w == "start" || ended();
    } else if (w == "signal" && pid_ > 0) {
      kill(pid_, std::stoi(argument));
      return ended();
    } else if (w == "await") {
      if (!within([&] {
            return (at = output("stdout").find(argument, awaited_)) != std::string::npos;
          })) {
        ADD_FAILURE() << "no \"" << argument << "\" in stdout:\n" << output("stdout");
        return false;
      }
      awaited_ = at + argument.size();
    } else if (w == "expect") {
      expectRows(body);
    } else if (w == "log" || w == "nolog") {
      const std::string text = output(argument);
      for (const std::string& line : body) {
        const std::size_t found = text.find(line, at);
        if (!line.empty() && (w == "log") == (found == std::string::npos)) {
          ADD_FAILURE() << "\"" << line << (w == "log" ? "\" does not follow" : "\" occurs")
                        << " in " << argument << ":\n"
                        << text.substr(at);
          break;
        }
        at = w == "log" ? found + line.size() : 0;
      }
    } else if (w == "restart") {
      const char* ctl = std::getenv("VEK_PGCTL");
      if (ctl == nullptr ||
          std::system((std::string(ctl) + " restart -m fast -w >/dev/null").c_str()) != 0) {
        ADD_FAILURE() << "the server did not restart";
        return false;
      }
      sql_.emplace(db_->connectionString());
    } else if (w == "wait") {
      std::this_thread::sleep_for(std::chrono::seconds(std::stoi(argument)));
    } else {
      ADD_FAILURE() << "unknown directive, or a signal without a started run";
      return false;
    }
    return true;
  }
  // Kills the started run if it still runs.
  void stop() {
    if (pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    pid_ = 0;
  }
  // Whether the started run ends by itself within the limit with status 0.
  bool ended() {
    int status = -1;
    status = within([&] { return waitpid(pid_, &status, WNOHANG) != 0; }) && WIFEXITED(status)
                 ? WEXITSTATUS(status)
                 : -1;
    stop();
    EXPECT_EQ(status, 0) << "(-1: no end by itself)\nstdout:\n"
                         << output("stdout") << "stderr:\n"
                         << output("stderr");
    return status == 0;
  }
  // stdout or stderr of all runs so far; the run logs or the error logs in name order.
  std::string output(const std::string& word) const {
    if (word == "stdout" || word == "stderr")
      return StoreTest::fileText(directory_ + "/" + word + ".txt");
    if (word != "run" && word != "error")
      throw std::runtime_error("no output \"" + word + "\": stdout, stderr, run or error");
    std::vector<std::string> logs;
    for (const auto& entry : fs::directory_iterator(directory_)) {
      const std::string name = entry.path().filename().string();
      const bool error_log = name.size() > 10 && name.substr(name.size() - 10) == "_error.log";
      if (name.rfind(db_->name() + "_c", 0) == 0 && entry.path().extension() == ".log" &&
          error_log == (word == "error"))
        logs.push_back(entry.path().string());
    }
    std::sort(logs.begin(), logs.end());
    std::string text;
    for (const std::string& log : logs)
      text += StoreTest::fileText(log);
    return text;
  }
  // Every row of the query, fields joined by "|", against the rows after the query.
  void expectRows(const std::vector<std::string>& body) {
    std::string query, expected, actual;
    auto line = body.begin();
    for (; line != body.end() && (query.empty() || query.back() != ';'); ++line)
      query += (query.empty() ? "" : "\n") + line->substr(0, line->find_last_not_of(" \t") + 1);
    for (; line != body.end(); ++line)
      expected += "  " + *line + "\n";
    for (const auto& row : pqxx::nontransaction(*sql_).exec(query)) {
      actual += " ";
      for (const auto& field : row)
        actual +=
            (field.num() == 0 ? " " : "|") + std::string(field.is_null() ? "NULL" : field.c_str());
      actual += "\n";
    }
    if (actual != expected)
      ADD_FAILURE() << query << "\nexpected:\n" << expected << "actual:\n" << actual;
  }
  fs::path path_;
  std::string directory_;
  std::optional<ThrowawayDatabase> db_;
  std::optional<pqxx::connection> sql_;
  pid_t pid_ = 0;
  std::size_t awaited_ = 0;
};
} // namespace

int scenarioMain(int argc, char** argv, const char* suite, const std::string& directory) {
  ::testing::InitGoogleTest(&argc, argv);
  std::vector<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(directory))
    if (entry.path().extension() == ".scn")
      paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  for (const fs::path& path : paths)
    ::testing::RegisterTest(suite, path.stem().c_str(), nullptr, nullptr, path.c_str(), 1,
                            [path]() -> ::testing::Test* { return new Scenario(path); });
  return RUN_ALL_TESTS();
}
} // namespace vek_test
