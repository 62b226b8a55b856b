// SPDX-License-Identifier: GPL-2.0-or-later
// DVD+RW, and DVD-RW in restricted overwrite mode.
#include "drive_fixture.h"
#include "virtualdrive/state/disc_json.h"

namespace kelvane::virtualdrive {
namespace {

constexpr Lba kCapacity = 2560;

class DvdOverwriting : public DriveTest {
 protected:
  /// FORMAT UNIT with one descriptor.
  Sense format(std::uint8_t type, std::uint32_t sectors, std::uint8_t parameter = 0) {
    AnswerBytes list;
    list.u16(2).u16(8).u32(sectors).u8(static_cast<unsigned>(type) << 2).u16(0).u8(parameter);
    return send({0x04, 0x11, 0, 0, 0, 0}, {reinterpret_cast<const char*>(list.view().data()), 12});
  }
  Sense close(std::uint8_t function) { return send({0x5B, 1, function, 0, 0, 0, 0, 0, 0, 0}); }
  Sense blank(std::uint8_t type) { return send({0xA1, type, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}); }
  unsigned profile() { return ask({0x46, 0, 0, 0, 0, 0, 0, 0, 8, 0}).u16(6); }
  Reply formatCapacities() { return ask({0x23, 0, 0, 0, 0, 0, 0, 0, 252, 0}); }
  Lba lastSector() { return ask({0x25, 0, 0, 0, 0, 0, 0, 0, 0, 0}).i32(0); }
  bool featureIsCurrent(std::uint8_t code) {
    return (ask({0x46, 2, 0, code, 0, 0, 0, 0, 16, 0}).u8(8 + 2) & 1) != 0;
  }
  static std::string blocks(unsigned count, unsigned seed) {
    return patternBytes(count * 16 * kSectorBytes, seed);
  }
};

class DvdPlusRw : public DvdOverwriting {
 protected:
  unsigned backgroundFormat() { return discInformation().u8(7) & 0x03U; }
};

TEST_F(DvdPlusRw, NewDiscIsBlankAndHasToBeFormatted) {
  makeDisc(MediumKind::DvdPlusRw, kCapacity);
  EXPECT_EQ(profile(), 0x001AU);
  EXPECT_EQ(discInformation().u8(2), 0x10U) << "erasable and blank";
  EXPECT_EQ(backgroundFormat(), 0U);
  const auto capacities = formatCapacities();
  EXPECT_EQ(capacities.data,
            (std::vector<std::uint8_t>{0, 0, 0,  16, 0,         0, 10, 0, 1, 0, 8, 0,  //
                                       0, 0, 10, 0,  0x26 << 2, 0, 0,  0}));
  EXPECT_EQ(write(0, blocks(1, 1)), kCannotWriteMedium);
  EXPECT_EQ(read(0, 1).sense, kAddressOutOfRange);
  EXPECT_FALSE(featureIsCurrent(0x20));
  EXPECT_TRUE(featureIsCurrent(0x2A));
  EXPECT_TRUE(featureIsCurrent(0x23));
}

TEST_F(DvdPlusRw, EverySectorCanBeWrittenWhileTheFormattingRuns) {
  makeDisc(MediumKind::DvdPlusRw, kCapacity);
  ASSERT_EQ(format(0x26, kCapacity), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x1EU) << "complete, and so is its one session";
  EXPECT_EQ(backgroundFormat(), 2U) << "in progress";
  EXPECT_TRUE(featureIsCurrent(0x20));
  ASSERT_EQ(write(100, patternBytes(3 * kSectorBytes, 1)), kGood) << "single sectors, anywhere";
  EXPECT_EQ(lastSector(), 111);
  EXPECT_EQ(readText(100, 3), patternBytes(3 * kSectorBytes, 1));
  EXPECT_EQ(readText(0, 1), std::string(2048, '\0')) << "formatted, never written";
  ASSERT_EQ(write(101, patternBytes(kSectorBytes, 2)), kGood) << "over what is there";
  EXPECT_EQ(readText(101, 1), patternBytes(kSectorBytes, 2));
  EXPECT_EQ(write(kCapacity - 1, patternBytes(2 * kSectorBytes, 1)), kAddressOutOfRange);
}

TEST_F(DvdPlusRw, StoppedFormattingEndsBehindTheDataUntilItIsRestarted) {
  makeDisc(MediumKind::DvdPlusRw, kCapacity);
  ASSERT_EQ(format(0x26, 0xFFFFFFFF), kGood) << "whatever the size that is asked for";
  ASSERT_EQ(write(0, blocks(4, 1)), kGood);
  ASSERT_EQ(close(0), kGood);
  ASSERT_EQ(close(2), kGood);
  EXPECT_EQ(backgroundFormat(), 1U) << "stopped";
  EXPECT_EQ(formatCapacities().i32(4), 64);
  EXPECT_EQ(formatCapacities().u8(8), 2U) << "formatted";
  EXPECT_EQ(lastSector(), 63);
  EXPECT_EQ(write(64, blocks(1, 2)), kAddressOutOfRange) << "behind the lead-out";
  ASSERT_EQ(write(16, blocks(1, 3)), kGood) << "inside";
  ASSERT_EQ(format(0x26, kCapacity, 1), kGood);
  EXPECT_EQ(backgroundFormat(), 2U);
  ASSERT_EQ(write(64, blocks(1, 2)), kGood);
  EXPECT_EQ(readText(0, 16), blocks(4, 1).substr(0, 16 * kSectorBytes))
      << "the data is still there";
  EXPECT_EQ(readText(16, 16), blocks(1, 3));
}

TEST_F(DvdPlusRw, FormattingIsCompleteWhenAllIsWritten) {
  makeDisc(MediumKind::DvdPlusRw, kCapacity);
  ASSERT_EQ(format(0x26, kCapacity), kGood);
  ASSERT_EQ(write(kCapacity - 16, blocks(1, 1)), kGood);
  EXPECT_EQ(backgroundFormat(), 3U);
  ASSERT_EQ(close(0), kGood);
  EXPECT_EQ(backgroundFormat(), 3U);
}

TEST_F(DvdPlusRw, FormattingAnewTakesTheDataAway) {
  makeDisc(MediumKind::DvdPlusRw, kCapacity);
  ASSERT_EQ(format(0x26, kCapacity), kGood);
  ASSERT_EQ(write(0, blocks(1, 1)), kGood);
  ASSERT_EQ(format(0x26, kCapacity), kGood);
  EXPECT_EQ(std::filesystem::file_size(drive().sectorsFile()), 0U);
  EXPECT_EQ(lastSector(), 0);
  EXPECT_EQ(ask({0x43, 0, 0, 0, 0, 0, 0, 0, 12, 0}).sense, kInvalidFieldInCommand);
}

TEST_F(DvdPlusRw, ItHasOneSessionWithOneTrack) {
  makeDisc(MediumKind::DvdPlusRw, kCapacity);
  ASSERT_EQ(format(0x26, kCapacity), kGood);
  ASSERT_EQ(write(0, blocks(4, 1)), kGood);
  ASSERT_EQ(close(2), kGood);
  EXPECT_EQ(ask({0x43, 0, 0, 0, 0, 0, 0, 0, 64, 0}).data,
            (std::vector<std::uint8_t>{0, 18,   1,    1, 0, 0x14, 1, 0, 0, 0, 0, 0,  //
                                       0, 0x14, 0xAA, 0, 0, 0,    0, 64}));
  EXPECT_EQ(ask({0x43, 0, 1, 0, 0, 0, 0, 0, 64, 0}).i32(8), 0);
  const auto track = ask({0x52, 1, 0, 0, 0, 1, 0, 0, 36, 0});
  EXPECT_EQ(track.u8(6), 0x01U);
  EXPECT_EQ(track.u8(7), 0x02U) << "no next address: any will do";
  EXPECT_EQ(track.i32(24), 64);
  const auto information = discInformation();
  EXPECT_EQ(information.u8(4), 1U);
  EXPECT_EQ(information.u8(6), 1U);
}

TEST_F(DvdPlusRw, WhatItDoesNotKnowIsRefused) {
  makeDisc(MediumKind::DvdPlusRw, kCapacity);
  ASSERT_EQ(format(0x26, kCapacity), kGood);
  ASSERT_EQ(write(0, blocks(1, 1)), kGood);
  EXPECT_EQ(blank(0), kIncompatibleMedium);
  EXPECT_EQ(format(0x15, 0), kInvalidFieldInParameters);
  EXPECT_EQ(close(1), kInvalidFieldInCommand);
  EXPECT_EQ(close(6), kInvalidFieldInCommand);
  EXPECT_EQ(send({0x53, 0, 0, 0, 0, 0, 0, 0, 16, 0}), kIncompatibleMedium);
  EXPECT_EQ(readText(0, 16), blocks(1, 1));
}

class RestrictedOverwrite : public DvdOverwriting {
 protected:
  void makeFormatted() {
    makeDisc(MediumKind::DvdRw, kCapacity);
    ASSERT_EQ(format(0x15, 0), kGood);
  }
};

TEST_F(RestrictedOverwrite, QuickFormatChangesTheModeAndLeavesAnIntermediateSession) {
  makeDisc(MediumKind::DvdRw, kCapacity);
  writeFile(folder_ / "nothing", "");
  EXPECT_EQ(profile(), 0x0014U);
  const auto before = formatCapacities();
  ASSERT_EQ(format(0x15, 0), kGood);
  EXPECT_EQ(profile(), 0x0013U);
  EXPECT_EQ(discInformation().u8(2), 0x15U) << "erasable, appendable, session incomplete";
  const auto after = formatCapacities();
  EXPECT_EQ(after.data.size(), before.data.size()) << "the list keeps its length";
  EXPECT_EQ(after.data,
            (std::vector<std::uint8_t>{0, 0, 0,  40,   0,         0, 0, 16, 2, 0, 8, 0,  //
                                       0, 0, 10, 0,    0x00,      0, 8, 0,               //
                                       0, 0, 10, 0,    0x10 << 2, 0, 0, 16,              //
                                       0, 0, 9,  0xF0, 0x13 << 2, 0, 0, 16,              //
                                       0, 0, 10, 0,    0x15 << 2, 0, 0, 16}));
  for (const auto code : Block{0x10, 0x1F, 0x23, 0x26, 0x2C}) {
    EXPECT_TRUE(featureIsCurrent(code)) << int{code};
  }
  EXPECT_FALSE(featureIsCurrent(0x21));
  EXPECT_FALSE(featureIsCurrent(0x2F));
}

TEST_F(RestrictedOverwrite, IntermediateSessionGrowsAtItsEndInWholeBlocks) {
  makeFormatted();
  EXPECT_EQ(write(32, blocks(1, 1)), kInvalidAddressForWrite) << "no holes";
  EXPECT_EQ(write(8, blocks(1, 1)), kInvalidAddressForWrite);
  EXPECT_EQ(write(0, patternBytes(15 * kSectorBytes, 1)), kInvalidAddressForWrite);
  ASSERT_EQ(write(0, blocks(3, 1)), kGood);
  EXPECT_EQ(lastSector(), 47);
  const auto track = ask({0x52, 1, 0, 0, 0, 1, 0, 0, 36, 0});
  EXPECT_EQ(track.u8(6), 0x31U) << "fixed packets";
  EXPECT_EQ(track.u8(7), 0x03U);
  EXPECT_EQ(track.i32(12), 48);
  EXPECT_EQ(track.i32(20), 16) << "of one block each";
  EXPECT_EQ(write(48, blocks(kCapacity / 16, 1)), kEndOfUserArea);
  ASSERT_EQ(write(16, blocks(1, 2)), kGood) << "over what is there";
  EXPECT_EQ(readText(16, 16), blocks(1, 2));
}

TEST_F(RestrictedOverwrite, ClosedSessionCanBeOverwrittenButGrowsOnlyAgainWhenToldTo) {
  makeFormatted();
  ASSERT_EQ(write(0, blocks(3, 1)), kGood);
  ASSERT_EQ(close(2), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x1EU) << "complete";
  EXPECT_EQ(ask({0x52, 1, 0, 0, 0, 1, 0, 0, 36, 0}).u8(7), 0x02U);
  EXPECT_EQ(write(48, blocks(1, 2)), kAddressOutOfRange);
  ASSERT_EQ(write(0, blocks(1, 2)), kGood);
  ASSERT_EQ(format(0x13, 0, 16), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x15U) << "intermediate again";
  ASSERT_EQ(write(48, blocks(1, 3)), kGood);
  EXPECT_EQ(readText(0, 16), blocks(1, 2)) << "growing takes nothing away";
  ASSERT_EQ(format(0x13, 64, 16), kGood);
  EXPECT_EQ(lastSector(), 127) << "by as much as is asked for";
  EXPECT_EQ(format(0x13, kCapacity, 16), kInvalidFieldInParameters);
}

TEST_F(RestrictedOverwrite, FullFormatMakesAllOfItReadable) {
  makeDisc(MediumKind::DvdRw, kCapacity);
  ASSERT_EQ(format(0x10, kCapacity, 16), kGood);
  EXPECT_EQ(discInformation().u8(2), 0x1EU);
  EXPECT_EQ(readText(kCapacity - 1, 1), std::string(2048, '\0'));
  ASSERT_EQ(format(0x00, kCapacity), kGood);
  EXPECT_EQ(lastSector(), kCapacity - 1);
}

TEST_F(RestrictedOverwrite, BlankingLeadsBackToSequentialMode) {
  makeFormatted();
  ASSERT_EQ(write(0, blocks(3, 1)), kGood);
  ASSERT_EQ(blank(0), kGood);
  EXPECT_EQ(profile(), 0x0014U);
  EXPECT_EQ(discInformation().u8(2), 0x10U);
  EXPECT_EQ(std::filesystem::file_size(drive().sectorsFile()), 0U);
  ASSERT_EQ(format(0x15, 0), kGood);
  ASSERT_EQ(blank(1), kGood);
  EXPECT_FALSE(featureIsCurrent(0x21)) << "the minimal way";
}

TEST_F(RestrictedOverwrite, WhatItDoesNotKnowIsRefused) {
  makeFormatted();
  for (const auto function : Block{0, 1, 5, 6}) {
    EXPECT_EQ(close(function), kInvalidFieldInCommand) << int{function};
  }
  EXPECT_EQ(send({0x53, 0, 0, 0, 0, 0, 0, 0, 16, 0}), kIncompatibleMedium);
  EXPECT_EQ(format(0x26, 0), kInvalidFieldInParameters);
  EXPECT_EQ(format(0x15, kCapacity + 1), kInvalidFieldInParameters);
  EXPECT_EQ(send({0x04, 0x10, 0, 0, 0, 0}, std::string(12, '\0')), kInvalidFieldInCommand);
  EXPECT_EQ(send({0x04, 0x11, 0, 0, 0, 0}, std::string(4, '\0')), kParameterListLength);
  EXPECT_EQ(send({0x04, 0x11, 0, 0, 0, 0}, std::string(12, '\0')), kParameterListLength);
}

TEST_F(RestrictedOverwrite, SequentialDiscHasNoSessionToGrow) {
  makeDisc(MediumKind::DvdRw, kCapacity);
  EXPECT_EQ(format(0x13, 0, 16), kIncompatibleMedium);
}

TEST_F(RestrictedOverwrite, InterruptedFormattingIsCarriedToItsEnd) {
  makeFormatted();
  ASSERT_EQ(write(0, blocks(3, 1)), kGood);
  auto formatted = inspect().asBlank();
  formatted.formatting = Formatting{kCapacity, false};
  writeFile(disc() / "disc.json", blankingToJson(formatted));
  EXPECT_EQ(lastSector(), kCapacity - 1);
  EXPECT_EQ(std::filesystem::file_size(drive().sectorsFile()), 0U);
  EXPECT_EQ(contentOf(disc() / "disc.json"), discToJson(formatted));
}

TEST_F(RestrictedOverwrite, EveryTruncationAndFlippedByteOfADescriptionIsRefusedOrHarmless) {
  makeFormatted();
  ASSERT_EQ(write(0, blocks(3, 1)), kGood);
  const auto sound = contentOf(disc() / "disc.json");
  for (std::size_t at = 0; at < sound.size(); ++at) {
    auto broken = sound;
    broken[at] = static_cast<char>(broken[at] ^ 0x11);
    writeFile(disc() / "disc.json", broken);
    discInformation();
    read(0, 1);
    track(1, 1);
    formatCapacities();
    ask({0x43, 0, 0, 0, 0, 0, 0, 0x10, 0, 0});
    ask({0xAD, 0, 0, 0, 0, 0, 0, 0, 8, 4, 0, 0});
    EXPECT_EQ(std::filesystem::file_size(drive().sectorsFile()) % kSectorBytes, 0U);
  }
  for (std::size_t length = 0; length + 2 < sound.size(); ++length) {
    writeFile(disc() / "disc.json", sound.substr(0, length));
    EXPECT_NE(discInformation().sense, kGood) << length;
  }
}

TEST_F(RestrictedOverwrite, DescriptionsThatContradictThemselvesAreRefused) {
  makeFormatted();
  const auto refuses = [&](const std::string& from, const std::string& to) {
    auto text = contentOf(disc() / "disc.json");
    const auto at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    auto broken = text;
    broken.replace(at, from.size(), to);
    writeFile(disc() / "disc.json", broken);
    std::string error;
    EXPECT_FALSE(VirtualDrive::open(disc(), &error)) << to;
    EXPECT_NE(error, "");
    writeFile(disc() / "disc.json", text);
  };
  refuses("\"dvd-rw\"", "\"dvd-r\"");
  refuses("\"sectors\": 16", "\"sectors\": 4000");
  refuses("\"sectors\": 16", "\"sectors\": -1");
  refuses("\"growing\": true", "\"growing\": 1");
  refuses("\"finalized\": false", "\"finalized\": true");
  refuses("\"tracks\": []",
          "\"tracks\": [{\"session\":1,\"start\":0,\"reserved\":0,\"complete\":false,\"form\":1}]");
  std::filesystem::resize_file(drive().sectorsFile(), 5000 * kSectorBytes);
  std::string error;
  EXPECT_FALSE(VirtualDrive::open(disc(), &error)) << "more in the file than on the disc";
}

}  // namespace
}  // namespace kelvane::virtualdrive
