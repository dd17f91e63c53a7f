// The generic queries, the read of one measurement row and the connection of WorkPostgreSQL,
// against the throwaway PostgreSQL.
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <pqxx/pqxx>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "support/StoreTest.h"

namespace {

using vek_test::StoreTest;

int countOf(const std::string& text, const std::string& piece) {
  int n = 0;
  for (auto at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) {
    ++n;
  }
  return n;
}

class WorkPostgreSQLQueries : public StoreTest {};

TEST_F(WorkPostgreSQLQueries, GetValueIntKeepsLastReadableFieldAndReadsNoNumberAsZero) {
  // The loop's resume point is a MAX over MATH_HISTORY, empty on a first start.
  EXPECT_EQ(store().getValueInt("SELECT MAX(param_info_id) FROM math_history"), 0);
  EXPECT_EQ(store().getValueInt("SELECT 'abc'"), 0);
  EXPECT_EQ(store().getValueInt("SELECT '12.5'"), 12);
  EXPECT_EQ(store().getValueInt("SELECT -7"), -7);
  EXPECT_EQ(store().getValueInt("SELECT x FROM (VALUES (1), (2), (3)) v(x)"), 3);
  EXPECT_EQ(store().getValueInt("SELECT 4, 5"), 5) << "the last field of a row wins";
  EXPECT_EQ(store().getValueInt("SELECT x FROM (VALUES (7), (NULL)) v(x)"), 7)
      << "a NULL leaves the value in hand";
  EXPECT_EQ(store().getValueInt("SELECT NULL::integer"), 0);
  EXPECT_EQ(store().getValueInt("SELECT 1 WHERE false"), 0);
  EXPECT_EQ(store().getValueInt("SELECT 9, 'abc'"), 0) << "a field that is no number gives 0";
}

TEST_F(WorkPostgreSQLQueries, UnreadRestOfAFieldStaysInFrontOfTheNextOne) {
  // "12.5" read as an int leaves ".5" in the operation's stream; the next field is appended to
  // it and ".57" is no int.
  EXPECT_EQ(store().getValueInt("SELECT '12.5', '7'"), 0);
  std::vector<std::vector<int>> rows;
  store().getValue("SELECT '3.5', '4' UNION ALL SELECT '8', '9'", rows);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0], (std::vector<int>{3, 0}));
  EXPECT_EQ(rows[1], (std::vector<int>{0, 0}));
}

TEST_F(WorkPostgreSQLQueries, GetValueStringTakesFirstColumnOfLastRow) {
  EXPECT_EQ(store().getValueString("SELECT x, 'other' FROM (VALUES ('a'), ('b'), ('c')) v(x)"),
            "c");
  EXPECT_EQ(store().getValueString("SELECT NULL::text"), "");
  EXPECT_EQ(store().getValueString("SELECT x FROM (VALUES ('a'), (NULL)) v(x)"), "")
      << "the last row wins even when it is NULL";
  EXPECT_EQ(store().getValueString("SELECT 'a' WHERE false"), "");
  EXPECT_EQ(store().getValueString("SELECT TO_TIMESTAMP('2023-7-4 9:5:1.25', "
                                   "'yyyy-mm-dd hh24:mi:ss.ff6')::timestamp"),
            "2023-07-04 09:05:01.25");
}

TEST_F(WorkPostgreSQLQueries, GetValueAppendsRowsWithNullAsZeroOrEmpty) {
  std::vector<std::vector<int>> numbers{{99}};
  store().getValue("SELECT 1, NULL::integer, 3 UNION ALL SELECT 4, 5, NULL", numbers);
  ASSERT_EQ(numbers.size(), 3u) << "the output is appended to, not cleared";
  EXPECT_EQ(numbers[0], (std::vector<int>{99}));
  EXPECT_EQ(numbers[1], (std::vector<int>{1, 0, 3}));
  EXPECT_EQ(numbers[2], (std::vector<int>{4, 5, 0}));

  std::vector<std::string> texts{"kept"};
  store().getValue("SELECT x, 'second column' FROM (VALUES ('a'), (NULL), ('O''Brien')) v(x)",
                   texts);
  EXPECT_EQ(texts, (std::vector<std::string>{"kept", "a", "", "O'Brien"}));

  texts.clear();
  store().getValue("SELECT 'a' WHERE false", texts);
  EXPECT_TRUE(texts.empty());
}

