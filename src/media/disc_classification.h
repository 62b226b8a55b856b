// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

namespace kelvane {

/// What a drive says of the medium in it.
struct MediumAnswers {
  std::optional<std::string> mediaType;  ///< One of DRDeviceMediaType…; absent where not known.
  bool mediaIsBlank = false;
  bool mediaIsAppendable = false;
};

/// A nominal capacity, as the record carries it and as a number of megabytes.
struct NominalCapacity {
  const char* totalMB;
  double megabytes;
};

/// Why a disc cannot be opened: keys of the strings table.
inline constexpr char kDiskFullKey[] = "diskfull";
inline constexpr char kUnsupportedDiskFormatKey[] = "unsupporteddiskformat";
inline constexpr char kUnsupportedDiskTypeKey[] = "unsupporteddisktype";

/// Whether the disc is treated as blank: it is, or it is a DVD-RW that still accepts data, whatever
/// files it holds.
bool isConsideredBlank(const MediumAnswers& answers);

/// Whether the medium is rewritable.
bool isRewritable(const std::optional<std::string>& mediaType);

/// 680.0 MB for CD-R and CD-RW, 4300.0 MB for DVD-R, DVD+RW and DVD-RW; none for other media.
std::optional<NominalCapacity> nominalCapacity(const std::optional<std::string>& mediaType);

/// Whether discs of this kind are refused. A DVD-R is, although it has a capacity; an unknown kind
/// is not.
bool isRefusedType(const std::optional<std::string>& mediaType);

/// The type without the prefix that all types share: "CDRW".
std::optional<std::string> shortMediaType(const std::optional<std::string>& mediaType);

/// What the volume of a disc with content is like.
struct VolumeAnswers {
  double megabytesUsed = 0;
  bool kelvaneCompliant = false;  ///< Mounted as ISO-9660, which alone can be continued.
};

/// Why a disc cannot be opened, as a key of the strings table; none for a usable disc. The kind of
/// the medium outweighs the layout of its volume, and that a full disc. `volume` is absent for a
/// disc considered blank, which skips both of the latter tests.
std::optional<std::string> refusalKey(const std::optional<std::string>& mediaType,
                                      const std::optional<VolumeAnswers>& volume);

}  // namespace kelvane
