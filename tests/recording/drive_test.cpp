// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

#include "recording/scripted_transport.h"

namespace kelvane {
namespace {

using testing::ScriptedTransport;

constexpr mmc::Sense kBecomingReady{0x02, 0x04, 0x01};
constexpr mmc::Sense kNoDisc{0x02, 0x3A, 0x01};
constexpr mmc::Sense kMediumMayHaveChanged{0x06, 0x28, 0x00};
constexpr mmc::Sense kReset{0x06, 0x29, 0x00};

// A CD-R that has just been inserted.
class DriveWithDisc {
 protected:
  DriveWithDisc() { answerForCdR(); }

  /// Of a disc that the drive knows no more of than its kind.
  void answerForCdR() { answerForDisc(0x09); }

  void answerForDisc(uint8_t profile) {
    std::vector<uint8_t> configuration(8);
    configuration[3] = 4;
    configuration[7] = profile;
    transport_->answerGood();               // TEST UNIT READY
    transport_->answerGood(configuration);  // GET CONFIGURATION
    transport_->answerCheckCondition({0x05, 0x20, 0x00});
  }

  ScriptedTransport* transport_ = new ScriptedTransport;
  Drive drive_{{}, std::unique_ptr<mmc::Transport>(transport_)};
};

// Every question after that is in vain.
class DriveThatFallsSilent : public DriveWithDisc, public ::testing::TestWithParam<int> {
 protected:
  DriveThatFallsSilent() { transport_->silence = GetParam(); }
};

using DriveThatCannotBeAsked = DriveThatFallsSilent;

TEST_P(DriveThatCannotBeAsked, HasTheDiscThatItHadBefore) {
  const MediaState before = drive_.mediaState();
  EXPECT_TRUE(before.present);
  EXPECT_EQ(drive_.mediaState(), before);
}

INSTANTIATE_TEST_SUITE_P(Reasons, DriveThatCannotBeAsked,
                         ::testing::Values(EMFILE, ENFILE, EACCES, EPERM, EBUSY, EIO, ETIMEDOUT));

using DriveThatIsGone = DriveThatFallsSilent;

TEST_P(DriveThatIsGone, HasNoDisc) {
  EXPECT_TRUE(drive_.mediaState().present);
  EXPECT_FALSE(drive_.mediaState().present);
}

INSTANTIATE_TEST_SUITE_P(Reasons, DriveThatIsGone,
                         ::testing::Values(ENOENT, ENXIO, ENODEV, ENOMEDIUM));

class DriveThatBecomesReady : public DriveWithDisc, public ::testing::Test {};

TEST_F(DriveThatBecomesReady, AfterAResetHasTheDiscThatItHadBefore) {
  const MediaState before = drive_.mediaState();
  ASSERT_TRUE(before.present);
  transport_->answerCheckCondition(kReset);
  for (int look = 0; look < 2; ++look) {
    transport_->answerCheckCondition(kBecomingReady);
    const MediaState meanwhile = drive_.mediaState();
    EXPECT_TRUE(meanwhile.present) << "the changes of its volume would be thrown away";
    EXPECT_TRUE(meanwhile.transitioning);
    EXPECT_EQ(meanwhile.profile, before.profile);
  }
  answerForCdR();
  EXPECT_EQ(drive_.mediaState(), before);
}

TEST_F(DriveThatBecomesReady, AndHasNoDiscIsWithoutOneUntilItIsReadyAgain) {
  ASSERT_TRUE(drive_.mediaState().present);
  transport_->answerCheckCondition(kBecomingReady);
  transport_->answerCheckCondition(kNoDisc);
  EXPECT_TRUE(drive_.mediaState().present);
  EXPECT_EQ(drive_.mediaState(), MediaState());
  transport_->answerCheckCondition(kBecomingReady);
  const MediaState loading = drive_.mediaState();
  EXPECT_FALSE(loading.present);
  EXPECT_TRUE(loading.transitioning);
  answerForCdR();
  EXPECT_TRUE(drive_.mediaState().present);
}

TEST_F(DriveThatBecomesReady, WithAnotherDiscIsAskedAnewForAllOfIt) {
  ASSERT_EQ(drive_.mediaState().profile, mmc::Profile::CdR);
  transport_->answerCheckCondition(kBecomingReady);
  EXPECT_TRUE(drive_.mediaState().transitioning);
  transport_->answerCheckCondition(kMediumMayHaveChanged);
  answerForDisc(0x0A);
  const MediaState now = drive_.mediaState();
  EXPECT_EQ(now.profile, mmc::Profile::CdRw);
  EXPECT_FALSE(now.transitioning);
}

TEST_F(DriveThatBecomesReady, AfterItsTrayWasOpenedFromHereHasNoDiscYet) {
  ASSERT_TRUE(drive_.mediaState().present);
  transport_->answerGood();  // PREVENT ALLOW MEDIUM REMOVAL
  transport_->answerGood();  // START STOP UNIT
  ASSERT_TRUE(drive_.openTray());
  transport_->answerCheckCondition(kBecomingReady);
  EXPECT_FALSE(drive_.mediaState().present);
}

TEST_F(DriveThatBecomesReady, AfterItHasToldOfItsOpenTrayHasNoDiscYet) {
  ASSERT_TRUE(drive_.mediaState().present);
  // Four bytes of header, the media class; then: removal, tray open.
  transport_->answerGood({0, 6, 4, 0x10, 3, 1, 0, 0});
  const auto event = drive_.mediaEvent();
  ASSERT_TRUE(event && event->trayOpen);
  transport_->answerCheckCondition(kBecomingReady);
  EXPECT_FALSE(drive_.mediaState().present);
}

}  // namespace
}  // namespace kelvane
