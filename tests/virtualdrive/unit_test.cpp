// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

const Block kTestUnitReady{0x00, 0, 0, 0, 0, 0};
const Block kLoad{0x1B, 0, 0, 0, 3, 0};
const Block kEject{0x1B, 0, 0, 0, 2, 0};
const Block kPrevent{0x1E, 0, 0, 0, 1, 0};
const Block kAllow{0x1E, 0, 0, 0, 0, 0};

class Unit : public DriveTest {
 protected:
  Reply mediaEvent() { return ask({0x4A, 1, 0, 0, 0x10, 0, 0, 0, 8, 0}); }
};

TEST_F(Unit, EjectedDriveHasNoMediumAndSaysThatTheTrayIsOpen) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(send(kEject), kGood);
  EXPECT_FALSE(drive().mediaLoaded());
  EXPECT_EQ(send(kTestUnitReady), kTrayOpen);
  EXPECT_EQ(read(0, 1).sense, kTrayOpen);
  EXPECT_EQ(write(0, std::string(2048, 'x')), kTrayOpen);
  EXPECT_EQ(discInformation().sense, kTrayOpen);
  EXPECT_EQ(ask({0x12, 0, 0, 0, 96, 0}).sense, kGood) << "INQUIRY needs no medium";
}

TEST_F(Unit, LoadingTellsOfTheChangeOnce) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(send(kEject), kGood);
  EXPECT_EQ(send(kLoad), kGood);
  EXPECT_EQ(ask({0x46, 0, 0, 0, 0, 0, 0, 0, 8, 0}).sense, kGood) << "does not wait for it";
  EXPECT_EQ(send(kTestUnitReady), kMediumMayHaveChanged);
  EXPECT_EQ(send(kTestUnitReady), kGood);
}

TEST_F(Unit, RequestSenseTakesThePendingChange) {
  makeDisc(MediumKind::CdR);
  std::string error;
  ASSERT_TRUE(drive().ejectDisc(EjectManner::Button, &error)) << error;
  ASSERT_TRUE(drive().insertDisc(&error)) << error;
  const auto reply = ask({0x03, 0, 0, 0, 18, 0});
  ASSERT_EQ(reply.data.size(), 18U);
  EXPECT_EQ((Sense{reply.data[2], reply.data[12], reply.data[13]}), kMediumMayHaveChanged);
  EXPECT_EQ(send(kTestUnitReady), kGood);
}

TEST_F(Unit, LockedTrayStaysClosedForProgramsAndTheButtonButNotForTheNeedle) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(send(kPrevent), kGood);
  EXPECT_EQ(send(kEject), kRemovalPrevented);
  std::string error;
  EXPECT_FALSE(drive().ejectDisc(EjectManner::Button, &error));
  EXPECT_NE(error, "");
  EXPECT_EQ(mediaEvent().u8(4), 1U) << "the wish to eject is told";
  EXPECT_TRUE(drive().mediaLoaded());
  EXPECT_TRUE(drive().ejectDisc(EjectManner::Needle, &error));
  EXPECT_FALSE(drive().mediaLoaded());
  EXPECT_TRUE(drive().insertDisc(&error));
  EXPECT_EQ(send(kTestUnitReady), kMediumMayHaveChanged);
  EXPECT_EQ(send(kEject), kGood) << "the needle took the lock away";
}

TEST_F(Unit, AllowedRemovalEjects) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(send(kPrevent), kGood);
  EXPECT_EQ(send(kAllow), kGood);
  EXPECT_EQ(send(kEject), kGood);
}

TEST_F(Unit, StartAndStopWithoutLoadOrEjectMoveNothing) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(send({0x1B, 0, 0, 0, 0, 0}), kGood);
  EXPECT_EQ(send({0x1B, 1, 0, 0, 1, 0}), kGood);
  EXPECT_TRUE(drive().mediaLoaded());
}

TEST_F(Unit, MediaEventsAreToldOnceWithTheStateOfTheTray) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(mediaEvent().u8(4), 2U) << "new medium";
  const auto quiet = mediaEvent();
  EXPECT_EQ(quiet.u16(0), 6U);
  EXPECT_EQ(quiet.u8(2), 4U);
  EXPECT_EQ(quiet.u8(4), 0U);
  EXPECT_EQ(quiet.u8(5), 2U) << "medium present";
  send(kEject);
  EXPECT_EQ(mediaEvent().u8(4), 3U) << "medium removed";
  EXPECT_EQ(mediaEvent().u8(5), 1U) << "tray open";
}

TEST_F(Unit, EventsAreForPollingAndForKnownClassesOnly) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(ask({0x4A, 0, 0, 0, 0x10, 0, 0, 0, 8, 0}).sense, kInvalidFieldInCommand);
  const auto none = ask({0x4A, 1, 0, 0, 0x80, 0, 0, 0, 8, 0});
  EXPECT_EQ(none.data.size(), 4U);
  EXPECT_EQ(none.u8(2), 0x80U);
}

}  // namespace
}  // namespace kelvane::virtualdrive
