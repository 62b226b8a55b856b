// SPDX-License-Identifier: GPL-2.0-or-later
//
// The parsers of what drives answer: right answers, answers cut off anywhere, and nonsense.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/recording/mmc/configuration.h"
#include "platform/recording/mmc/disc_information.h"
#include "platform/recording/mmc/event_status.h"
#include "platform/recording/mmc/format_capacities.h"
#include "platform/recording/mmc/inquiry.h"
#include "platform/recording/mmc/sense_data.h"
#include "platform/recording/mmc/track_information.h"

namespace kelvane::mmc {
namespace {

using ::testing::ElementsAre;
using Bytes = std::vector<uint8_t>;

// A profile list with CD-R (current), CD-RW and CD-ROM, then "CD track at once", current.
const Bytes kConfiguration{0, 0,    0,    28, 0, 0,    0,    0x09,  // header
                           0, 0,    0x03, 12, 0, 0x09, 1,    0,    0,    0x0A, 0,    0,
                           0, 0x08, 0,    0,  0, 0x2D, 0x09, 4,    0x46, 0,    0x3F, 0xFF};

// Two complete sessions and an open one; the open track is number 3.
Bytes appendableDisc() {
  Bytes reply(34, 0);
  reply[1] = 32;
  reply[2] = 0x01;
  reply[3] = 1;
  reply[4] = 3;
  reply[5] = 3;
  reply[6] = 3;
  return reply;
}

Bytes openTrack() {
  Bytes reply(36, 0);
  reply[1] = 34;
  reply[2] = 3;
  reply[3] = 3;
  reply[6] = 0x41;
  reply[7] = 0x01;
  reply[10] = 0x2D;  // starts at 11702
  reply[11] = 0xB6;
  reply[14] = 0x2D;  // and is written from 11702
  reply[15] = 0xB6;
  reply[18] = 0x10;  // 4096 blocks free
  reply[26] = 0x10;
  return reply;
}

TEST(ConfigurationReply, GivesTheCurrentProfileAndAllThatTheDriveKnows) {
  const auto configuration = parseConfiguration(kConfiguration);
  ASSERT_TRUE(configuration);
  EXPECT_EQ(configuration->currentProfile, Profile::CdR);
  EXPECT_THAT(configuration->profiles, ElementsAre(Profile::CdR, Profile::CdRw, Profile::CdRom));
  EXPECT_TRUE(configuration->supports(Profile::CdRw));
  EXPECT_FALSE(configuration->supports(Profile::DvdR));
  EXPECT_TRUE(configuration->hasCurrent(0x2D));
  EXPECT_FALSE(configuration->hasCurrent(0x2E));
}

TEST(ConfigurationReply, CutOffAnywhereGivesWhatStandsBeforeTheCut) {
  for (size_t length = 0; length < kConfiguration.size(); ++length) {
    const auto reply = std::span(kConfiguration).first(length);
    const auto configuration = parseConfiguration(reply);
    EXPECT_EQ(configuration.has_value(), length >= 8) << length;
    if (configuration) {
      EXPECT_EQ(configuration->profiles.size(),
                length < 12 ? 0 : std::min<size_t>((length - 12) / 4, 3))
          << length;
    }
  }
}

TEST(ConfigurationReply, BelievesNeitherALengthNorAFeatureThatReachesBeyondTheReply) {
  Bytes reply = kConfiguration;
  reply[0] = reply[1] = reply[2] = reply[3] = 0xFF;
  reply[11] = 0xFF;
  const auto configuration = parseConfiguration(reply);
  ASSERT_TRUE(configuration);
  EXPECT_EQ(configuration->features.size(), 1U);
  EXPECT_LE(configuration->profiles.size(), reply.size() / 4);
}

TEST(ConfigurationReply, IgnoresWhatFollowsTheAnnouncedLength) {
  Bytes reply = kConfiguration;
  reply[3] = 4;  // the header alone
  EXPECT_TRUE(parseConfiguration(reply)->features.empty());
  reply[3] = 0;
  EXPECT_FALSE(parseConfiguration(reply));
}

TEST(DiscInformationReply, TellsAnOpenDiscAndItsOpenTrack) {
  const auto disc = parseDiscInformation(appendableDisc());
  ASSERT_TRUE(disc);
  EXPECT_EQ(disc->status, DiscStatus::Appendable);
  EXPECT_EQ(disc->sessions, 3);
  EXPECT_EQ(disc->completeSessions(), 2);
  EXPECT_EQ(disc->lastTrackInLastSession, 3);
  EXPECT_TRUE(disc->canTakeSession());
  EXPECT_FALSE(disc->erasable);
}

TEST(DiscInformationReply, ASessionThatWasBegunAndNotFinishedBarsFurtherSessions) {
  Bytes reply = appendableDisc();
  reply[2] = 0x05;  // appendable, last session incomplete
  EXPECT_FALSE(parseDiscInformation(reply)->canTakeSession());
  EXPECT_TRUE(parseDiscInformation(reply)->isOpen());
}

TEST(DiscInformationReply, AClosedDiscIsNotOpenAndCountsAllItsSessions) {
  Bytes reply = appendableDisc();
  reply[2] = 0x1E;  // erasable, last session complete, disc complete
  const auto disc = parseDiscInformation(reply);
  EXPECT_FALSE(disc->isOpen());
  EXPECT_TRUE(disc->erasable);
  EXPECT_EQ(disc->completeSessions(), 3);
}

TEST(DiscInformationReply, HighBytesOfTrackAndSessionNumbersCount) {
  Bytes reply = appendableDisc();
  reply[9] = 1;
  reply[11] = 2;
  const auto disc = parseDiscInformation(reply);
  EXPECT_EQ(disc->sessions, 0x103);
  EXPECT_EQ(disc->lastTrackInLastSession, 0x203);
}

TEST(DiscInformationReply, CutOffBeforeItsTrackNumbersIsNone) {
  const Bytes reply = appendableDisc();
  for (size_t length = 0; length <= reply.size(); ++length) {
    EXPECT_EQ(parseDiscInformation(std::span(reply).first(length)).has_value(), length >= 12);
  }
}

TEST(TrackInformationReply, GivesTheNextWritableAddressOfTheOpenTrack) {
  const auto track = parseTrackInformation(openTrack());
  ASSERT_TRUE(track);
  EXPECT_EQ(track->track, 3);
  EXPECT_EQ(track->session, 3);
  EXPECT_EQ(track->start, 11702);
  EXPECT_EQ(track->nextWritableAddress, 11702);
  EXPECT_EQ(track->freeBlocks, 4096U);
  EXPECT_TRUE(track->blank);
}

TEST(TrackInformationReply, HasNoNextWritableAddressUnlessTheDriveVouchesForIt) {
  Bytes reply = openTrack();
  reply[7] = 0;
  EXPECT_FALSE(parseTrackInformation(reply)->nextWritableAddress);
}

TEST(TrackInformationReply, AddressesBeforeTheFirstBlockAreNegative) {
  Bytes reply = openTrack();
  reply[8] = reply[9] = reply[10] = 0xFF;
  reply[11] = 0x6A;
  EXPECT_EQ(parseTrackInformation(reply)->start, -150);
}

TEST(TrackInformationReply, CutOffBeforeTheEndOfTheSizeIsNone) {
  const Bytes reply = openTrack();
  for (size_t length = 0; length <= reply.size(); ++length) {
    EXPECT_EQ(parseTrackInformation(std::span(reply).first(length)).has_value(), length >= 28);
  }
}

// A DVD+RW that holds 208 blocks, and can be formatted to 2295104; for one of another kind the
// largest that covers all of it, which the capacity of a session that grows does not.
TEST(FormatCapacitiesReply, GivesTheMostThatTheWholeMediumCanBeFormattedTo) {
  const Bytes plusRw{0, 0, 0, 16, 0, 0, 0, 208, 2, 0, 8, 0, 0, 0x23, 5, 0x40, 0x26 << 2, 0, 0, 0};
  EXPECT_EQ(parseFormatCapacity(plusRw), 0x230540U);
  const Bytes minusRw{0, 0, 0, 24, 0, 0, 0, 9, 2, 0, 8,         0, 0, 0,
                      1, 0, 0, 0,  8, 0, 0, 0, 2, 0, 0x13 << 2, 0, 0, 16};
  EXPECT_EQ(parseFormatCapacity(minusRw), 0x100U);
}

TEST(FormatCapacitiesReply, WithoutACapacityOfTheWholeMediumOrCutOffIsNone) {
  EXPECT_FALSE(parseFormatCapacity(Bytes{0, 0, 0, 8, 0, 0, 0, 208, 2, 0, 8, 0}));
  EXPECT_FALSE(parseFormatCapacity(Bytes{0, 0, 0, 16, 0, 0, 0, 208, 2, 0, 8, 0, 0, 0, 5, 0}));
  EXPECT_FALSE(parseFormatCapacity(Bytes{}));
}

TEST(MediaEventReply, TellsTheEventAndTheTray) {
  const Bytes reply{0, 6, 0x04, 0x10, 0x02, 0x02, 0, 0};
  const auto status = parseMediaEvent(reply);
  ASSERT_TRUE(status);
  EXPECT_EQ(status->event, MediaEvent::NewMedia);
  EXPECT_TRUE(status->mediaPresent);
  EXPECT_FALSE(status->trayOpen);
}

TEST(MediaEventReply, OfAnotherClassOrCutOffIsNone) {
  EXPECT_FALSE(parseMediaEvent(Bytes{0, 6, 0x80, 0x10, 0x02, 0x02, 0, 0}));
  EXPECT_FALSE(parseMediaEvent(Bytes{0, 6, 0x02, 0x10, 0x02, 0x02, 0, 0}));
  EXPECT_FALSE(parseMediaEvent(Bytes{0, 6, 0x04, 0x10, 0x02}));
  EXPECT_FALSE(parseMediaEvent(Bytes{}));
}

TEST(InquiryReply, GivesTheNamesWithoutTheirPadding) {
  Bytes reply(36, ' ');
  const std::string text = "MAKER   A BURNER        1.02";
  std::copy(text.begin(), text.end(), reply.begin() + 8);
  const auto inquiry = parseInquiry(reply);
  ASSERT_TRUE(inquiry);
  EXPECT_EQ(inquiry->vendor, "MAKER");
  EXPECT_EQ(inquiry->product, "A BURNER");
  EXPECT_EQ(inquiry->revision, "1.02");
}

TEST(InquiryReply, ControlCharactersAndForeignBytesBecomeBlanks) {
  Bytes reply(36, 0);
  reply[16] = 'A';
  reply[17] = '\n';
  reply[18] = 0xC3;
  reply[19] = 'B';
  EXPECT_EQ(parseInquiry(reply)->product, "A  B");
  EXPECT_EQ(parseInquiry(reply)->vendor, "");
}

TEST(InquiryReply, CutOffBeforeTheProductIsNone) {
  EXPECT_FALSE(parseInquiry(Bytes(16, 'x')));
  EXPECT_TRUE(parseInquiry(Bytes(17, 'x')));
}

TEST(SenseData, IsReadInBothFormats) {
  Bytes fixed(18, 0);
  fixed[0] = 0x70;
  fixed[2] = 0x02;
  fixed[12] = 0x3A;
  fixed[13] = 0x01;
  EXPECT_EQ(parseSenseData(fixed), (Sense{0x02, 0x3A, 0x01}));
  EXPECT_EQ(parseSenseData(Bytes{0x72, 0x05, 0x24, 0x00}), (Sense{0x05, 0x24, 0x00}));
  EXPECT_EQ(parseSenseData(Bytes{0x00, 0x05, 0x24, 0x00}), Sense{});
  EXPECT_EQ(parseSenseData(Bytes{0x70, 0x00, 0x06}), (Sense{0x06, 0, 0}));
  EXPECT_EQ(parseSenseData(Bytes{}), Sense{});
}

// Run with the sanitizers this shows that no parser reads beyond its reply.
TEST(EveryReply, OfRandomBytesIsReadWithinItsBounds) {
  std::mt19937 random(20240229);
  for (int round = 0; round < 20000; ++round) {
    Bytes reply(random() % 80);
    for (uint8_t& byte : reply) byte = static_cast<uint8_t>(random());
    if (const auto configuration = parseConfiguration(reply)) {
      EXPECT_LE(configuration->features.size(), reply.size() / 4);
      EXPECT_LE(configuration->profiles.size(), reply.size() / 4);
    }
    EXPECT_EQ(parseDiscInformation(reply).has_value(), reply.size() >= 12);
    EXPECT_EQ(parseTrackInformation(reply).has_value(), reply.size() >= 28);
    EXPECT_EQ(parseInquiry(reply).has_value(), reply.size() > 16);
    static_cast<void>(parseMediaEvent(reply));
    static_cast<void>(parseFormatCapacity(reply));
    EXPECT_LE(parseSenseData(reply).key, 0x0F);
  }
}

}  // namespace
}  // namespace kelvane::mmc
