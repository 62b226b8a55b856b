// SPDX-License-Identifier: GPL-2.0-or-later
// What the drive is and can do: INQUIRY (SPC-3, 6.4) and GET CONFIGURATION (MMC-5, 6.5).
#include "virtualdrive/commands/command.h"
#include "virtualdrive/commands/drive_facts.h"
#include "virtualdrive/commands/features.h"

namespace kelvane::virtualdrive {
namespace {

constexpr unsigned kDirectAccessCdDevice = 0x05;

AnswerBytes standardInquiry() {
  AnswerBytes bytes;
  bytes.bytes({kDirectAccessCdDevice, 0x80, 0x05, 0x02, 91, 0, 0, 0});
  bytes.text(kVendor, 8).text(kProduct, 16).text(kRevision, 4);
  bytes.zeros(22);
  bytes.u16(0x0300).u16(0x03A0);  // SPC-3, MMC-5
  bytes.zeros(34);
  return bytes;
}

AnswerBytes vitalProductPage(unsigned page, const std::string& serial) {
  AnswerBytes bytes;
  bytes.u8(kDirectAccessCdDevice).u8(page).u16(0);
  switch (page) {
    case 0x00:
      bytes.bytes({0x00, 0x80, 0x83});
      break;
    case 0x80:
      bytes.text(serial, serial.size());
      break;
    default:  // 83h: one designator, vendor and serial in ASCII
      bytes.bytes({0x02, 0x01, 0x00}).u8(static_cast<unsigned>(8 + 16 + serial.size()));
      bytes.text(kVendor, 8).text(kProduct, 16).text(serial, serial.size());
  }
  bytes.patch16(2, bytes.size() - 4);
  return bytes;
}

}  // namespace

CommandResult inquiry(Command& command) {
  const auto allocation = read16(command.block, 3);
  const auto page = command.block[2];
  if ((command.block[1] & 0x01) == 0) {
    if (page != 0) return refuse(kInvalidFieldInCommand);
    return answer(command, standardInquiry(), allocation);
  }
  if (page != 0x00 && page != 0x80 && page != 0x83) return refuse(kInvalidFieldInCommand);
  return answer(command, vitalProductPage(page, command.folder.drive.serial), allocation);
}

CommandResult getConfiguration(Command& command) {
  const auto scope = command.block[1] & 0x03;
  if (scope == 3) return refuse(kInvalidFieldInCommand);
  const bool loaded = !command.folder.drive.trayOpen;
  const auto features =
      featureDescriptors(command, static_cast<FeatureScope>(scope), read16(command.block, 2));
  AnswerBytes bytes;
  bytes.u32(static_cast<std::uint32_t>(4 + features.size())).u16(0);
  bytes.u16(loaded ? command.rules.profile() : 0U);
  bytes.bytes(features.view());
  return answer(command, bytes, read16(command.block, 7));
}

}  // namespace kelvane::virtualdrive
