// SPDX-License-Identifier: GPL-2.0-or-later
// READ DISC STRUCTURE of DVDs (MMC-5, 6.23).
#include <algorithm>
#include <optional>

#include "virtualdrive/commands/command.h"
#include "virtualdrive/commands/drive_facts.h"

namespace kelvane::virtualdrive {
namespace {

constexpr unsigned kPhysicalFormat = 0x00;
constexpr unsigned kCopyright = 0x01;
constexpr unsigned kManufacturing = 0x04;
constexpr unsigned kPrerecordedPit = 0x0E;
constexpr unsigned kPhysicalAddressInPregroove = 0x11;
constexpr unsigned kWriteProtection = 0xC0;
constexpr unsigned kList = 0xFF;

/// The physical address of LBA 0 on a DVD.
constexpr std::uint32_t kFirstPhysicalSector = 0x030000;
constexpr std::size_t kPhysicalFormatBytes = 2048;

/// Kind of the book that describes the medium, and the version of that book.
unsigned bookOf(MediumKind kind) {
  switch (kind) {
    case MediumKind::DvdR:
      return 0x25;
    case MediumKind::DvdRw:
      return 0x32;
    case MediumKind::DvdPlusRw:
      return 0x92;
    default:
      return 0xA1;
  }
}

bool isDvdPlus(MediumKind kind) {
  return kind == MediumKind::DvdPlusRw || kind == MediumKind::DvdPlusR;
}

AnswerBytes physicalFormat(const DiscState& disc) {
  const auto recorded = static_cast<std::uint32_t>(readableEnd(disc));
  const auto end = recorded == 0 ? static_cast<std::uint32_t>(disc.capacity) : recorded;
  AnswerBytes bytes;
  bytes.u8(bookOf(disc.medium)).u8(0x0F);  // 12 cm; no maximum rate is stated
  // One layer: rewritable or recordable. The densities of a DVD.
  const bool rewritable = disc.medium == MediumKind::DvdRw || disc.medium == MediumKind::DvdPlusRw;
  bytes.u8(rewritable ? 0x04 : 0x02).u8(0);
  bytes.u32(kFirstPhysicalSector).u32(kFirstPhysicalSector + end - 1).u32(0);
  bytes.zeros(3);
  if (isDvdPlus(disc.medium)) bytes.text(kVendor, 8).text("SW1", 3).u8(1);
  return bytes.zeros(kPhysicalFormatBytes - bytes.size());
}

/// The fields that are pressed into the land between the grooves of a DVD-R or DVD-RW.
AnswerBytes prerecordedPit(const DiscState& disc) {
  AnswerBytes bytes;
  bytes.u8(1).u8(0x40).u8(0xC1).u8(0xFD).u8(0x9E).u8(0xD8).u8(0x52).u8(0);
  const auto end = kFirstPhysicalSector + static_cast<std::uint32_t>(disc.capacity) - 1;
  bytes.u8(2).u8(0x85).u8(0x0D).u8(end >> 16 & 0xFF).u8(end >> 8 & 0xFF).u8(end & 0xFF).zeros(2);
  bytes.u8(3).text(kVendor, 6).u8(0);
  bytes.u8(4).text("SOFTWR", 6).u8(0);
  return bytes.zeros(8);
}

struct Structure {
  unsigned format;
  AnswerBytes (*make)(const DiscState&);
  bool (*applies)(MediumKind);
};

const std::array<Structure, 6> kStructures{{
    {kPhysicalFormat, physicalFormat, [](MediumKind) { return true; }},
    // Neither copyright nor region, nothing about the manufacturing, nothing that protects.
    {kCopyright, [](const DiscState&) { return AnswerBytes().zeros(4); },
     [](MediumKind) { return true; }},
    {kManufacturing, [](const DiscState&) { return AnswerBytes().zeros(kPhysicalFormatBytes); },
     [](MediumKind) { return true; }},
    {kPrerecordedPit, prerecordedPit, [](MediumKind kind) { return !isDvdPlus(kind); }},
    {kPhysicalAddressInPregroove, physicalFormat, isDvdPlus},
    {kWriteProtection, [](const DiscState&) { return AnswerBytes().zeros(4); },
     [](MediumKind) { return true; }},
}};

AnswerBytes listOfStructures(const DiscState& disc) {
  constexpr unsigned kReadable = 0x40;
  AnswerBytes bytes;
  for (const auto& structure : kStructures) {
    if (!structure.applies(disc.medium)) continue;
    const auto length = structure.make(disc).size() + 4;
    bytes.u8(structure.format).u8(kReadable).u16(static_cast<unsigned>(length));
  }
  return bytes;
}

std::optional<AnswerBytes> structureOf(const DiscState& disc, unsigned format) {
  if (format == kList) return listOfStructures(disc);
  const auto* found = std::ranges::find(kStructures, format, &Structure::format);
  if (found == kStructures.end() || !found->applies(disc.medium)) return std::nullopt;
  return found->make(disc);
}

}  // namespace

CommandResult readDiscStructure(Command& command) {
  const auto& disc = command.disc();
  if (isCd(disc.medium)) return refuse(kIncompatibleMedium);
  const auto structure = structureOf(disc, command.block[7]);
  if (!structure) return refuse(kInvalidFieldInCommand);
  AnswerBytes bytes;
  bytes.u16(static_cast<unsigned>(structure->size() + 2)).u16(0).bytes(structure->view());
  return answer(command, bytes, read16(command.block, 8));
}

}  // namespace kelvane::virtualdrive
