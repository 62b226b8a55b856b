// SPDX-License-Identifier: GPL-2.0-or-later
// A drive with which something goes wrong.
#include <chrono>

#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

constexpr Sense kBecomingReady{0x2, 0x04, 0x01};
constexpr Sense kPowerCalibration{0x3, 0x73, 0x03};

class FaultInjection : public DriveTest {
 protected:
  void SetUp() override { makeDisc(MediumKind::CdRw); }

  void script(const std::string& text) { writeFile(disc() / "faults", text); }
  Sense testReady() { return send({0x00, 0, 0, 0, 0, 0}); }
  Sense writeOne(Lba address) { return write(address, patternBytes(kSectorBytes, 1)); }
  Sense calibrate() { return send({0x54, 1, 0, 0, 0, 0, 0, 0, 0, 0}); }
  Sense eject() { return send({0x1B, 0, 0, 0, 2, 0}); }
  Sense load() { return send({0x1B, 0, 0, 0, 3, 0}); }
  /// How many sessions the drive tells of, the open one included.
  unsigned sessions() { return discInformation().u8(4); }
};

TEST_F(FaultInjection, WithoutAScriptNothingHappens) {
  EXPECT_EQ(calibrate(), kGood);
  EXPECT_FALSE(std::filesystem::exists(disc() / "faults.state"));
}

TEST_F(FaultInjection, OneCommandIsRefusedAndTheDiscStaysAsItWas) {
  script("on write 2: sense 3/0C/00");
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  EXPECT_EQ(writeOne(0), kGood);
  EXPECT_EQ(writeOne(1), kWriteError);
  EXPECT_EQ(track(1, 1).next, 1);
  EXPECT_EQ(writeOne(1), kGood);
}

TEST_F(FaultInjection, CommandsAreCountedByAllWhoUseTheDrive) {
  script("on command 3: sense 3/0C/00");
  EXPECT_EQ(testReady(), kGood);
  std::string error;
  const auto other = VirtualDrive::open(disc(), &error);
  ASSERT_TRUE(other.has_value()) << error;
  const Block block{0x00, 0, 0, 0, 0, 0};
  EXPECT_TRUE(other->execute(block, {}, {}).good());
  EXPECT_EQ(testReady(), kWriteError);
  EXPECT_EQ(testReady(), kGood);
}

TEST_F(FaultInjection, AChangedScriptIsCountedFromTheBeginning) {
  script("on opc: sense 3/73/03");
  EXPECT_EQ(calibrate(), kPowerCalibration);
  EXPECT_EQ(calibrate(), kGood);
  script("on opc: sense 3/73/03 # once more");
  EXPECT_EQ(calibrate(), kPowerCalibration);
}

TEST_F(FaultInjection, FullMeansAllThatComesLater) {
  script("on write 2 and later: full");
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  EXPECT_EQ(writeOne(0), kGood);
  EXPECT_EQ(writeOne(1), kEndOfUserArea);
  EXPECT_EQ(writeOne(1), kEndOfUserArea);
}

TEST_F(FaultInjection, ASectorIsFoundWithinTheCommandsRange) {
  script("on write lba 10: sense 3/0C/00\non read lba 9: sense 3/11/00");
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  EXPECT_EQ(write(0, patternBytes(10 * kSectorBytes, 1)), kGood);
  EXPECT_EQ(write(10, patternBytes(10 * kSectorBytes, 1)), kWriteError);
  EXPECT_EQ(read(0, 9).sense, kGood);
  EXPECT_EQ(read(5, 5).sense, kUnrecoveredRead);
}

TEST_F(FaultInjection, AnAttentionComesInsteadOfOrAfterACommand) {
  script("on opc 1: attention\nafter sync: attention");
  EXPECT_EQ(calibrate(), kMediumMayHaveChanged);
  EXPECT_EQ(calibrate(), kGood);
  EXPECT_EQ(synchronize(), kGood);
  EXPECT_EQ(testReady(), kMediumMayHaveChanged);
  EXPECT_EQ(testReady(), kGood);
}

