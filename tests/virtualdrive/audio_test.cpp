// SPDX-License-Identifier: GPL-2.0-or-later
#include <nlohmann/json.hpp>

#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

using Bytes = std::vector<std::uint8_t>;

class Audio : public DriveTest {
 protected:
  Sense setAudio(bool multiSession, std::uint8_t control = 0, std::uint8_t blockType = 0) {
    auto page = WriteParameters::standard().page;
    page[2] = 0x40 | static_cast<unsigned>(WriteParameters::Type::TrackAtOnce);
    page[3] = static_cast<std::uint8_t>((multiSession ? 0xC0U : 0U) | control);
    page[4] = blockType;
    return modeSelect(std::string(page.begin(), page.end()));
  }
  Sense writeAudio(Lba first, std::string_view data) {
    AnswerBytes block;
    block.u8(0x2A).u8(0).u32(static_cast<std::uint32_t>(first)).u8(0);
    block.u16(static_cast<unsigned>(data.size() / kAudioSectorBytes)).u8(0);
    return send({block.view().begin(), block.view().end()}, data);
  }
  /// Writes tracks of so many sectors each, whose seeds count up from `seed`, without closing the
  /// session.
  void writeAudioTracks(const std::vector<unsigned>& lengths, unsigned seed,
                        bool multiSession = true) {
    ASSERT_EQ(setAudio(multiSession), kGood);
    for (const auto sectors : lengths) {
      const auto data = patternBytes(sectors * kAudioSectorBytes, seed++);
      ASSERT_EQ(writeAudio(track(1, 0xFF).next, data), kGood);
      ASSERT_EQ(synchronize(), kGood);
    }
  }
  void writeDataTrack(unsigned sectors, unsigned seed) {
    ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
    ASSERT_EQ(write(track(1, 0xFF).next, patternBytes(sectors * kSectorBytes, seed)), kGood);
    ASSERT_EQ(synchronize(), kGood);
  }
  /// Data, then two audio tracks, in one session.
  void makeMixed() {
    makeDisc(MediumKind::CdR);
    writeDataTrack(400, 1);
    writeAudioTracks({500, 300}, 2);
    ASSERT_EQ(closeSession(), kGood);
  }
  /// Two audio tracks in the first session, data in the second.
  void makeExtra() {
    makeDisc(MediumKind::CdR);
    writeAudioTracks({500, 300}, 2);
    ASSERT_EQ(closeSession(), kGood);
    writeSession(400, 1);
  }
  Reply toc(std::uint8_t format, std::uint8_t number = 0) {
    return ask({0x43, 0, format, 0, 0, 0, number, 0x10, 0, 0});
  }
  /// The control nibbles of the table of contents, the lead-out's last.
  Bytes controls() {
    const auto reply = toc(0);
    Bytes nibbles;
    for (std::size_t at = 4; at < reply.data.size(); at += 8) {
      nibbles.push_back(reply.data[at + 1] & 0x0F);
    }
    return nibbles;
  }
  Bytes fullControls(unsigned session) {
    const auto reply = toc(2);
    Bytes nibbles;
    for (std::size_t at = 4; at + 11 <= reply.data.size(); at += 11) {
      const bool mode1 = (reply.u8(at + 1) & 0xF0) == 0x10;
      if (reply.u8(at) == session && mode1) nibbles.push_back(reply.data[at + 1] & 0x0F);
    }
    return nibbles;
  }
  Reply readCd(unsigned type, Lba first, unsigned count, unsigned parts) {
    AnswerBytes block;
    block.u8(0xBE).u8(type << 2).u32(static_cast<std::uint32_t>(first));
    block.u8(0).u16(count).u8(parts).u8(0).u8(0);
    return ask({block.view().begin(), block.view().end()}, 1 << 22);
  }
  Reply trackInformation(std::uint8_t number) {
    return ask({0x52, 1, 0, 0, 0, number, 0, 0, 36, 0});
  }
};

constexpr std::uint8_t kAudio = 0x0;
constexpr std::uint8_t kData = 0x4;

TEST_F(Audio, TableOfContentsTellsAudioFromData) {
  makeMixed();
  EXPECT_EQ(controls(), (Bytes{kData, kAudio, kAudio, kAudio}))
      << "the lead-out is of the last track's kind";
  EXPECT_EQ(fullControls(1), (Bytes{kData, kAudio, kAudio, kData, kAudio, kAudio}))
      << "first track, last track, lead-out, tracks";
  EXPECT_EQ(toc(1).u8(5), 0x14U) << "the last session's first track is data";
}

TEST_F(Audio, MusicDiscWithADataSessionSaysWhereThatBegins) {
  makeExtra();
  EXPECT_EQ(controls(), (Bytes{kAudio, kAudio, kData, kData}));
  EXPECT_EQ(fullControls(1), (Bytes{kAudio, kAudio, kAudio, kAudio, kAudio}));
  EXPECT_EQ(fullControls(2), (Bytes{kData, kData, kData, kData}));
  const auto last = toc(1);
  EXPECT_EQ(last.u8(3), 2U);
  EXPECT_EQ(last.u8(5), 0x14U);
  EXPECT_EQ(last.u8(6), 3U);
  EXPECT_EQ(last.i32(8), inspect().track(3).start);
  const auto disc = discInformation();
  EXPECT_EQ(disc.u8(2) & 0x03U, 1U) << "appendable";
  EXPECT_EQ(disc.u8(4), 3U) << "sessions";
}

