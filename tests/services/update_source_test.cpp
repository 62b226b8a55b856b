// SPDX-License-Identifier: GPL-2.0-or-later
#include "services/update_source.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(UpdateSourceOfThisBuild, NamesAProductPageWhereItNamesAnEndpoint) {
  const UpdateSource source = UpdateSource::ofThisBuild();
  EXPECT_TRUE(source.versionEndpoint.empty() || !source.productPage.empty());
}

}  // namespace
}  // namespace kelvane
