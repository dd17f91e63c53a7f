// The store fixture of the equipment tests: each test starts from a bare plant, also when the
// suite shares one database.
#pragma once

#include "support/PlantBuilder.h"
#include "support/StoreTest.h"

class BarePlantTest : public vek_test::StoreTest {
protected:
  void SetUp() override {
    vek_test::StoreTest::SetUp();
    vek_test::PlantBuilder::emptyTables(sql());
  }
};
