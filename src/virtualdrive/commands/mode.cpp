// SPDX-License-Identifier: GPL-2.0-or-later
// MODE SENSE and MODE SELECT (SPC-3, 6.8 to 6.10) with the pages of MMC-5, clause 7.
#include <algorithm>

#include "virtualdrive/commands/command.h"
#include "virtualdrive/commands/drive_facts.h"

namespace kelvane::virtualdrive {
namespace {

constexpr unsigned kErrorRecoveryPage = 0x01;
constexpr unsigned kWriteParametersPage = 0x05;
constexpr unsigned kCapabilitiesPage = 0x2A;
constexpr unsigned kAllPages = 0x3F;
constexpr std::size_t kHeaderBytes = 8;

/// Which values of a page are asked for.
enum class PageControl : unsigned { Current = 0, Changeable = 1, Default = 2, Saved = 3 };

void putErrorRecovery(AnswerBytes& bytes, PageControl control) {
  const unsigned retries = control == PageControl::Changeable ? 0 : 1;
  bytes.u8(kErrorRecoveryPage).u8(10).u8(0).u8(retries).zeros(8);
}

void putWriteParameters(AnswerBytes& bytes, PageControl control, const Command& command) {
  if (control == PageControl::Changeable) {
    bytes.u8(kWriteParametersPage).u8(0x32).u8(0x7F).u8(0xFF).u8(0x0F);
    for (std::size_t i = 5; i < WriteParameters::kBytes; ++i) bytes.u8(0xFF);
    return;
  }
  const auto standard = WriteParameters::standard(command.disc().medium);
  const auto& current = command.folder.drive.writeParameters;
  bytes.bytes(control == PageControl::Default ? standard.page : current.page);
}

void putCapabilities(AnswerBytes& bytes, PageControl control, const Command& command) {
  const auto& drive = command.folder.drive;
  const auto speeds = speedsFor(command.disc().medium);
  const auto length = 30 + 4 * speeds.write.size();
  bytes.u8(kCapabilitiesPage).u8(static_cast<unsigned>(length));
  if (control == PageControl::Changeable) {
    bytes.zeros(length);
    return;
  }
  const auto readSpeed = static_cast<unsigned>(drive.readSpeed);
  const auto writeSpeed = static_cast<unsigned>(drive.writeSpeed);
  // Reads CD-R, CD-RW, method 2, DVD-ROM and DVD-R; writes CD-R, CD-RW and DVD-R.
  bytes.u8(0x1F).u8(0x13);
  // Guarded against underruns, multi-session, mode 2 forms 1 and 2; reads audio, exactly.
  bytes.u8(0xF0).u8(0x03);
  bytes.u8(0x29 | (drive.removalPrevented ? 0x02U : 0U)).u8(0x00);  // tray, ejects, can be locked
  bytes.u16(static_cast<unsigned>(speeds.read)).u16(0).u16(kBufferBytes / 1024).u16(readSpeed);
  bytes.u16(0).u16(static_cast<unsigned>(speeds.write.front())).u16(writeSpeed).u16(1);
  bytes.zeros(3).u8(0).u16(writeSpeed).u16(static_cast<unsigned>(speeds.write.size()));
  for (const auto speed : speeds.write) bytes.u16(0).u16(static_cast<unsigned>(speed));
}

/// Appends the pages asked for. False where there is no such page.
bool putPages(AnswerBytes& bytes, const Command& command) {
  const auto page = command.block[2] & 0x3FU;
  const auto control = static_cast<PageControl>(command.block[2] >> 6);
  const auto before = bytes.size();
  if (page == kErrorRecoveryPage || page == kAllPages) putErrorRecovery(bytes, control);
  if (page == kWriteParametersPage || page == kAllPages)
    putWriteParameters(bytes, control, command);
  if (page == kCapabilitiesPage || page == kAllPages) putCapabilities(bytes, control, command);
  return bytes.size() > before;
}

bool asksForSavedValues(const Command& command) {
  return static_cast<PageControl>(command.block[2] >> 6) == PageControl::Saved;
}

/// Takes one page from the parameters. Its length has been checked.
Sense takePage(Command& command, std::span<const std::uint8_t> page) {
  const auto code = page[0] & 0x3FU;
  if (code == kErrorRecoveryPage) return page[1] == 10 ? kGood : kInvalidFieldInParameters;
  if (code != kWriteParametersPage || page[1] != 0x32) return kInvalidFieldInParameters;
  WriteParameters parameters;
  std::ranges::copy(page, parameters.page.begin());
  parameters.page[0] = kWriteParametersPage;
  if (!command.rules.accepts(parameters)) return kInvalidFieldInParameters;
  if (command.folder.drive.writeParameters.page != parameters.page) {
    command.changeDrive().writeParameters = parameters;
  }
  return kGood;
}

}  // namespace

CommandResult modeSense6(Command& command) {
  if (asksForSavedValues(command)) return refuse(kSavingNotSupported);
  AnswerBytes bytes;
  bytes.u32(0);
  if (!putPages(bytes, command)) return refuse(kInvalidFieldInCommand);
  bytes.patch8(0, static_cast<unsigned>(std::min<std::size_t>(bytes.size() - 1, 0xFF)));
  return answer(command, bytes, command.block[4]);
}

CommandResult modeSense10(Command& command) {
  if (asksForSavedValues(command)) return refuse(kSavingNotSupported);
  AnswerBytes bytes;
  bytes.zeros(kHeaderBytes);
  if (!putPages(bytes, command)) return refuse(kInvalidFieldInCommand);
  bytes.patch16(0, bytes.size() - 2);
  return answer(command, bytes, read16(command.block, 7));
}

CommandResult modeSelect10(Command& command) {
  if ((command.block[1] & 0x10) == 0 || (command.block[1] & 0x01) != 0) {
    return refuse(kInvalidFieldInCommand);
  }
  const std::size_t length = read16(command.block, 7);
  if (length == 0) return {};
  if (length < kHeaderBytes || command.dataOut.size() < length) return refuse(kParameterListLength);
  auto rest = command.dataOut.first(length);
  const std::size_t blockDescriptors = read16(rest, 6);
  if (blockDescriptors > length - kHeaderBytes) return refuse(kParameterListLength);
  rest = rest.subspan(kHeaderBytes + blockDescriptors);
  while (!rest.empty()) {
    if (rest.size() < 2 || rest.size() < 2U + rest[1]) return refuse(kParameterListLength);
    const auto page = rest.first(2U + rest[1]);
    if (const auto sense = takePage(command, page); !sense.good()) return refuse(sense);
    rest = rest.subspan(page.size());
  }
  return {kGood, length};
}

}  // namespace kelvane::virtualdrive
