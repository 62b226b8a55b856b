// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "recording/scripted_transport.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
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

constexpr int32_t kStarts[] = {0, 11702, 25000, 40000};

// A CD-R with three sessions of a track each, and the open track behind them.
class DriveWithSessions : public ::testing::Test {
 protected:
  DriveWithSessions() {
    transport_->silence = ETIMEDOUT;
    answerForState();
  }

  void answerForState(uint8_t sessions = 4) {
    std::vector<uint8_t> configuration(8);
    configuration[3] = 4;
    configuration[7] = 0x09;
    transport_->answerGood();               // TEST UNIT READY
    transport_->answerGood(configuration);  // GET CONFIGURATION
    answerForDisc(sessions);
    answerForTrack(sessions);
  }

  void answerForDisc(uint8_t sessions = 4) {
    std::vector<uint8_t> reply(34);
    reply[2] = 1;  // Open, the last session empty.
    reply[3] = 1;
    reply[4] = sessions;
    reply[5] = sessions;
    reply[6] = sessions;
    transport_->answerGood(reply);
  }

  void answerForTrack(uint8_t number) {
    std::vector<uint8_t> reply(36);
    reply[2] = number;
    reply[3] = number;
    reply[7] = 1;  // The next writable address is valid.
    for (const size_t field : {size_t{8}, size_t{12}}) {
      for (size_t byte = 0; byte < 4; ++byte) {
        reply[field + byte] = static_cast<uint8_t>(kStarts[number - 1] >> (24 - 8 * byte));
      }
    }
    transport_->answerGood(reply);
  }

  void answerForTracks() {
    answerForDisc();
    for (uint8_t number = 1; number <= 4; ++number) answerForTrack(number);
  }

  void answerForSector(std::string_view content) {
    std::vector<uint8_t> sector(2048);
    std::copy(content.begin(), content.end(), sector.begin() + 1);
    transport_->answerGood(sector);
  }

  /// Of the first tracks on the disc, as the drive tells now; empty where it does not say.
  std::vector<std::optional<int64_t>> starts() {
    const DRDeviceStatus status = drive_.status();
    std::vector<std::optional<int64_t>> found;
    if (!status.DRDeviceMediaInfoKey) return found;
    for (const DRTrackReference track : status.DRDeviceMediaInfoKey->DRDeviceTrackRefsKey) {
      found.push_back(
          status.DRDeviceMediaInfoKey->DRDeviceTrackInfoKey.at(track).DRTrackStartAddressKey);
    }
    return found;
  }

  void readOnce() {
    ASSERT_TRUE(drive_.mediaState().present);
    answerForTracks();
    answerForSector("CD001");
    ASSERT_THAT(starts(), ElementsAre(0, 11702, 25000, 40000));
  }

  ScriptedTransport* transport_ = new ScriptedTransport;
  Drive drive_{{}, std::unique_ptr<mmc::Transport>(transport_)};
};

TEST_F(DriveWithSessions, HasThoseThatItHadWhereItsLastOneIsNotReadInTime) {
  readOnce();
  answerForTracks();
  transport_->answerUnreachable(ETIMEDOUT);
  answerForSector("CD001");
  EXPECT_THAT(starts(), ElementsAre(0, 11702, 25000, 40000)) << "the next one would lack its files";
}

TEST_F(DriveWithSessions, HasThoseThatItHadWhereNothingCanBeAsked) {
  readOnce();
  EXPECT_THAT(starts(), ElementsAre(0, 11702, 25000, 40000));
  drive_.leaveAlone();
  EXPECT_THAT(starts(), ElementsAre(0, 11702, 25000, 40000));
}

TEST_F(DriveWithSessions, LeavesOutALastOneThatHoldsNothing) {
  readOnce();
  answerForTracks();
  answerForSector("");
  answerForSector("CD001");
  EXPECT_THAT(starts(), ElementsAre(0, 11702, 40000));
}

