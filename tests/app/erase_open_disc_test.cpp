// SPDX-License-Identifier: GPL-2.0-or-later
//
// Erases of a disc that is open.
#include "app/open_disc_fixture.h"

namespace kelvane::test {
namespace {

using EraseOfAnOpenDisc = OpenDiscTest;

TEST_F(EraseOfAnOpenDisc, ClosesAVolumeWithoutChangesErasesAndOpensTheBlankDisc) {
  const std::string overlay = controller_->tmpDirPath();
  controller_->performErase();
  EXPECT_FALSE(window_.isErasing()) << "erased under the volume";
  ASSERT_TRUE(waitFor([this] { return window_.isErasing(); }));
  EXPECT_FALSE(controller_->mediaIsMounted());
  EXPECT_THAT(window_.replies, testing::ElementsAre(false)) << "a quit would not wait";
  EXPECT_FALSE(fs::exists(overlay));
  EXPECT_FALSE(fs::exists(paths::hiddenMountFolder()));
  EXPECT_TRUE(device_->mediaIsBusy());
  ASSERT_TRUE(waitFor([this] { return !window_.outcomes.empty(); }));
  EXPECT_EQ(window_.outcomes.front(), "");
  ASSERT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
  EXPECT_TRUE(device_->mediaIsBlank());
  EXPECT_EQ(controller_->currentDeviceDictionary()->description.volumename, "untitled");
  EXPECT_TRUE(fs::is_empty(volume_));
  close();
}

TEST_F(EraseOfAnOpenDisc, AsksAboutChangesInsteadAndErasesNothing) {
  std::ofstream(volume_ + "/new.txt") << "new";
  controller_->performErase();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  controller_->burnConfirmationDidCancel();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  EXPECT_TRUE(window_.outcomes.empty());
  device_->loadMedia();
  EXPECT_FALSE(device_->mediaIsBlank());
}

TEST_F(EraseOfAnOpenDisc, ADeletionIsAChangeToo) {
  fs::remove(volume_ + "/a.txt");
  controller_->performErase();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  controller_->burnConfirmationDidCancel();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  EXPECT_TRUE(window_.outcomes.empty());
}

TEST_F(EraseOfAnOpenDisc, AVolumeInUseStaysOpenAndALaterClosingErasesNothing) {
  {
    const std::ifstream used(volume_ + "/a.txt");
    controller_->performErase();
    EXPECT_THAT(window_.alerts, testing::ElementsAre("VolumeBusy"));
    EXPECT_TRUE(controller_->mediaIsMounted());
  }
  close();
  EXPECT_TRUE(window_.outcomes.empty());
  device_->loadMedia();
  EXPECT_FALSE(device_->mediaIsBlank());
}

}  // namespace
}  // namespace kelvane::test
