// SPDX-License-Identifier: GPL-2.0-or-later
//
// A disc that is taken out while the question stands whether its changes are to be burned.
#include "app/open_disc_fixture.h"
#include "media/recorded_log.h"

namespace kelvane::test {
namespace {

using ::testing::Contains;
using ::testing::Not;

using VanishingDisc = OpenDiscTest;

TEST_F(VanishingDisc, TakesTheQuestionWithItAndTheNextDiscCanBeOpened) {
  std::ofstream(volume_ + "/new.txt") << "new";
  controller_->closeVolume();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  device_->ejectMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  EXPECT_FALSE(window_.asksToBurn) << "the answer would be taken for one about the next disc";
  // The clean-up's scan comes before the news of the disc.
  const RecordedLog log;
  device_->loadMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
  EXPECT_THAT(log.lines(), Not(Contains("unable to get mountpath. ignoring disk.")))
      << "the scan has waited in vain for the volume of a disc that was there";
  close();
}

}  // namespace
}  // namespace kelvane::test
