// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/medium_kind.h"

#include <array>

namespace kelvane::virtualdrive {
namespace {

struct NamedKind {
  MediumKind kind;
  std::string_view name;
};

constexpr std::array<NamedKind, 6> kKinds{{{MediumKind::CdR, "cd-r"},
                                           {MediumKind::CdRw, "cd-rw"},
                                           {MediumKind::DvdR, "dvd-r"},
                                           {MediumKind::DvdRw, "dvd-rw"},
                                           {MediumKind::DvdPlusRw, "dvd+rw"},
                                           {MediumKind::DvdPlusR, "dvd+r"}}};

}  // namespace

std::string_view nameOf(MediumKind kind) {
  for (const auto& entry : kKinds) {
    if (entry.kind == kind) return entry.name;
  }
  return {};
}

std::optional<MediumKind> mediumKindNamed(std::string_view name) {
  for (const auto& entry : kKinds) {
    if (entry.name == name) return entry.kind;
  }
  return std::nullopt;
}

CapacityBounds capacityBounds(MediumKind kind) {
  switch (kind) {
    case MediumKind::DvdR:
    case MediumKind::DvdRw:
      return {kDvdMinusCapacity, kDvdBlockSectors, kDvdMinusCapacity};
    case MediumKind::DvdPlusRw:
    case MediumKind::DvdPlusR:
      return {kDvdPlusCapacity, kDvdBlockSectors, kDvdPlusCapacity};
    default:
      return {kDefaultCdCapacity, kShortestCdTrack, kMaximalCdCapacity};
  }
}

}  // namespace kelvane::virtualdrive