TEST_F(WorkPostgreSQLQueries, ReadDataTableAppendsDoublesWithNullAsZero) {
  std::vector<std::vector<double>> table{{-1.0}};
  store().readDataTable("SELECT 1.5::float8, NULL::float8, 3 UNION ALL "
                        "SELECT -2.25, 1e-3, 1.0000000000000002",
                        table);
  ASSERT_EQ(table.size(), 3u);
  EXPECT_EQ(table[0], (std::vector<double>{-1.0}));
  EXPECT_EQ(table[1], (std::vector<double>{1.5, 0.0, 3.0}));
  EXPECT_EQ(table[2], (std::vector<double>{-2.25, 1e-3, 1.0000000000000002}));
}

TEST_F(WorkPostgreSQLQueries, WriteDataCommitsAndARejectedStatementLeavesNothing) {
  store().writeData("INSERT INTO param_info (id, source) VALUES (1, 42)");
  // Committed: the other session sees it at once.
  EXPECT_EQ(scalar("SELECT source FROM param_info WHERE id = 1"), "42");

  // One text with two statements runs in one transaction; the second fails, so the first is
  // rolled back with it.
  EXPECT_THROW(store().writeData("INSERT INTO param_info (id) VALUES (2); "
                                 "INSERT INTO no_such_table VALUES (1)"),
               pqxx::sql_error);
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM param_info WHERE id = 2"), "0");

  // A duplicate key, the classic rejection: the session stays usable for the next statement.
  EXPECT_THROW(store().writeData("INSERT INTO param_info (id) VALUES (1)"), pqxx::sql_error);
  EXPECT_EQ(store().getValueInt("SELECT COUNT(*) FROM param_info"), 1);

  // Reads commit too: a read that writes (nextval) keeps its effect.
  EXPECT_EQ(store().getValueInt("SELECT nextval('id_seq_rec')"), 1);
  EXPECT_EQ(scalar("SELECT last_value FROM id_seq_rec"), "1");
}

class WorkPostgreSQLReadParamInfo : public StoreTest {};

TEST_F(WorkPostgreSQLReadParamInfo, ExistingRowFillsEveryFieldAndAGapLeavesDefaults) {
  exec("INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, tu_error, "
       "param_settings, module_config, kind) VALUES (5, 9007199254740993, 10, 3, "
       "'2023-07-04 09:05:01.123456', 'TEMP=21;RSSI=-70', '[{\"name_param\":\"x\"}]', "
       "'{\"config\":1}', 1)");

  param_info info;
  store().readParamInfo(5, info);
  EXPECT_EQ(info.id, 5);
  EXPECT_EQ(info.source, 9007199254740993L);
  EXPECT_EQ(info.type_mod, 10);
  EXPECT_EQ(info.type_param, 3);
  EXPECT_EQ(info.receipt_date, "2023-07-04 09:05:01.123456");
  EXPECT_EQ(info.tu_error, "TEMP=21;RSSI=-70");
  EXPECT_EQ(info.param_settings, "[{\"name_param\":\"x\"}]");
  EXPECT_EQ(info.module_config, "{\"config\":1}");
  EXPECT_EQ(info.kind, 1);
  EXPECT_TRUE(info.settings.empty()) << "the settings are parsed by the loop, not the store";

  param_info gap;
  store().readParamInfo(6, gap);
  EXPECT_EQ(gap.id, 0) << "id 0 is how the loop sees a gap";
  EXPECT_EQ(gap.source, 0);
  EXPECT_EQ(gap.type_mod, 0);
  EXPECT_EQ(gap.receipt_date, "");
  EXPECT_EQ(gap.kind, 0);

  // One file-only line per read, after the line of the connection.
  const std::string lines = "reading data: ID = 5\nreading data: ID = 6\n";
  const std::string log_text = logText();
  ASSERT_GE(log_text.size(), lines.size()) << log_text;
  EXPECT_EQ(log_text.substr(log_text.size() - lines.size()), lines);
}

TEST_F(WorkPostgreSQLReadParamInfo, NullColumnsLeaveNumbersAsTheyWereAndGiveEmptyTexts) {
  exec("INSERT INTO param_info (id) VALUES (8)");
  param_info info;
  info.kind = 7;
  info.tu_error = "stale";
  store().readParamInfo(8, info);
  EXPECT_EQ(info.id, 8);
  EXPECT_EQ(info.kind, 7);
  EXPECT_EQ(info.source, 0);
  EXPECT_EQ(info.tu_error, "");
  EXPECT_EQ(info.receipt_date, "");
}

