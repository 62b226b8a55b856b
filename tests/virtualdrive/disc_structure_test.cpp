// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

class DiscStructure : public DriveTest {
 protected:
  Reply structure(std::uint8_t format, std::uint16_t room = 4096) {
    return ask({0xAD, 0, 0, 0, 0, 0, 0, format, static_cast<std::uint8_t>(room >> 8),
                static_cast<std::uint8_t>(room), 0, 0});
  }
};

TEST_F(DiscStructure, CdHasNone) {
  makeDisc(MediumKind::CdR);
  EXPECT_EQ(structure(0x00).sense, kIncompatibleMedium);
}

TEST_F(DiscStructure, PhysicalFormatNamesTheBookAndTheDataArea) {
  for (const auto& [medium, book] :
       {std::pair{MediumKind::DvdR, 0x25U}, std::pair{MediumKind::DvdRw, 0x32U},
        std::pair{MediumKind::DvdPlusRw, 0x92U}, std::pair{MediumKind::DvdPlusR, 0xA1U}}) {
    makeDisc(medium, 4096);
    const auto reply = structure(0x00);
    ASSERT_EQ(reply.data.size(), 4U + 2048);
    EXPECT_EQ(reply.u16(0), 2U + 2048);
    EXPECT_EQ(reply.u8(4), book);
    EXPECT_EQ(reply.i32(4 + 4), 0x030000);
    EXPECT_EQ(reply.i32(4 + 8), 0x030000 + 4095);
    EXPECT_EQ(structure(0x00, 36).data.size(), 36U);
    drive_.reset();
    std::filesystem::remove_all(disc());
  }
}

TEST_F(DiscStructure, ManufacturerIsToldWhereTheMediumHasIt) {
  makeDisc(MediumKind::DvdR, 4096);
  const auto pits = structure(0x0E);
  ASSERT_EQ(pits.data.size(), 44U);
  EXPECT_EQ(std::string(pits.data.begin() + 21, pits.data.begin() + 27), "KELVAN");
  EXPECT_EQ(structure(0x11).sense, kInvalidFieldInCommand);
  drive_.reset();
  std::filesystem::remove_all(disc());
  makeDisc(MediumKind::DvdPlusR, 4096);
  const auto pregroove = structure(0x11);
  EXPECT_EQ(std::string(pregroove.data.begin() + 23, pregroove.data.begin() + 31), "KELVANE ");
  EXPECT_EQ(structure(0x0E).sense, kInvalidFieldInCommand);
}

TEST_F(DiscStructure, ListNamesEveryStructureWithItsLength) {
  makeDisc(MediumKind::DvdRw, 4096);
  const auto list = structure(0xFF);
  ASSERT_EQ(list.u16(0) + 2U, list.data.size());
  for (std::size_t at = 4; at < list.data.size(); at += 4) {
    const auto reply = structure(static_cast<std::uint8_t>(list.u8(at)));
    EXPECT_EQ(reply.sense, kGood) << list.u8(at);
    EXPECT_EQ(reply.data.size(), list.u16(at + 2)) << list.u8(at);
  }
  EXPECT_EQ(structure(0x20).sense, kInvalidFieldInCommand) << "of discs with two layers";
}

}  // namespace
}  // namespace kelvane::virtualdrive
