// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/dr_burn.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "platform/recording/dr_notification_center.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

using ::testing::HasSubstr;
using virtualdrive::MediumKind;

constexpr size_t kBlock = 2048;

class DRBurnTest : public testing::BurnerFixture {
 protected:
  std::string errorOf(const DRBurnStatus& status) {
    return status.DRErrorStatusKey ? status.DRErrorStatusKey->DRErrorStatusErrorStringKey : "none";
  }
};

TEST_F(DRBurnTest, TheFirstSessionOfABlankDiscBeginsAtBlock0AndLeavesTheDiscOpen) {
  DRDevice* device = addDrive();
  const std::string image = makeImage("first.iso", 400 * kBlock);
  const DRBurnStatus status = burn(device, image);
  ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
  EXPECT_EQ(status.DRStatusPercentCompleteKey, 1.0);
  EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, 400), contentOf(image));
  EXPECT_TRUE(device->mediaIsAppendable());
  EXPECT_FALSE(device->mediaIsBlank());
}

TEST_F(DRBurnTest, EachFurtherSessionBeginsWhereTheDriveSaysAndKeepsTheEarlierOnes) {
  DRDevice* device = addDrive();
  for (unsigned session = 1; session <= 4; ++session) {
    const auto media = device->status().DRDeviceMediaInfoKey;
    const auto start =
        media->DRDeviceTrackInfoKey.at(media->DRDeviceTrackRefsKey.back()).DRTrackStartAddressKey;
    const std::string before = blocksOf(*device->emulatedDisc(), 0, static_cast<size_t>(*start));
    const std::string image = makeImage("image.iso", (300 + session) * kBlock, session);
    const DRBurnStatus status = burn(device, image);
    ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
    const size_t first = static_cast<size_t>(*start);
    EXPECT_EQ(blocksOf(*device->emulatedDisc(), first, 300 + session), contentOf(image));
    EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, first).substr(0, before.size()), before);
    EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, session);
  }
}

}  // namespace
}  // namespace kelvane