class WorkPostgreSQLConnection : public StoreTest {
protected:
  // The sessions open on the suite's database apart from the test's own, once the count has
  // settled at expected or five seconds have passed: a backend leaves a moment after its client.
  int otherSessions(int expected) {
    int count = -1;
    for (int attempt = 0; attempt < 100; ++attempt) {
      count = std::stoi(scalar("SELECT COUNT(*) FROM pg_stat_activity WHERE datname = '" +
                               database().name() + "' AND pid <> pg_backend_pid()"));
      if (count == expected) {
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return count;
  }
};

TEST_F(WorkPostgreSQLConnection, ServerDownAtStartMakesTheConstructorWait) {
  // A socket directory where no server listens: the client sees what it sees when the server
  // is down. After a while the server's socket appears there (a link to the running one), as
  // when the server comes up. The shared server itself is never stopped, so tests that run
  // beside this one are not disturbed.
  char pattern[] = "/tmp/vek-down-XXXXXX";
  ASSERT_NE(mkdtemp(pattern), nullptr) << std::strerror(errno);
  const std::string down_host = pattern;
  const std::string socket = "/.s.PGSQL.5432";
  const auto server_comes_up_after = std::chrono::milliseconds(800);

  const std::string log_path = temporaryFile("down-log");
  PrintLog down_log(false, true, log_path);
  std::thread server([&] {
    std::this_thread::sleep_for(server_comes_up_after);
    if (symlink((database().host() + socket).c_str(), (down_host + socket).c_str()) != 0) {
      std::perror("symlink");
    }
  });
  const auto start = std::chrono::steady_clock::now();
  auto late = std::make_unique<WorkPostgreSQL>(down_host, database().name(), database().user(), "",
                                               &down_log, std::chrono::milliseconds(100));
  const auto waited = std::chrono::steady_clock::now() - start;
  server.join();

  EXPECT_GE(waited, server_comes_up_after) << "the constructor returned before the server was up";
  EXPECT_EQ(late->getValueInt("SELECT 7"), 7);

  late.reset();
  unlink((down_host + socket).c_str());
  rmdir(down_host.c_str());

  const std::string text = fileText(log_path);
  const int pauses = countOf(text, "reconnect pause 30c\n");
  EXPECT_GE(pauses, 2) << text;
  // Every attempt logs libpq's reason first; the reason names the socket it tried.
  EXPECT_GE(countOf(text, down_host + socket), pauses) << text;
  const std::string connected = "connect to database: " + down_host + " " + database().name() +
                                " " + database().user() + "\n";
  ASSERT_GE(text.size(), connected.size());
  EXPECT_EQ(text.substr(text.size() - connected.size()), connected) << text;
  EXPECT_EQ(countOf(text, "connect to database: "), 1);
}

TEST_F(WorkPostgreSQLConnection, LostSessionIsReportedUntilOpenConnectReconnects) {
  const int pid = store().getValueInt("SELECT pg_backend_pid()");
  // The administrator ends the store's session; wait until it is gone.
  exec("SELECT pg_terminate_backend(" + std::to_string(pid) + ", 5000)");

  EXPECT_THROW(store().getValueInt("SELECT 1"), pqxx::broken_connection);
  // No reconnect behind the caller's back: the loop's catch block decides when.
  EXPECT_THROW(store().writeData("INSERT INTO param_info (id) VALUES (1)"),
               pqxx::broken_connection);

  store().openConnect();
  EXPECT_EQ(store().getValueInt("SELECT 1"), 1);
  EXPECT_NE(store().getValueInt("SELECT pg_backend_pid()"), pid);
  EXPECT_EQ(countOf(logText(), "connect to database: "), 2);
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM param_info"), "0");
}

TEST_F(WorkPostgreSQLConnection, ReconnectReleasesTheSessionItReplaces) {
  ASSERT_EQ(otherSessions(1), 1);
  store().openConnect();
  store().openConnect();
  EXPECT_EQ(otherSessions(1), 1) << "a replaced session must not stay open on the server";
  EXPECT_EQ(store().getValueInt("SELECT 3"), 3);
}

TEST_F(WorkPostgreSQLConnection, CloseConnectEndsTheSessionButKeepsTheObject) {
  store().closeConnect();
  EXPECT_EQ(otherSessions(0), 0);
  EXPECT_THROW(store().getValueInt("SELECT 1"), pqxx::broken_connection);
  store().openConnect();
  EXPECT_EQ(store().getValueInt("SELECT 1"), 1);
  store().closeConnect();
  store().closeConnect();
}

} // namespace
