// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/descriptor_limit.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>

namespace kelvane {
namespace {

class DescriptorLimit : public testing::Test {
 protected:
  DescriptorLimit() { getrlimit(RLIMIT_NOFILE, &before_); }
  ~DescriptorLimit() override { setrlimit(RLIMIT_NOFILE, &before_); }

  rlim_t raisedFrom(rlim_t soft) {
    const rlimit limit{soft, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    raiseDescriptorLimit();
    rlimit after{};
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &after), 0);
    EXPECT_EQ(after.rlim_max, before_.rlim_max);
    return after.rlim_cur;
  }

  rlimit before_{};
};

TEST_F(DescriptorLimit, IsRaisedAsFarAsTheSystemAllowsAndNoFurtherThanIsOfUse) {
  EXPECT_EQ(raisedFrom(256), std::min<rlim_t>(before_.rlim_max, 65536));
}

TEST_F(DescriptorLimit, OfSomebodyWhoHasMoreIsNotLowered) {
  EXPECT_EQ(raisedFrom(before_.rlim_max), before_.rlim_max);
}

}  // namespace
}  // namespace kelvane
