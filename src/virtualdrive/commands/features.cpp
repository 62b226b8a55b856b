// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/commands/features.h"

#include <algorithm>
#include <array>

#include "virtualdrive/media/feature_codes.h"

namespace kelvane::virtualdrive {
namespace {

/// DVD+R, DVD+RW, DVD-RW sequential and restricted overwrite, DVD-R, DVD-ROM, CD-RW, CD-R, CD-ROM.
constexpr std::array<std::uint16_t, 9> kProfiles{0x1B, 0x1A, 0x14, 0x13, 0x11,
                                                 0x10, 0x0A, 0x09, 0x08};

/// Collects the features that a program has asked for.
class FeatureList {
 public:
  FeatureList(FeatureScope scope, unsigned from, std::vector<std::uint16_t> current)
      : scope_(scope), from_(from), current_(std::move(current)) {}

  /// A feature that the drive has always.
  void addPersistent(unsigned code, unsigned version, std::span<const std::uint8_t> data) {
    add(code, version << 2 | 0x03U, data);
  }
  void addPersistent(unsigned code, unsigned version, std::initializer_list<std::uint8_t> data) {
    addPersistent(code, version, std::span(data.begin(), data.size()));
  }
  /// A feature that is there with some discs only.
  void add(std::uint16_t code, unsigned version, std::initializer_list<std::uint8_t> data) {
    add(code, version << 2 | (isCurrent(code) ? 0x01U : 0U), std::span(data.begin(), data.size()));
  }
  bool isCurrent(std::uint16_t code) const {
    return std::ranges::find(current_, code) != current_.end();
  }
  const AnswerBytes& bytes() const { return bytes_; }

 private:
  void add(unsigned code, unsigned flags, std::span<const std::uint8_t> data) {
    if (scope_ == FeatureScope::One ? code != from_ : code < from_) return;
    if (scope_ == FeatureScope::Current && (flags & 0x01) == 0) return;
    bytes_.u16(code).u8(flags).u8(static_cast<unsigned>(data.size())).bytes(data);
  }

  FeatureScope scope_;
  unsigned from_;
  std::vector<std::uint16_t> current_;
  AnswerBytes bytes_;
};

void addProfiles(FeatureList& list, std::uint16_t current) {
  AnswerBytes profiles;
  for (const auto profile : kProfiles) {
    profiles.u16(profile).u8(profile == current ? 1 : 0).u8(0);
  }
  list.addPersistent(0x0000, 0, profiles.view());
}

void addReading(FeatureList& list, bool dvd) {
  // One error correction block is read at a time: 16 sectors of a DVD, one of a CD.
  const std::uint8_t blocking = dvd ? kDvdBlockSectors : 1;
  list.add(kRandomReadable, 0, {0, 0, 0x08, 0, 0, blocking, 0, 0});
  list.add(kCdRead, 2, {0, 0, 0, 0});   // no CD-Text, no C2 flags
  list.add(kDvdRead, 1, {1, 0, 0, 0});  // in all variants of MMC-5
}

void addDvdWriting(FeatureList& list, Lba capacity) {
  AnswerBytes last;
  last.u32(static_cast<std::uint32_t>(capacity - 1));
  const auto lba = last.view();
  list.add(kRandomWritable, 1, {lba[0], lba[1], lba[2], lba[3], 0, 0, 0x08, 0, 0, 1, 0, 0});
  // Data block type 8, guarded against underruns, one link size: 16.
  list.add(kIncrementalStreamingWritable, 1, {0x01, 0x00, 0x01, 1, kDvdBlockSectors, 0, 0, 0});
  list.add(kFormattable, 0, {});
  list.add(kRestrictedOverwrite, 0, {});
  list.add(kDvdPlusRwSupport, 1, {0x01, 0, 0, 0});
  list.add(kDvdPlusRSupport, 0, {0x01, 0, 0, 0});
  // The intermediate state, and blanking.
  list.add(kRigidRestrictedOverwrite, 0, {0x03, 0, 0, 0});
}

void addCdAndDvdMinusWriting(FeatureList& list) {
  // Guarded against underruns, rewritable, data block types 0, 8 and 10.
  list.add(kCdTrackAtOnce, 2, {0x42, 0, 0x05, 0x01});
  // Guarded, session at once, rewritable, cue sheets of 800 bytes at most.
  list.add(kCdMastering, 0, {0x62, 0, 0x03, 0x20});
  // Guarded, DVD-RW too.
  list.add(kDvdMinusWrite, 1, {0x42, 0, 0, 0});
  // Subtypes 0 to 2.
  list.add(kCdRwMediaWrite, 0, {0, 0x07, 0, 0});
}

void addEverydayFeatures(FeatureList& list, const std::string& serial) {
  // Power management, time-out, real time streaming (speeds by SET STREAMING and GET PERFORMANCE,
  // buffer capacity), serial number.
  list.addPersistent(0x0100, 0, {});
  list.addPersistent(0x0105, 1, {0, 0, 0, 0});
  list.addPersistent(0x0107, 4, {0x1B, 0, 0, 0});
  AnswerBytes text;
  text.text(serial, (serial.size() + 3) / 4 * 4);
  list.addPersistent(0x0108, 0, text.view());
}

}  // namespace

AnswerBytes featureDescriptors(const Command& command, FeatureScope scope, unsigned from) {
  const bool loaded = !command.folder.drive.trayOpen;
  const auto& disc = command.disc();
  auto current = loaded ? command.rules.currentFeatures(disc) : std::vector<std::uint16_t>();
  FeatureList list(scope, from, std::move(current));
  addProfiles(list, loaded ? command.rules.profile() : std::uint16_t{0});
  // Core: SCSI family, with the device busy event. Morphing: asynchronous operation not supported.
  list.addPersistent(0x0001, 2, {0, 0, 0, 1, 0x01, 0, 0, 0});
  list.addPersistent(0x0002, 1, {0x02, 0, 0, 0});
  // Removable medium: a tray that opens and loads and can be locked.
  list.addPersistent(0x0003, 1, {0x39, 0, 0, 0});
  addReading(list, !isCd(disc.medium));
  addDvdWriting(list, disc.capacity);
  addCdAndDvdMinusWriting(list);
  addEverydayFeatures(list, command.folder.drive.serial);
  return list.bytes();
}

}  // namespace kelvane::virtualdrive
