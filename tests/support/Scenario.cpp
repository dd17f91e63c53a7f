#include "support/Scenario.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>

#include "support/ServiceRun.h"
#include "support/ThrowawayDatabase.h"

namespace vek_test {

namespace {

// A run over a handful of rows ends within seconds; one that waits for new rows never does.
constexpr int kRunLimitSec = 60;

struct Directive {
  std::string word;
  std::string argument;
  int line = 0;
  std::vector<std::string> body;
};

std::vector<Directive> parse(const std::string& path) {
  std::ifstream in(path);
  if (!in) {
    throw std::runtime_error("cannot read " + path);
  }
  std::vector<Directive> directives;
  bool heading = true; // before the first directive or still in a directive's comment lines
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    if (line.rfind("--- ", 0) == 0) {
      std::istringstream words(line.substr(4));
      Directive next;
      next.line = number;
      words >> next.word;
      std::getline(words >> std::ws, next.argument);
      directives.push_back(next);
      heading = true;
    } else if (heading && (line.empty() || line[0] == '#')) {
      continue;
    } else if (directives.empty()) {
      throw std::runtime_error(path + ":" + std::to_string(number) + ": text before a directive");
    } else {
      heading = false;
      directives.back().body.push_back(line);
    }
  }
  for (Directive& directive : directives) {
    while (!directive.body.empty() &&
           directive.body.back().find_first_not_of(" \t") == std::string::npos) {
      directive.body.pop_back();
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

// The text of a run's output file: "stdout" and "stderr" of all runs, "run" the run logs and
// "error" the error logs, concatenated in name order.
std::string outputText(const std::string& directory, const std::string& word) {
  if (word == "stdout" || word == "stderr") {
    std::ifstream in(directory + "/" + word + ".txt");
    std::stringstream all;
    all << in.rdbuf();
    return all.str();
  }
  if (word != "run" && word != "error") {
    throw std::runtime_error("no output named \"" + word + "\": stdout, stderr, run or error");
  }
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    const std::string name = entry.path().filename().string();
    const bool error_log = name.size() > 10 && name.substr(name.size() - 10) == "_error.log";
    if (entry.path().extension() == ".log" && error_log == (word == "error")) {
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  std::string text;
  for (const std::string& name : names) {
    std::ifstream in(directory + "/" + name);
    std::stringstream all;
    all << in.rdbuf();
    text += all.str();
  }
  return text;
}

// The last lines of a text, enough to see why a run failed.
std::string tail(const std::string& text) {
  std::size_t at = text.size();
  for (int lines = 0; lines < 40 && at != std::string::npos && at > 0; ++lines) {
    at = text.rfind('\n', at - 1);
  }
  return at == std::string::npos ? text : text.substr(std::min(at + 1, text.size()));
}

void expectRows(pqxx::connection& connection, const Directive& directive) {
  std::string query;
  auto line = directive.body.begin();
  while (line != directive.body.end() && (query.empty() || query.back() != ';')) {
    query += (query.empty() ? "" : "\n") + *line++;
    query.erase(query.find_last_not_of(" \t") + 1);
  }
  const std::vector<std::string> expected(line, directive.body.end());
  const std::vector<std::string> actual = rowsText(connection, query);
  if (actual != expected) {
    ADD_FAILURE() << query << "\nexpected:\n" << listed(expected) << "actual:\n" << listed(actual);
  }
}

void expectLog(const std::string& directory, const Directive& directive, bool present) {
  const std::string text = outputText(directory, directive.argument);
  std::size_t at = 0;
  for (const std::string& line : directive.body) {
    if (line.empty()) {
      continue;
    }
    const std::size_t found = text.find(line, present ? at : 0);
    if (present && found == std::string::npos) {
      ADD_FAILURE() << "\"" << line << "\" does not follow in " << directive.argument << ":\n"
                    << text.substr(at);
      return;
    }
    if (!present && found != std::string::npos) {
      ADD_FAILURE() << "\"" << line << "\" occurs in " << directive.argument << ":\n" << text;
    }
    at = found + line.size();
  }
}

// False when the scenario cannot go on.
bool perform(const Directive& directive, const ThrowawayDatabase& db, pqxx::connection& sql,
             const std::string& directory) {
  const std::string& word = directive.word;
  if (word == "sql") {
    std::string statements;
    for (const std::string& line : directive.body) {
      statements += line + "\n";
    }
    pqxx::work work(sql);
    work.exec(statements);
    work.commit();
  } else if (word == "run") {
    std::vector<std::string> arguments{"-host", db.host(), "-name", db.name(), "-user", db.user()};
    std::istringstream words(directive.argument);
    for (std::string argument; words >> argument;) {
      arguments.push_back(argument);
    }
    ServiceRun run(arguments, directory);
    int status = -1;
    const bool ended = run.waitForExit(kRunLimitSec, status);
    if (!ended || status != 0) {
      ADD_FAILURE() << (ended ? "exit status " + std::to_string(status) : "no end by itself")
                    << "\nstdout:\n"
                    << tail(outputText(directory, "stdout")) << "stderr:\n"
                    << tail(outputText(directory, "stderr"));
      return false;
    }
  } else if (word == "expect") {
    expectRows(sql, directive);
  } else if (word == "log" || word == "nolog") {
    expectLog(directory, directive, word == "log");
  } else if (word == "wait") {
    std::this_thread::sleep_for(std::chrono::seconds(std::stoi(directive.argument)));
  } else {
    ADD_FAILURE() << "unknown directive \"" << word << "\"";
    return false;
  }
  return true;
}

class ScenarioCase : public ::testing::Test {
public:
  explicit ScenarioCase(std::string path) : path_(std::move(path)) {}
  void TestBody() override { runScenario(path_); }

private:
  std::string path_;
};

} // namespace

std::vector<std::string> rowsText(pqxx::connection& connection, const std::string& query) {
  pqxx::nontransaction work(connection);
  std::vector<std::string> rows;
  for (const auto& row : work.exec(query)) {
    std::string line;
    for (const auto& field : row) {
      line += (field.num() == 0 ? "" : "|") + std::string(field.is_null() ? "NULL" : field.c_str());
    }
    rows.push_back(line);
  }
  return rows;
}

void runScenario(const std::string& path) {
  const std::string directory = makeWorkingDirectory();
  try {
    const std::vector<Directive> directives = parse(path);
    ThrowawayDatabase db(std::filesystem::path(path).stem().string());
    pqxx::connection sql(db.connectionString());
    for (const Directive& directive : directives) {
      const ::testing::ScopedTrace trace(path.c_str(), directive.line,
                                         "--- " + directive.word + " " + directive.argument);
      if (!perform(directive, db, sql, directory)) {
        break;
      }
    }
  } catch (const std::exception& e) {
    ADD_FAILURE() << path << ": " << e.what();
  }
  if (::testing::Test::HasFailure()) {
    std::cout << "the runs' files are kept in " << directory << "\n";
  } else {
    std::filesystem::remove_all(directory);
  }
}

int scenarioMain(int argc, char** argv, const char* suite, const std::string& directory) {
  ::testing::InitGoogleTest(&argc, argv);
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    if (entry.path().extension() == ".scn") {
      paths.push_back(entry.path().string());
    }
  }
  std::sort(paths.begin(), paths.end());
  for (const std::string& path : paths) {
    const std::string stem = std::filesystem::path(path).stem().string();
    ::testing::RegisterTest(suite, stem.c_str(), nullptr, nullptr, path.c_str(), 1,
                            [path]() -> ::testing::Test* { return new ScenarioCase(path); });
  }
  return RUN_ALL_TESTS();
}

} // namespace vek_test
