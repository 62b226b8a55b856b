// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

/// What stands at a path whose name others can foresee. "/tmp" is everybody's: another user may
/// have put a file, a directory or a symbolic link there before us.
enum class PathState {
  Free,     ///< Nothing.
  Own,      ///< What was asked for, and this user's.
  Foreign,  ///< Anything else: somebody else's, of another kind, a link, a file with second names.
};

/// Whether a directory of this user's stands at `path`. No link is followed.
PathState directoryState(const std::string& path);

/// Whether a plain file of this user's, with this one name, stands at `path`. No link is followed.
PathState plainFileState(const std::string& path);

/// Makes an empty file that only this user can read, or takes the own one that stands there. False,
/// and nothing is changed, where something foreign does, or where no file can be made (errno).
///
/// In a folder with the sticky bit nobody else can replace the file from then on, so that a program
/// which opens it by its name finds it.
bool makeOwnFile(const std::string& path);

/// Removes what stands at `path`, a directory with its contents, if it is this user's. Of a
/// symbolic link, the link. Failures are ignored.
void removeOwn(const std::string& path);

}  // namespace kelvane