TEST_F(Audio, DiscOfMusicAloneSaysSoInEveryPlace) {
  makeDisc(MediumKind::CdR);
  writeAudioTracks({300, 450}, 1, false);
  ASSERT_EQ(closeSession(), kGood);
  EXPECT_EQ(controls(), (Bytes{kAudio, kAudio, kAudio}));
  EXPECT_EQ(toc(1).u8(5), 0x10U);
  EXPECT_EQ(discInformation().u8(2), 0x0EU) << "closed for good";
  EXPECT_EQ(track(1, 2).start, 300 + 152) << "run-out and gap lie between";
}

TEST_F(Audio, TrackInformationTellsTheMode) {
  makeMixed();
  const auto data = trackInformation(1);
  EXPECT_EQ(data.u8(5) & 0x0FU, kData);
  EXPECT_EQ(data.u8(6) & 0x0FU, 1U);
  const auto audio = trackInformation(2);
  EXPECT_EQ(audio.u8(5) & 0x0FU, kAudio);
  EXPECT_EQ(audio.u8(6) & 0x0FU, 0x0FU);
  EXPECT_EQ(audio.i32(24), 500);
}

TEST_F(Audio, ReadIsForDataAndReadCdGivesTheSamples) {
  makeMixed();
  const auto start = track(1, 2).start;
  EXPECT_EQ(read(start, 1).sense, kIllegalModeForTrack);
  EXPECT_EQ(ask({0xA8, 0, 0, 0, 2, 100, 0, 0, 0, 1, 0, 0}).sense, kIllegalModeForTrack);
  EXPECT_EQ(readText(10, 1), patternBytes(400 * kSectorBytes, 1).substr(10 * kSectorBytes, 2048));
  const auto samples = patternBytes(500 * kAudioSectorBytes, 2);
  for (const unsigned parts : {0x10U, 0xF8U}) {
    for (const unsigned type : {0U, 1U}) {
      const auto reply = readCd(type, start, 500, parts);
      EXPECT_EQ(reply.sense, kGood) << parts << " " << type;
      EXPECT_TRUE(std::string(reply.data.begin(), reply.data.end()) == samples);
    }
  }
  EXPECT_EQ(readCd(0, 10, 1, 0x10).data.size(), kSectorBytes);
  EXPECT_EQ(readCd(2, start, 1, 0x10).sense, kIllegalModeForTrack) << "mode 1 was expected";
  EXPECT_EQ(readCd(1, 10, 1, 0x10).sense, kIllegalModeForTrack) << "audio was expected";
  EXPECT_EQ(readCd(0, start, 1, 0x12).sense, kInvalidFieldInCommand) << "error flags";
}

TEST_F(Audio, KindsOfTracksAreKeptApartInTwoFiles) {
  makeMixed();
  const auto second = static_cast<std::size_t>(track(1, 3).start);
  const auto sound = contentOf(disc() / "audio");
  EXPECT_EQ(sound.size(), (second + 300) * kAudioSectorBytes);
  EXPECT_TRUE(sound.substr(second * kAudioSectorBytes) == patternBytes(300 * kAudioSectorBytes, 3));
  EXPECT_EQ(contentOf(disc() / "sectors").size(), 400 * kSectorBytes);
}

TEST_F(Audio, DiscWithoutAudioHasNoFileForIt) {
  makeDisc(MediumKind::CdR);
  writeSession(300, 1);
  EXPECT_FALSE(std::filesystem::exists(disc() / "audio"));
}

TEST_F(Audio, ShortTrackIsFilledUpWithSilence) {
  makeDisc(MediumKind::CdR);
  writeAudioTracks({10}, 1);
  EXPECT_EQ(inspect().track(1).recorded, kShortestCdTrack);
  const auto reply = readCd(1, 9, 2, 0x10);
  EXPECT_EQ(std::string(reply.data.begin() + kAudioSectorBytes, reply.data.end()),
            std::string(kAudioSectorBytes, '\0'));
}

TEST_F(Audio, TrackTakesSectorsOfItsOwnKindOnly) {
  makeDisc(MediumKind::CdR);
  ASSERT_EQ(setAudio(true), kGood);
  ASSERT_EQ(writeAudio(0, patternBytes(400 * kAudioSectorBytes, 1)), kGood);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  EXPECT_EQ(write(400, patternBytes(kSectorBytes, 1)), kIllegalModeForTrack);
  ASSERT_EQ(setAudio(true), kGood);
  EXPECT_EQ(writeAudio(400, patternBytes(kAudioSectorBytes, 2)), kGood);
  EXPECT_EQ(writeAudio(401, std::string(2048, 'x')), kGood) << "no sectors, nothing to write";
  EXPECT_EQ(inspect().track(1).recorded, 401);
}

