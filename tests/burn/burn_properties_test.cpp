// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/burn_properties.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(RequestedSpeed, IsSingleOrDoubleCdSpeedForTheFirstTwoTags) {
  EXPECT_EQ(requestedSpeedForTag(1), 176.4F);
  EXPECT_EQ(requestedSpeedForTag(2), 352.8F);
}

TEST(RequestedSpeed, IsLeftToTheBurnerForAnyOtherTag) {
  for (const int tag : {0, 3, -1, 176}) EXPECT_FALSE(requestedSpeedForTag(tag)) << tag;
}

TEST(CdBurnProperties, MountTheDiscAfterwardsAndProtectAgainstUnderruns) {
  const DRBurnProperties properties = cdBurnProperties(1);
  EXPECT_EQ(properties.DRBurnCompletionActionKey, DRBurnCompletionActionMount);
  EXPECT_EQ(properties.DRBurnUnderrunProtectionKey, 1);
  EXPECT_EQ(properties.DRBurnRequestedSpeedKey, 176.4F);
}

TEST(CdBurnProperties, HaveNoSpeedKeyUnlessASpeedWasChosen) {
  EXPECT_FALSE(cdBurnProperties(0).DRBurnRequestedSpeedKey);
}

TEST(ImageTrackProperties, DescribeAMode1DataTrackOfTheImagesLength) {
  const DRTrackProperties properties = imageTrackProperties(DRMSF::msfWithFrames(5309));
  EXPECT_EQ(properties.DRTrackLengthKey, DRMSF::msfWithFrames(5309));
  EXPECT_EQ(properties.DRBlockSizeKey, 2048);
  EXPECT_EQ(properties.DRDataFormKey, 16);
  EXPECT_EQ(properties.DRBlockTypeKey, 8);
  EXPECT_EQ(properties.DRTrackModeKey, 4);
  EXPECT_EQ(properties.DRSessionFormatKey, 0);
  EXPECT_EQ(properties.DRVerificationTypeKey, DRVerificationTypeProduceAgain);
  EXPECT_EQ(properties.DRISORockRidgeExtensions, 1);
  EXPECT_EQ(properties.DRISOLevel, 2);
}

}  // namespace
}  // namespace kelvane
