// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/recording_room.h"

#include <gtest/gtest.h>

#include "volumes/fake_device.h"

namespace kelvane {
namespace {

class Device : public test::FakeDevice {
 public:
  Device() : FakeDevice("kv0") {}
  std::optional<uint32_t> formatCapacity() const override { return capacity; }

  void setFree(std::optional<int64_t> blocks) {
    deviceStatus.DRDeviceMediaInfoKey->DRDeviceMediaBlocksFreeKey = blocks;
  }

  std::optional<uint32_t> capacity;
};

TEST(RecordingRoom, OfACdIsWhatTheDriveTellsLessTheGapBehindTheSession) {
  Device device;
  device.setTracks({0});
  device.setFree(20000);
  EXPECT_EQ(roomOnCD(device).leftAfter(1000), 20000 - 1000 - 11402) << "behind the first session";
  device.setTracks({0, 11702});
  device.setFree(20000);
  EXPECT_EQ(roomOnCD(device).leftAfter(1000), 20000 - 1000 - 6902) << "behind further ones";
}

TEST(RecordingRoom, OfACdIsTakenByATrackOfFourSecondsAtLeast) {
  Device device;
  device.setTracks({0, 11702});
  device.setFree(7202);
  const RecordingRoom room = roomOnCD(device);
  EXPECT_EQ(room.blocksFor(1), 300);
  EXPECT_EQ(room.leftAfter(1), 0);
  EXPECT_EQ(room.leftAfter(301), 0) << "no further session fits behind it";
  EXPECT_EQ(room.leftAfter(7202), 0) << "this one does";
  EXPECT_EQ(room.leftAfter(7203), -1);
}

TEST(RecordingRoom, OfADvdThatIsWrittenOverBeginsBehindItsVolumeInWholeBlocksOfSixteen) {
  Device device;
  device.setTracks({0});
  device.setFree(std::nullopt);
  device.capacity = 1000;
  const RecordingRoom room = roomOnDVD(device, 209);
  EXPECT_EQ(room.freeBlocks, 1000 - 224);
  EXPECT_EQ(room.leftAfter(17), 1000 - 224 - 32);
  EXPECT_EQ(roomOnDVD(device, 0).freeBlocks, 1000);
  EXPECT_EQ(nextSessionOnDVD(208), 208);
}

// growisofs 7.1 begins a session at block 2076672 and refuses the next one that it could begin at.
TEST(RecordingRoom, OfADvdThatIsWrittenOverEndsForFurtherSessions40MegabytesBefore4Gigabytes) {
  Device device;
  device.setTracks({0});
  device.setFree(std::nullopt);
  device.capacity = 2295104;
  constexpr int64_t kLast = 2076672;
  EXPECT_EQ(roomOnDVD(device, kLast).blocksToLastBeginning, 0);
  EXPECT_EQ(roomOnDVD(device, kLast + 1).blocksToLastBeginning, -16);
  const RecordingRoom room = roomOnDVD(device, kLast - 160);
  EXPECT_EQ(room.leftAfter(160), 2295104 - kLast);
  EXPECT_EQ(room.leftAfter(161), 0) << "no further session could begin behind it";
  EXPECT_LT(room.leftAfter(2295104), 0) << "and this one does not fit";
}

TEST(RecordingRoom, OfADvdThatIsWrittenSessionAfterSessionIsWhatTheDriveTells) {
  Device device;
  device.setTracks({0, 16592});
  device.setFree(50000);
  device.capacity = 1000000;
  EXPECT_EQ(roomOnDVD(device, 208).freeBlocks, 50000);
  EXPECT_EQ(roomOnDVD(device, 208).leftAfter(50001), 50000 - 50016);
}

TEST(RecordingRoom, IsUnknownWhereTheDriveDoesNotTell) {
  Device device;
  EXPECT_EQ(roomOnCD(device).leftAfter(1), std::nullopt) << "no disc";
  EXPECT_EQ(roomOnDVD(device, 0).leftAfter(1), std::nullopt);
  device.setTracks({0, 11702});
  EXPECT_EQ(roomOnCD(device).leftAfter(1), std::nullopt);
}

}  // namespace
}  // namespace kelvane
