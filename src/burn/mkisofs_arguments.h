// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <vector>

namespace kelvane {

/// What the image of a CD session is built from.
struct SessionImageRequest {
  /// "0" for a disc without a session, else where the last session starts and the next one may,
  /// as in "0,11702".
  std::string sessionString;
  std::string volumeName;
  std::string imagePath;
  std::string hideListPath;
  /// The drive that holds the session to be continued.
  std::string deviceName;
  /// The overlay directory, the source of the new session.
  std::string tmpDirPath;
};

/// The arguments for mkisofs. The hide lists and the device are named only where a session is
/// continued.
std::vector<std::string> mkisofsArguments(const SessionImageRequest& request);

}  // namespace kelvane
