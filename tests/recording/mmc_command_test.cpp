// SPDX-License-Identifier: GPL-2.0-or-later
//
// What is sent to drives, and what becomes of refusals.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/temporary_folder.h"
#include "platform/recording/mmc/command.h"
#include "platform/recording/mmc/disc_information.h"
#include "platform/recording/mmc/sg_io_transport.h"
#include "platform/recording/mmc/track_information.h"
#include "platform/recording/mmc/tray.h"
#include "platform/recording/mmc/unit_ready.h"
#include "recording/scripted_transport.h"

namespace kelvane::mmc {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::SizeIs;

constexpr Sense kMediumChanged{0x6, 0x28, 0x00};
constexpr Sense kReset{0x6, 0x29, 0x00};

TEST(Asking, IsRepeatedWhileTheDriveTellsOfSomethingElse) {
  testing::ScriptedTransport drive;
  drive.answerCheckCondition(kMediumChanged);
  drive.answerCheckCondition(kReset);
  drive.answerGood();
  EXPECT_EQ(testUnitReady(drive), Readiness::Ready);
  EXPECT_THAT(drive.commands, SizeIs(3));
}

TEST(Asking, GivesUpOnADriveThatNeverStopsTellingOfSomethingElse) {
  testing::ScriptedTransport drive;
  for (int attention = 0; attention < 50; ++attention) drive.answerCheckCondition(kReset);
  EXPECT_EQ(testUnitReady(drive), Readiness::Unusable);
  EXPECT_LT(drive.commands.size(), 10U);
}

TEST(Asking, IsNotRepeatedAfterARefusal) {
  testing::ScriptedTransport drive;
  drive.answerCheckCondition({0x5, 0x24, 0x00});
  EXPECT_FALSE(readDiscInformation(drive));
  EXPECT_THAT(drive.commands, SizeIs(1));
}

TEST(Readiness, FollowsFromTheSense) {
  const auto readiness = [](Sense sense) {
    return readinessFrom({Status::CheckCondition, sense, 0, 0});
  };
  EXPECT_EQ(readinessFrom({Status::Good, {}, 0, 0}), Readiness::Ready);
  EXPECT_EQ(readinessFrom({Status::Unreachable, {}, 0, ENODEV}), Readiness::Unreachable);
  EXPECT_EQ(readiness({0x2, 0x3A, 0x00}), Readiness::NoDisc);
  EXPECT_EQ(readiness({0x2, 0x3A, 0x02}), Readiness::NoDisc);
  EXPECT_EQ(readiness({0x2, 0x04, 0x01}), Readiness::BecomingReady);
  EXPECT_EQ(readiness({0x2, 0x04, 0x08}), Readiness::BecomingReady);
  EXPECT_EQ(readiness({0x2, 0x04, 0x03}), Readiness::Unusable);
  EXPECT_EQ(readiness({0x2, 0x30, 0x00}), Readiness::Unusable);
}

TEST(TrackInformationCommand, AsksForOneTrackByItsNumber) {
  testing::ScriptedTransport drive;
  static_cast<void>(readTrackInformation(drive, 0x0102));
  EXPECT_THAT(drive.commands, ElementsAre(ElementsAre(0x52, 1, 0, 0, 1, 2, 0, 0, 36, 0)));
}

TEST(TrayCommands, OpenCloseAndUnlock) {
  testing::ScriptedTransport drive;
  static_cast<void>(openTray(drive));
  static_cast<void>(closeTray(drive));
  static_cast<void>(allowMediumRemoval(drive));
  EXPECT_THAT(drive.commands,
              ElementsAre(ElementsAre(0x1B, 0, 0, 0, 2, 0), ElementsAre(0x1B, 0, 0, 0, 3, 0),
                          ElementsAre(0x1E, 0, 0, 0, 0, 0)));
  // The kernel has ordinary users open the drive for writing to unlock it.
  EXPECT_THAT(drive.written, ElementsAre(ElementsAre(0x1E, 0, 0, 0, 0, 0)));
}

TEST(TrayCommands, AreSentAgainWhereTheDriveFirstTellsOfSomethingElse) {
  testing::ScriptedTransport drive;
  drive.answerCheckCondition({0x6, 0x28, 0x00});
  drive.answerGood();
  EXPECT_TRUE(allowMediumRemoval(drive).isGood());
  EXPECT_EQ(drive.written.size(), 2u);
}

TEST(SgIo, WithoutADeviceIsUnreachableAndSaysWhy) {
  SgIoTransport transport("/dev/there-is-no-such-drive");
  const std::vector<uint8_t> command(6, 0);
  const Answer answer = transport.read(command, {}, kQuestionTimeLimit);
  EXPECT_EQ(answer.status, Status::Unreachable);
  EXPECT_EQ(answer.errorNumber, ENOENT);
}

TEST(SgIo, OnSomethingThatIsNoDriveIsUnreachable) {
  SgIoTransport transport("/dev/null");
  const std::vector<uint8_t> command(6, 0);
  std::vector<uint8_t> data(36, 0);
  EXPECT_EQ(transport.read(command, data, kQuestionTimeLimit).errorNumber, ENOTTY);
  EXPECT_EQ(transport.write(command, data, kQuestionTimeLimit).status, Status::Unreachable);
  EXPECT_THAT(data, Each(0));
}

TEST(SgIo, RefusesCommandBlocksOfImpossibleLength) {
  SgIoTransport transport("/dev/null");
  EXPECT_EQ(transport.read({}, {}, kQuestionTimeLimit).errorNumber, EINVAL);
  const std::vector<uint8_t> tooLong(17, 0);
  EXPECT_EQ(transport.read(tooLong, {}, kQuestionTimeLimit).errorNumber, EINVAL);
}

}  // namespace
}  // namespace kelvane::mmc
