// SPDX-License-Identifier: GPL-2.0-or-later
#include "media/disc_classification.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/recording/dr_media_types.h"

namespace kelvane {
namespace {

using Type = std::optional<std::string>;

const std::vector<Type> kAllTypes = {
    DRDeviceMediaTypeCDROM,         DRDeviceMediaTypeCDR,
    DRDeviceMediaTypeCDRW,          DRDeviceMediaTypeDVDROM,
    DRDeviceMediaTypeDVDRAM,        DRDeviceMediaTypeDVDR,
    DRDeviceMediaTypeDVDRDualLayer, DRDeviceMediaTypeDVDRW,
    DRDeviceMediaTypeDVDPlusR,      DRDeviceMediaTypeDVDPlusRDoubleLayer,
    DRDeviceMediaTypeDVDPlusRW,     DRDeviceMediaTypeBDROM,
    DRDeviceMediaTypeBDR,           DRDeviceMediaTypeBDRE};

bool isOneOf(const Type& type, const std::vector<Type>& types) {
  for (const Type& candidate : types) {
    if (candidate == type) return true;
  }
  return false;
}

TEST(DiscClassificationTest, ADiscIsConsideredBlankWhenItIs) {
  EXPECT_TRUE(isConsideredBlank({DRDeviceMediaTypeCDR, true, true}));
  EXPECT_FALSE(isConsideredBlank({DRDeviceMediaTypeCDR, false, true}));
  EXPECT_TRUE(isConsideredBlank({std::nullopt, true, false}));
}

TEST(DiscClassificationTest, ADvdRwThatStillAcceptsDataIsConsideredBlankWhateverItHolds) {
  EXPECT_TRUE(isConsideredBlank({DRDeviceMediaTypeDVDRW, false, true}));
  EXPECT_FALSE(isConsideredBlank({DRDeviceMediaTypeDVDRW, false, false}));
  EXPECT_TRUE(isConsideredBlank({DRDeviceMediaTypeDVDRW, true, false}));
  EXPECT_FALSE(isConsideredBlank({DRDeviceMediaTypeDVDPlusRW, false, true}));
  EXPECT_FALSE(isConsideredBlank({DRDeviceMediaTypeCDRW, false, true}));
}

TEST(DiscClassificationTest, ExactlyThreeKindsOfMediaAreRewritable) {
  for (const Type& type : kAllTypes) {
    EXPECT_EQ(isRewritable(type), isOneOf(type, {DRDeviceMediaTypeDVDRW, DRDeviceMediaTypeCDRW,
                                                 DRDeviceMediaTypeDVDPlusRW}))
        << *type;
  }
  EXPECT_FALSE(isRewritable(std::nullopt));
}

TEST(DiscClassificationTest, CdsHold680MegabytesAndThreeKindsOfDvd4300) {
  for (const Type& type : kAllTypes) {
    const auto capacity = nominalCapacity(type);
    if (isOneOf(type, {DRDeviceMediaTypeCDR, DRDeviceMediaTypeCDRW})) {
      ASSERT_TRUE(capacity.has_value()) << *type;
      EXPECT_STREQ(capacity->totalMB, "680.0");
      EXPECT_EQ(capacity->megabytes, 680.0);
    } else if (isOneOf(type, {DRDeviceMediaTypeDVDR, DRDeviceMediaTypeDVDPlusRW,
                              DRDeviceMediaTypeDVDRW})) {
      ASSERT_TRUE(capacity.has_value()) << *type;
      EXPECT_STREQ(capacity->totalMB, "4300.0");
      EXPECT_EQ(capacity->megabytes, 4300.0);
    } else {
      EXPECT_FALSE(capacity.has_value()) << *type;
    }
  }
  EXPECT_FALSE(nominalCapacity(std::nullopt).has_value());
}

TEST(DiscClassificationTest, EveryKindButFourIsRefusedAlsoTheDvdRThatHasACapacity) {
  for (const Type& type : kAllTypes) {
    EXPECT_EQ(isRefusedType(type),
              !isOneOf(type, {DRDeviceMediaTypeCDR, DRDeviceMediaTypeCDRW,
                              DRDeviceMediaTypeDVDPlusRW, DRDeviceMediaTypeDVDRW}))
        << *type;
  }
  EXPECT_FALSE(isRefusedType(std::nullopt));
}

TEST(DiscClassificationTest, TheShortTypeLacksTheFirstSeventeenCharacters) {
  EXPECT_EQ(shortMediaType(DRDeviceMediaTypeCDRW), "CDRW");
  EXPECT_EQ(shortMediaType(DRDeviceMediaTypeDVDPlusRW), "DVDPlusRW");
  EXPECT_EQ(shortMediaType("DRDeviceMediaType"), "");
  EXPECT_EQ(shortMediaType("short"), "");
  EXPECT_FALSE(shortMediaType(std::nullopt).has_value());
}

TEST(DiscClassificationTest, ADiscWithRoomAndAnIsoVolumeIsNotRefused) {
  EXPECT_FALSE(refusalKey(DRDeviceMediaTypeCDR, VolumeAnswers{679.99, true}).has_value());
  EXPECT_FALSE(refusalKey(DRDeviceMediaTypeDVDPlusRW, VolumeAnswers{4299.9, true}).has_value());
}

TEST(DiscClassificationTest, ADiscFilledToItsNominalCapacityIsFull) {
  EXPECT_EQ(refusalKey(DRDeviceMediaTypeCDR, VolumeAnswers{680.0, true}), "diskfull");
  EXPECT_EQ(refusalKey(DRDeviceMediaTypeCDRW, VolumeAnswers{700.0, true}), "diskfull");
  EXPECT_EQ(refusalKey(DRDeviceMediaTypeDVDPlusRW, VolumeAnswers{4300.0, true}), "diskfull");
}

TEST(DiscClassificationTest, AForeignLayoutOutweighsAFullDisc) {
  EXPECT_EQ(refusalKey(DRDeviceMediaTypeCDR, VolumeAnswers{700.0, false}), "unsupporteddiskformat");
  EXPECT_EQ(refusalKey(DRDeviceMediaTypeCDR, VolumeAnswers{1.0, false}), "unsupporteddiskformat");
}

TEST(DiscClassificationTest, ARefusedTypeOutweighsEverythingElse) {
  EXPECT_EQ(refusalKey(DRDeviceMediaTypeDVDR, VolumeAnswers{5000.0, false}), "unsupporteddisktype");
  EXPECT_EQ(refusalKey(DRDeviceMediaTypeDVDR, VolumeAnswers{1.0, true}), "unsupporteddisktype");
  EXPECT_EQ(refusalKey(DRDeviceMediaTypeDVDR, std::nullopt), "unsupporteddisktype");
}

TEST(DiscClassificationTest, ABlankDiscSkipsTheTestsOfItsVolume) {
  EXPECT_FALSE(refusalKey(DRDeviceMediaTypeCDR, std::nullopt).has_value());
}

TEST(DiscClassificationTest, AnUnknownTypeIsRefusedForItsLayoutOnly) {
  EXPECT_FALSE(refusalKey(std::nullopt, VolumeAnswers{9000.0, true}).has_value());
  EXPECT_EQ(refusalKey(std::nullopt, VolumeAnswers{1.0, false}), "unsupporteddiskformat");
}

}  // namespace
}  // namespace kelvane
