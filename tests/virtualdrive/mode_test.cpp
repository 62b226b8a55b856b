// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

class Mode : public DriveTest {
 protected:
  Reply sense10(std::uint8_t page) { return ask({0x5A, 8, page, 0, 0, 0, 0, 0x10, 0, 0}); }
  static std::string standardPage() {
    const auto page = WriteParameters::standard().page;
    return {page.begin(), page.end()};
  }
};

TEST_F(Mode, WriteParametersAreKeptAcrossProcessesOfTheDrive) {
  makeDisc(MediumKind::CdR);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::SessionAtOnce, true), kGood);
  std::string error;
  drive_ = VirtualDrive::open(disc(), &error);
  const auto reply = sense10(0x05);
  ASSERT_EQ(reply.data.size(), 8U + 52);
  EXPECT_EQ(reply.u16(0), 58U);
  EXPECT_EQ(reply.u8(8), 0x05U);
  EXPECT_EQ(reply.u8(10) & 0x0FU, 2U);
  EXPECT_EQ(reply.u8(11) & 0xC0U, 0xC0U);
}

TEST_F(Mode, DefaultsStayWhateverIsSet) {
  makeDisc(MediumKind::CdR);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::SessionAtOnce, true), kGood);
  const auto reply = sense10(0x85);
  EXPECT_EQ(std::string(reply.data.begin() + 8, reply.data.end()), standardPage());
}

TEST_F(Mode, WaysOfWritingThatTheDriveDoesNotKnowAreRefusedAndChangeNothing) {
  makeDisc(MediumKind::CdR);
  const auto before = sense10(0x05).data;
  auto packet = standardPage();
  packet[2] = 0x00;
  auto raw = standardPage();
  raw[2] = 0x03;
  auto simulated = standardPage();
  simulated[2] = 0x11;
  auto audio = standardPage();
  audio[4] = 0;
  for (const auto& page : {packet, raw, simulated, audio}) {
    EXPECT_EQ(modeSelect(page), kInvalidFieldInParameters);
  }
  EXPECT_EQ(sense10(0x05).data, before);
}

TEST_F(Mode, BrokenParameterListsAreRefused) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(modeSelect(standardPage().substr(0, 20)), kParameterListLength);
  EXPECT_EQ(modeSelect(std::string("\x05\x10", 2) + std::string(16, '\0')),
            kInvalidFieldInParameters)
      << "a page of another length";
  EXPECT_EQ(modeSelect(std::string("\x1A\x0A", 2) + std::string(10, '\0')),
            kInvalidFieldInParameters)
      << "a page that cannot be set";
  const std::string list(60, '\0');
  EXPECT_EQ(send({0x55, 0x10, 0, 0, 0, 0, 0, 0, 60, 0}, list.substr(0, 30)), kParameterListLength)
      << "less data than announced";
  EXPECT_EQ(send({0x55, 0x00, 0, 0, 0, 0, 0, 0, 60, 0}, list), kInvalidFieldInCommand)
      << "no page format";
  EXPECT_EQ(send({0x55, 0x11, 0, 0, 0, 0, 0, 0, 60, 0}, list), kInvalidFieldInCommand)
      << "pages cannot be saved";
  auto hostile = list;
  hostile[7] = '\x7F';
  EXPECT_EQ(send({0x55, 0x10, 0, 0, 0, 0, 0, 0, 60, 0}, hostile), kParameterListLength)
      << "block descriptors beyond the list";
}

TEST_F(Mode, CapabilitiesNameWhatCanBeWrittenAndHowFast) {
  makeDisc(MediumKind::CdR);
  const auto reply = sense10(0x2A);
  EXPECT_EQ(reply.u8(8), 0x2AU);
  EXPECT_EQ(reply.u8(8 + 1) + 2U, reply.data.size() - 8);
  EXPECT_EQ(reply.u8(8 + 3), 0x13U) << "CD-R, CD-RW and DVD-R, no simulation";
  EXPECT_EQ(reply.u16(8 + 30), 5U) << "write speeds";
  EXPECT_EQ(reply.u16(8 + 32 + 2), 8467U);
  const auto old = ask({0x1A, 8, 0x2A, 0, 128, 0});
  EXPECT_EQ(old.u8(4), 0x2AU);
  EXPECT_EQ(std::vector(old.data.begin() + 4, old.data.end()),
            std::vector(reply.data.begin() + 8, reply.data.end()));
}

