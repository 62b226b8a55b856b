// SPDX-License-Identifier: GPL-2.0-or-later
//
// A disc that is taken out while the question stands whether its changes are to be burned.
#include <thread>

#include "app/open_disc_fixture.h"
#include "media/recorded_log.h"
#include "platform/foundation/main_thread.h"

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

// Its end is known to the scan first, or the volume's end to the thread of the file system.
TEST_F(VanishingDisc, LeavesNoQuestionBehindWhereItGoesWhileItsVolumeIsBeingClosed) {
  std::ofstream(volume_ + "/new.txt") << "new";
  controller_->closeVolume();
  while (controller_->tarnwickFS()) std::this_thread::yield();
  device_->ejectMedia();
  controller_->performScanForMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  // What was queued before the clean-up, or behind it, has run then.
  bool reached = false;
  performOnMainThread([&reached] { reached = true; });
  ASSERT_TRUE(waitFor([&reached] { return reached; }));
  EXPECT_FALSE(window_.asksToBurn) << "the answer would be taken for one about the next disc";
}

}  // namespace
}  // namespace kelvane::test
