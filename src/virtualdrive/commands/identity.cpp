// SPDX-License-Identifier: GPL-2.0-or-later
// What the drive is and can do: INQUIRY (SPC-3, 6.4) and GET CONFIGURATION (MMC-5, 6.5).
#include "virtualdrive/commands/command.h"
#include "virtualdrive/commands/drive_facts.h"

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

enum class FeatureScope : std::uint8_t { All = 0, Current = 1, One = 2 };

/// Collects the features that a program has asked for.
class FeatureList {
 public:
  FeatureList(FeatureScope scope, unsigned from) : scope_(scope), from_(from) {}

  struct Feature {
    unsigned code;
    unsigned version;
    bool persistent;
    bool current;
  };
  void add(const Feature& feature, std::initializer_list<std::uint8_t> data) {
    if (scope_ == FeatureScope::One ? feature.code != from_ : feature.code < from_) return;
    if (scope_ == FeatureScope::Current && !feature.current) return;
    bytes_.u16(feature.code);
    bytes_.u8(feature.version << 2 | (feature.persistent ? 2U : 0U) | (feature.current ? 1U : 0U));
    bytes_.u8(static_cast<unsigned>(data.size())).bytes(data);
  }
  void addSerial(const std::string& serial) {
    const Feature feature{0x0108, 0, true, true};
    if (scope_ == FeatureScope::One ? feature.code != from_ : feature.code < from_) return;
    const auto padded = (serial.size() + 3) / 4 * 4;
    bytes_.u16(feature.code).u8(0x03).u8(static_cast<unsigned>(padded)).text(serial, padded);
  }
  const AnswerBytes& bytes() const { return bytes_; }

 private:
  FeatureScope scope_;
  unsigned from_;
  AnswerBytes bytes_;
};

/// What holds now, for the current bits of the features.
struct CurrentMedium {
  bool cdr;
  bool cdrw;
  bool writable;

  bool any() const { return cdr || cdrw; }
};

void addFeatures(FeatureList& list, const CurrentMedium& medium) {
  const std::uint8_t cdr = medium.cdr ? 1 : 0;
  const std::uint8_t cdrw = medium.cdrw ? 1 : 0;
  // Profile list: CD-RW, CD-R, CD-ROM.
  list.add({0x0000, 0, true, true}, {0x00, 0x0A, cdrw, 0, 0x00, 0x09, cdr, 0, 0x00, 0x08, 0, 0});
  // Core: SCSI family, with the device busy event. Morphing: asynchronous operation not supported.
  list.add({0x0001, 2, true, true}, {0, 0, 0, 1, 0x01, 0, 0, 0});
  list.add({0x0002, 1, true, true}, {0x02, 0, 0, 0});
  // Removable medium: a tray that opens and loads and can be locked.
  list.add({0x0003, 1, true, true}, {0x39, 0, 0, 0});
  // Random readable: blocks of 2048 bytes, one at a time. CD read: no CD-Text, no C2 flags.
  list.add({0x0010, 0, false, medium.any()}, {0, 0, 0x08, 0, 0, 1, 0, 0});
  list.add({0x001E, 2, false, medium.any()}, {0, 0, 0, 0});
  // CD track at once: guarded against underruns, rewritable, data block types 8 and 10.
  list.add({0x002D, 2, false, medium.any() && medium.writable}, {0x42, 0, 0x05, 0x00});
  // CD mastering: guarded, session at once, rewritable, cue sheets of 800 bytes at most.
  list.add({0x002E, 0, false, medium.any() && medium.writable}, {0x62, 0, 0x03, 0x20});
  // CD-RW medium write support: subtypes 0 to 2.
  list.add({0x0037, 0, false, medium.cdrw}, {0, 0x07, 0, 0});
  // Power management, time-out, real time streaming (speeds by SET STREAMING and GET PERFORMANCE,
  // buffer capacity).
  list.add({0x0100, 0, true, true}, {});
  list.add({0x0105, 1, true, true}, {0, 0, 0, 0});
  list.add({0x0107, 4, true, medium.any()}, {0x1B, 0, 0, 0});
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
  const auto& disc = command.disc();
  const CurrentMedium medium{loaded && disc.medium == MediumKind::CdR,
                             loaded && disc.medium == MediumKind::CdRw, !disc.finalized};
  FeatureList list(static_cast<FeatureScope>(scope), read16(command.block, 2));
  addFeatures(list, medium);
  list.addSerial(command.folder.drive.serial);
  AnswerBytes bytes;
  bytes.u32(static_cast<std::uint32_t>(4 + list.bytes().size())).u16(0);
  bytes.u16(loaded ? command.rules.profile() : 0U);
  bytes.bytes(list.bytes().view());
  return answer(command, bytes, read16(command.block, 7));
}

}  // namespace kelvane::virtualdrive