TEST_F(Mode, AllPagesComeTogetherAndUnknownOnesAreRefused) {
  makeDisc(MediumKind::CdR);
  const auto all = sense10(0x3F);
  EXPECT_EQ(all.data.size(), 8U + sense10(0x01).data.size() - 8 + sense10(0x05).data.size() - 8 +
                                 sense10(0x2A).data.size() - 8);
  EXPECT_EQ(sense10(0x0E).sense, kInvalidFieldInCommand);
  EXPECT_EQ(sense10(0xC5).sense, kSavingNotSupported);
}

TEST_F(Mode, ChosenSpeedIsTheNextOneTheDriveHas) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(send({0xBB, 0, 0xFF, 0xFF, 0x0B, 0x20, 0, 0, 0, 0, 0, 0}), kGood);  // 2848
  EXPECT_EQ(sense10(0x2A).u16(8 + 28), 2822U);
  EXPECT_EQ(send({0xBB, 0, 0xFF, 0xFF, 0x00, 0x01, 0, 0, 0, 0, 0, 0}), kGood);
  EXPECT_EQ(sense10(0x2A).u16(8 + 28), 706U) << "no slower than the slowest";
  EXPECT_EQ(send({0xBB, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0}), kGood);
  EXPECT_EQ(sense10(0x2A).u16(8 + 28), 8467U) << "the best";
}

TEST_F(Mode, StreamingSetsTheSpeedToo) {
  makeDisc(MediumKind::CdR);
  AnswerBytes descriptor;
  descriptor.u32(0).u32(0).u32(359846).u32(4234).u32(1000).u32(4234).u32(1000);
  const std::string list(descriptor.view().begin(), descriptor.view().end());
  const Block block{0xB6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 28, 0};
  EXPECT_EQ(send(block, list), kGood);
  EXPECT_EQ(sense10(0x2A).u16(8 + 28), 4234U);
  EXPECT_EQ(send(block, list.substr(0, 20)), kParameterListLength);
  EXPECT_EQ(send(block, std::string(28, '\0')), kInvalidFieldInParameters) << "no time at all";
}

TEST_F(Mode, PerformanceListsTheWriteSpeeds) {
  makeDisc(MediumKind::CdR);
  const auto reply = ask({0xAC, 0, 0, 0, 0, 0, 0, 0, 0, 16, 3, 0});
  ASSERT_EQ(reply.data.size(), 8U + 5 * 16);
  EXPECT_EQ(reply.i32(0), 4 + 5 * 16);
  EXPECT_EQ(reply.i32(8 + 12), 8467);
  EXPECT_EQ(ask({0xAC, 0, 0, 0, 0, 0, 0, 0, 0, 2, 3, 0}).data.size(), 8U + 2 * 16);
  const auto nominal = ask({0xAC, 0x14, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0});
  ASSERT_EQ(nominal.data.size(), 24U);
  EXPECT_EQ(nominal.i32(8 + 4), 8467);
  EXPECT_EQ(ask({0xAC, 0, 0, 0, 0, 0, 0, 0, 0, 1, 4, 0}).sense, kInvalidFieldInCommand);
}

TEST_F(Mode, OptimumPowerCalibrationIsAccepted) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(send({0x54, 1, 0, 0, 0, 0, 0, 0, 0, 0}), kGood);
  EXPECT_EQ(send({0x54, 0, 0, 0, 0, 0, 0, 0, 5, 0}, "12345"), kParameterListLength);
}

}  // namespace
}  // namespace kelvane::virtualdrive