TEST_F(FaultInjection, ADriveThatIsGoneAnswersNothing) {
  script("on opc: gone");
  EXPECT_TRUE(drive().isThere());
  EXPECT_EQ(testReady(), kGood);
  calibrate();
  EXPECT_FALSE(drive().isThere());
  const Block block{0x00, 0, 0, 0, 0, 0};
  EXPECT_TRUE(drive().execute(block, {}, {}).gone);
  EXPECT_FALSE(drive().mediaLoaded());
}

TEST_F(FaultInjection, ALoadedDiscIsBecomingReadyForAWhile) {
  script("load: not ready 3600000 ms");
  EXPECT_EQ(testReady(), kGood) << "it was loaded before";
  ASSERT_EQ(eject(), kGood);
  EXPECT_EQ(testReady(), kTrayOpen);
  ASSERT_EQ(load(), kGood);
  EXPECT_EQ(testReady(), kMediumMayHaveChanged);
  EXPECT_EQ(testReady(), kBecomingReady);
  EXPECT_EQ(discInformation().sense, kBecomingReady);
  EXPECT_EQ(ask({0x12, 0, 0, 0, 36, 0}).sense, kGood) << "INQUIRY needs no disc";
}

TEST_F(FaultInjection, ThenItIsReady) {
  script("load: not ready 50 ms");
  ASSERT_EQ(eject(), kGood);
  ASSERT_EQ(load(), kGood);
  EXPECT_EQ(testReady(), kMediumMayHaveChanged);
  Sense sense = kBecomingReady;
  while (sense == kBecomingReady) sense = testReady();
  EXPECT_EQ(sense, kGood);
}

TEST_F(FaultInjection, ADriveCanStayBusyWithADiscForEver) {
  ASSERT_EQ(eject(), kGood);
  script("load: never ready");
  EXPECT_EQ(testReady(), kTrayOpen);
  std::string error;
  ASSERT_TRUE(drive().insertDisc(&error)) << error;
  EXPECT_EQ(testReady(), kMediumMayHaveChanged);
  EXPECT_EQ(testReady(), kBecomingReady);
  ASSERT_EQ(eject(), kGood);
  EXPECT_EQ(testReady(), kTrayOpen);
}

TEST_F(FaultInjection, SomeDrivesTellOfANewSessionOnlyWhenTheDiscIsLoadedAnew) {
  writeSession(300, 1);
  script("after close: stale");
  ASSERT_EQ(sessions(), 2U);
  const auto end = track(1, 0xFF).start;
  writeSession(300, 2);
  EXPECT_EQ(sessions(), 2U);
  EXPECT_EQ(track(1, 0xFF).start, end);
  EXPECT_EQ(inspect().sessions.size(), 2U) << "on the disc it is";
  ASSERT_EQ(eject(), kGood);
  ASSERT_EQ(load(), kGood);
  EXPECT_EQ(testReady(), kMediumMayHaveChanged);
  EXPECT_EQ(sessions(), 3U);
  EXPECT_GT(track(1, 0xFF).start, end);
}

TEST_F(FaultInjection, ExclusiveAccessIsRefused) {
  EXPECT_FALSE(drive().refusesExclusiveAccess());
  script("exclusive: refused");
  EXPECT_TRUE(drive().refusesExclusiveAccess());
}

TEST_F(FaultInjection, TheDataTakesItsTime) {
  script("pace: 4000 KB/s");
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(write(0, patternBytes(100 * kSectorBytes, 1)), kGood);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(51));
}

TEST_F(FaultInjection, AScriptThatIsNotUnderstoodKeepsTheDriveClosed) {
  script("on write: break");
  std::string error;
  EXPECT_FALSE(VirtualDrive::open(disc(), &error).has_value());
  EXPECT_EQ(error, "“" + (disc() / "faults").string() + "”, line 1: “break” cannot happen here.");
}

}  // namespace
}  // namespace kelvane::virtualdrive
