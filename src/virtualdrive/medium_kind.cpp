// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/medium_kind.h"

#include <array>

namespace kelvane::virtualdrive {
namespace {

struct NamedKind {
  MediumKind kind;
  std::string_view name;
};

constexpr std::array<NamedKind, 5> kKinds{{{MediumKind::CdR, "cd-r"},
                                           {MediumKind::CdRw, "cd-rw"},
                                           {MediumKind::DvdR, "dvd-r"},
                                           {MediumKind::DvdRw, "dvd-rw"},
                                           {MediumKind::DvdPlusRw, "dvd+rw"}}};

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

bool isEmulated(MediumKind kind) {
  return kind == MediumKind::CdR || kind == MediumKind::CdRw;
}

CapacityBounds capacityBounds(MediumKind) {
  return {kDefaultCdCapacity, kShortestCdTrack, kMaximalCdCapacity};
}

}  // namespace kelvane::virtualdrive