TEST_F(DriveWithSessions, DoesNotSayWhichWhereItIsNotReadInTimeTheFirstTime) {
  ASSERT_TRUE(drive_.mediaState().present);
  answerForTracks();
  transport_->answerUnreachable(ETIMEDOUT);
  answerForSector("CD001");
  EXPECT_THAT(starts(), IsEmpty());
}

TEST_F(DriveWithSessions, IsWorthAnotherQuestionUntilItHasAnswered) {
  ASSERT_TRUE(drive_.mediaState().present);
  EXPECT_FALSE(drive_.isWorthAnotherQuestion()) << "nobody has asked";
  EXPECT_THAT(starts(), IsEmpty());
  EXPECT_TRUE(drive_.isWorthAnotherQuestion());
  answerForTracks();
  answerForSector("CD001");
  EXPECT_THAT(starts(), ElementsAre(0, 11702, 25000, 40000));
  EXPECT_FALSE(drive_.isWorthAnotherQuestion());
}

TEST_F(DriveWithSessions, IsNotWorthAnotherQuestionWhereItHasAnsweredBefore) {
  readOnce();
  EXPECT_THAT(starts(), ElementsAre(0, 11702, 25000, 40000));
  EXPECT_FALSE(drive_.isWorthAnotherQuestion());
}

TEST_F(DriveWithSessions, IsWorthAnotherQuestionWhereItsStateWasNotAnswered) {
  ASSERT_TRUE(drive_.mediaState().present);
  EXPECT_FALSE(drive_.isWorthAnotherQuestion());
  EXPECT_TRUE(drive_.mediaState().present);
  EXPECT_TRUE(drive_.isWorthAnotherQuestion());
  answerForState();
  EXPECT_TRUE(drive_.mediaState().present);
  EXPECT_FALSE(drive_.isWorthAnotherQuestion());
}

TEST_F(DriveWithSessions, IsNotWorthAnotherQuestionWhereItIsClosedToThisUser) {
  ASSERT_TRUE(drive_.mediaState().present);
  transport_->silence = EACCES;
  EXPECT_TRUE(drive_.mediaState().present);
  EXPECT_THAT(starts(), IsEmpty());
  EXPECT_FALSE(drive_.isWorthAnotherQuestion());
}

TEST_F(DriveWithSessions, IsNotWorthAnotherQuestionWithoutItsDisc) {
  ASSERT_TRUE(drive_.mediaState().present);
  EXPECT_THAT(starts(), IsEmpty());
  transport_->answerCheckCondition(kNoDisc);
  EXPECT_FALSE(drive_.mediaState().present);
  EXPECT_FALSE(drive_.isWorthAnotherQuestion());
}

TEST_F(DriveWithSessions, DoesNotSayWhichWhileItBecomesReady) {
  readOnce();
  answerForTracks();
  transport_->answerCheckCondition(kBecomingReady);
  answerForSector("CD001");
  EXPECT_THAT(starts(), IsEmpty());
}

TEST_F(DriveWithSessions, DoesNotGiveThoseOfAnotherDisc) {
  readOnce();
  answerForState(2);
  EXPECT_TRUE(drive_.mediaState().present);
  EXPECT_THAT(starts(), IsEmpty());
}

TEST_F(DriveWithSessions, DoesNotGiveThoseFromBeforeARecording) {
  readOnce();
  drive_.leaveAlone();
  drive_.askAgain();
  EXPECT_THAT(starts(), IsEmpty());
}

TEST_F(DriveWithSessions, DoesNotGiveThoseFromBeforeItsTrayWasOpened) {
  readOnce();
  transport_->answerGood();  // PREVENT ALLOW MEDIUM REMOVAL
  transport_->answerGood();  // START STOP UNIT
  ASSERT_TRUE(drive_.openTray());
  EXPECT_THAT(starts(), IsEmpty());
}

}  // namespace
}  // namespace kelvane
