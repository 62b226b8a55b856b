// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

using Bytes = std::vector<std::uint8_t>;

enum class Address : std::uint8_t { Lba = 0, Time = 2 };

class Toc : public DriveTest {
 protected:
  Reply toc(std::uint8_t format, std::uint8_t number = 0, Address address = Address::Lba) {
    return ask({0x43, static_cast<std::uint8_t>(address), format, 0, 0, 0, number, 0x10, 0, 0});
  }
  /// The entry of the full TOC for a session and a point; empty where there is none.
  Bytes fullEntry(unsigned session, unsigned point) {
    const auto reply = toc(2);
    for (std::size_t at = 4; at + 11 <= reply.data.size(); at += 11) {
      if (reply.u8(at) == session && reply.u8(at + 3) == point) {
        return {reply.data.begin() + static_cast<long>(at),
                reply.data.begin() + static_cast<long>(at) + 11};
      }
    }
    return {};
  }
};

TEST_F(Toc, BlankDiscHasNoneButItsPregroove) {
  makeDisc(MediumKind::CdR);
  for (const auto format : Block{0, 1, 2}) {
    EXPECT_EQ(toc(format).sense, kInvalidFieldInCommand) << int{format};
  }
  EXPECT_EQ(toc(4).sense, kGood);
}

TEST_F(Toc, ListsTracksOfClosedSessionsAndTheLeadOut) {
  makeDisc(MediumKind::CdR);
  writeSession(1000, 1);
  writeSession(300, 2);
  ASSERT_EQ(write(track(1, 0xFF).next, patternBytes(2048, 3)), kGood);
  const auto reply = toc(0);
  EXPECT_EQ(reply.data, (Bytes{0, 26,   1,    2,                       //
                               0, 0x14, 1,    0, 0, 0, 0,    0,        //
                               0, 0x14, 2,    0, 0, 0, 0x30, 0x72,     // 12402
                               0, 0x14, 0xAA, 0, 0, 0, 0x31, 0xA0}));  // 12704
  const auto times = toc(0, 2, Address::Time);
  EXPECT_EQ(times.data, (Bytes{0, 18,   1,    2,                //
                               0, 0x14, 2,    0, 0, 2, 47, 27,  // 12402 + 150
                               0, 0x14, 0xAA, 0, 0, 2, 51, 29}));
  EXPECT_EQ(toc(0, 0xAA).data.size(), 12U);
  EXPECT_EQ(toc(0, 3).sense, kInvalidFieldInCommand);
}

TEST_F(Toc, TellsWhereTheLastClosedSessionBegins) {
  makeDisc(MediumKind::CdR);
  writeSession(1000, 1);
  writeSession(300, 2);
  EXPECT_EQ(toc(1).data, (Bytes{0, 10, 1, 2, 0, 0x14, 2, 0, 0, 0, 0x30, 0x72}));
}

TEST_F(Toc, FormatIsAlsoTakenFromTheControlByte) {
  makeDisc(MediumKind::CdR);
  writeSession(1000, 1);
  EXPECT_EQ(ask({0x43, 0, 0, 0, 0, 0, 0, 0x10, 0, 0x40}).data, toc(1).data);
}

TEST_F(Toc, FullTocPointsToTheNextSessionUntilTheDiscIsClosed) {
  makeDisc(MediumKind::CdR);
  writeSession(1000, 1);
  // 1002 + 11400 - 150 is the beginning of the gap before the next session: 2:45:27.
  EXPECT_EQ(fullEntry(1, 0xB0), (Bytes{1, 0x54, 0, 0xB0, 2, 45, 27, 2, 79, 59, 74}));
  EXPECT_FALSE(fullEntry(1, 0xC0).empty());
  EXPECT_EQ(fullEntry(1, 0xA0), (Bytes{1, 0x14, 0, 0xA0, 0, 0, 0, 0, 1, 0, 0}));
  EXPECT_EQ(fullEntry(1, 0xA1), (Bytes{1, 0x14, 0, 0xA1, 0, 0, 0, 0, 1, 0, 0}));
  EXPECT_EQ(fullEntry(1, 0xA2), (Bytes{1, 0x14, 0, 0xA2, 0, 0, 0, 0, 0, 15, 27}));
  EXPECT_EQ(fullEntry(1, 1), (Bytes{1, 0x14, 0, 1, 0, 0, 0, 0, 0, 2, 0}));
  writeSession(300, 2, false);
  EXPECT_FALSE(fullEntry(1, 0xB0).empty());
  EXPECT_TRUE(fullEntry(2, 0xB0).empty());
  EXPECT_FALSE(fullEntry(2, 2).empty());
  EXPECT_EQ(toc(2).u8(2), 1U);
  EXPECT_EQ(toc(2).u8(3), 2U);
}

TEST_F(Toc, FullTocCanBeginAtALaterSession) {
  makeDisc(MediumKind::CdR);
  writeSession(1000, 1);
  writeSession(300, 2);
  const auto reply = toc(2, 2);
  ASSERT_GT(reply.data.size(), 4U);
  EXPECT_EQ(reply.u8(4), 2U);
  EXPECT_EQ(toc(2, 3).sense, kInvalidFieldInCommand);
}

TEST_F(Toc, PregrooveTellsKindAndCapacity) {
  makeDisc(MediumKind::CdR);
  const auto reply = toc(4);
  ASSERT_EQ(reply.data.size(), 28U);
  EXPECT_EQ(reply.u16(0), 26U);
  EXPECT_EQ(reply.u8(6) & 0x40U, 0U) << "write once";
  EXPECT_EQ(Bytes(reply.data.begin() + 12, reply.data.begin() + 15), (Bytes{79, 59, 74}));
}

TEST_F(Toc, PregrooveOfARewritableDiscSaysSo) {
  makeDisc(MediumKind::CdRw);
  EXPECT_EQ(toc(4).u8(6) & 0x44U, 0x44U);
}

TEST_F(Toc, ProgramMemoryAndTextAreNotThere) {
  makeDisc(MediumKind::CdR);
  writeSession(300, 1);
  EXPECT_EQ(toc(3).sense, kInvalidFieldInCommand);
  EXPECT_EQ(toc(5).sense, kInvalidFieldInCommand);
}

}  // namespace
}  // namespace kelvane::virtualdrive
