// SPDX-License-Identifier: GPL-2.0-or-later
#include <gmock/gmock.h>

#include "app/controller_fixture.h"

namespace kelvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class KVControllerViews : public ControllerFixture {};

TEST_F(KVControllerViews, TheRectanglesAreFixed) {
  EXPECT_EQ(KVController::inWindowRect, (Rect{0, 33, 402, 86}));
  EXPECT_EQ(KVController::leftOfWindowRect, (Rect{-402, 33, 402, 86}));
  EXPECT_EQ(KVController::rightOfWindowRect, (Rect{402, 33, 402, 86}));
}

TEST_F(KVControllerViews, SettingTheSameValueChangesNothing) {
  controller_.setMediaIsMounted(false);
  turn();
  EXPECT_THAT(newCalls(), IsEmpty());
}

TEST_F(KVControllerViews, AMountedDiscSlidesInAndTheListSlidesOutToTheLeft) {
  controller_.setMediaIsMounted(true);
  EXPECT_THAT(newCalls(), ElementsAre("header headerDisksRemounted", "caption buttonclose"));
  turn();
  EXPECT_THAT(newCalls(), ElementsAre("duration 600 ms", "message to left", "diskScroll to left",
                                      "mountedItem to in"));
}

TEST_F(KVControllerViews, TheWayBackMovesTheOpenedDiscDirectlyAndLeavesTheCaption) {
  controller_.setMediaIsMounted(true);
  turn();
  newCalls();
  controller_.setMediaIsMounted(false);
  EXPECT_THAT(newCalls(), ElementsAre("header headerDisksAvail"));
  turn();
  EXPECT_THAT(newCalls(), ElementsAre("duration 600 ms", "message to in", "diskScroll to in",
                                      "mountedItem to right direct", "burn to right"));
}

TEST_F(KVControllerViews, TheBurnViewSlidesInAfterTheOpenedDisc) {
  controller_.showBurnView();
  EXPECT_THAT(newCalls(), ElementsAre("duration 600 ms", "mountedItem to left", "burn to in"));
}

TEST_F(KVControllerViews, WithoutAVolumeTheNamesAreFilledAllTheSame) {
  DeviceRecord record;
  record.DRDevice = &device_;
  record.description = {"SAMPLE", "KELVANE BURNER", "CDR"};
  controller_.setCurrentDeviceDictionary(record);
  controller_.performUpdateMountedItemView();
  EXPECT_THAT(newCalls(), ElementsAre("size viewSizeNotAvail", "volume SAMPLE",
                                      "device CDR in KELVANE BURNER"));
}

TEST_F(KVControllerViews, HoweverOftenARefreshIsAskedForOneWaits) {
  DeviceRecord record;
  record.description = {"SAMPLE", "KELVANE BURNER", "CDR"};
  controller_.setCurrentDeviceDictionary(record);
  for (int i = 0; i < 1000; ++i) controller_.updateMountedItemView();
  turn();
  EXPECT_EQ(newCalls().size(), 3u);
  controller_.updateMountedItemView();
  turn();
  EXPECT_EQ(newCalls().size(), 3u);
}

}  // namespace
}  // namespace kelvane::test
