// SPDX-License-Identifier: GPL-2.0-or-later
//
// A disc that is taken out while the question stands whether its changes are to be burned.
#include "app/open_disc_fixture.h"

namespace kelvane::test {
namespace {

using VanishingDisc = OpenDiscTest;

TEST_F(VanishingDisc, TakesTheQuestionWithItAndTheNextDiscCanBeOpened) {
  std::ofstream(volume_ + "/new.txt") << "new";
  controller_->closeVolume();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  device_->ejectMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  EXPECT_FALSE(window_.asksToBurn) << "the answer would be taken for one about the next disc";
  device_->loadMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
  close();
}

}  // namespace
}  // namespace kelvane::test