TEST_F(Audio, WaysOfWritingThatTheDriveDoesNotHaveAreRefused) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(setAudio(true, 0x1), kInvalidFieldInParameters) << "pre-emphasis";
  EXPECT_EQ(setAudio(true, 0x8), kInvalidFieldInParameters) << "four channels";
  EXPECT_EQ(setAudio(true, 0x4, 0), kInvalidFieldInParameters) << "raw sectors of data";
  EXPECT_EQ(setAudio(true, 0x0, 1), kInvalidFieldInParameters) << "with subchannels";
  EXPECT_EQ(setAudio(true, 0x0, 8), kInvalidFieldInParameters) << "audio of 2048 bytes";
  EXPECT_EQ(setAudio(true, 0x2), kGood) << "copying permitted";
}

TEST_F(Audio, SessionAtOnceMayHaveDataAndAudio) {
  makeDisc(MediumKind::CdR);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::SessionAtOnce, false), kGood);
  ASSERT_EQ(sendCueSheet(cueLine(0x41, 1, 0, 0x10, -150) + cueLine(0x41, 1, 1, 0x10, 0) +
                         cueLine(0x01, 2, 0, 0x00, 400) + cueLine(0x01, 2, 1, 0x00, 550) +
                         cueLine(0x01, 0xAA, 1, 0x00, 900)),
            kGood);
  ASSERT_EQ(write(-150, std::string(550 * kSectorBytes, 'x')), kGood);
  const auto data = patternBytes(350 * kAudioSectorBytes, 2);
  ASSERT_EQ(writeAudio(400, std::string(150 * kAudioSectorBytes, '\0') + data), kGood);
  EXPECT_EQ(controls(), (Bytes{kData, kAudio, kAudio}));
  const auto reply = readCd(1, 550, 350, 0x10);
  EXPECT_TRUE(std::string(reply.data.begin(), reply.data.end()) == data);
}

TEST_F(Audio, CommandThatSendsTwoKindsOfSectorsIsRefused) {
  makeDisc(MediumKind::CdR);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::SessionAtOnce, false), kGood);
  ASSERT_EQ(sendCueSheet(cueLine(0x01, 1, 0, 0x00, -150) + cueLine(0x01, 1, 1, 0x00, 0) +
                         cueLine(0x41, 2, 1, 0x10, 300) + cueLine(0x41, 0xAA, 1, 0x10, 700)),
            kGood);
  EXPECT_EQ(writeAudio(-150, std::string(451 * kAudioSectorBytes, 'x')), kIllegalModeForTrack);
  ASSERT_EQ(writeAudio(-150, std::string(450 * kAudioSectorBytes, 'x')), kGood);
  EXPECT_EQ(write(300, std::string(400 * kSectorBytes, 'x')), kGood);
  EXPECT_EQ(controls(), (Bytes{kAudio, kData, kData}));
}

TEST_F(Audio, DvdsTakeNone) {
  makeDisc(MediumKind::DvdR);
  EXPECT_EQ(setAudio(true), kInvalidFieldInParameters);
}

TEST_F(Audio, ErasingRemovesTheSamples) {
  makeDisc(MediumKind::CdRw);
  writeAudioTracks({300}, 1);
  ASSERT_EQ(closeSession(), kGood);
  ASSERT_EQ(send({0xA1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), kGood);
  EXPECT_EQ(contentOf(disc() / "audio"), "");
  EXPECT_TRUE(inspect().blank());
  writeSession(300, 2);
  EXPECT_EQ(controls(), (Bytes{kData, kData}));
}

TEST_F(Audio, WriteThatWasKilledBeforeItsFirstSectorHasNotHappened) {
  makeMixed();
  auto description = nlohmann::json::parse(contentOf(disc() / "disc.json"));
  const auto next = track(1, 0xFF).next;
  description["tracks"].push_back(
      {{"session", 2}, {"start", next}, {"reserved", 0}, {"complete", false}, {"form", 0}});
  writeFile(disc() / "disc.json", description.dump());
  const auto sound = contentOf(disc() / "audio");
  EXPECT_EQ(inspect().tracks.size(), 3U);
  EXPECT_TRUE(contentOf(disc() / "audio") == sound);
  EXPECT_EQ(track(1, 0xFF).next, next);
}

TEST_F(Audio, DiscWhoseSamplesAreMissingIsDamaged) {
  makeMixed();
  std::filesystem::resize_file(disc() / "audio", 1100 * kAudioSectorBytes);
  std::string error;
  EXPECT_FALSE(VirtualDrive::open(disc(), &error));
  EXPECT_THAT(error, testing::HasSubstr("track 3 is longer than the file of sectors"));
  std::filesystem::remove(disc() / "audio");
  EXPECT_FALSE(VirtualDrive::open(disc(), &error));
  EXPECT_THAT(error, testing::HasSubstr("track 2 is longer than the file of sectors"));
}

}  // namespace
}  // namespace kelvane::virtualdrive
