#pragma once

// A store test that looks only at what the operations log: the store's own line about its
// connection, written before the test begins, is left out of logText().

#include <cstddef>
#include <string>

#include "support/StoreTest.h"

class OperationLogTest : public vek_test::StoreTest {
protected:
  void SetUp() override {
    vek_test::StoreTest::SetUp();
    connect_log_size = vek_test::StoreTest::logText().size();
  }
  std::string logText() const { return vek_test::StoreTest::logText().substr(connect_log_size); }

private:
  std::size_t connect_log_size = 0;
};
