#pragma once

#include <gtest/gtest.h>

#include "platform/ZYMBaseUnknown.h"

/// Every test ends with as many living components as it began with: no record, handle or tree outlives its last owner.
class ModuleTest : public testing::Test {
 public:
  ~ModuleTest() override { EXPECT_EQ(ZYMBaseUnknown::LivingComponents(), livingBefore_); }

 private:
  std::int64_t livingBefore_ = ZYMBaseUnknown::LivingComponents();
};
