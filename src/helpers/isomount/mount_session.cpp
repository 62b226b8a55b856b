// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isomount/mount_session.h"

#include <spawn.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <string_view>

namespace kelvane::isomount {
namespace {

/// Commas separate options; libfuse takes one that follows a backslash as it is.
std::string escaped(std::string_view value) {
  std::string result;
  for (const char character : value) {
    if (character == ',' || character == '\\') result += '\\';
    result += character;
  }
  return result;
}

/// Whether this user may let others see the mount. Asked of the file itself, because fusermount3
/// refuses the whole mount where the answer is no.
bool otherUsersMayBeAllowed() {
  if (geteuid() == 0) return true;
  std::ifstream configuration("/etc/fuse.conf");
  for (std::string line; std::getline(configuration, line);) {
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos) continue;
    const std::size_t last = line.find_last_not_of(" \t\r");
    if (line.substr(first, last - first + 1) == "user_allow_other") return true;
  }
  return false;
}

std::string mountOptions(const std::string& subtype, const std::string& fsName) {
  std::string options = "ro,nosuid,nodev,default_permissions,subtype=" + subtype + ",fsname=";
  options += escaped(fsName);
  if (otherUsersMayBeAllowed()) options += ",allow_other";
  return options;
}

}  // namespace

std::unique_ptr<MountSession> MountSession::mount(IsoFileSystem& fileSystem,
                                                  const std::string& mountPoint,
                                                  const std::string& subtype,
                                                  const std::string& fsName) {
  std::string program = "isomount";
  std::string option = "-o";
  std::string options = mountOptions(subtype, fsName);
  char* words[] = {program.data(), option.data(), options.data()};
  fuse_args arguments = FUSE_ARGS_INIT(3, words);
  fuse_session* session = fuse_session_new(&arguments, &IsoFileSystem::operations(),
                                           sizeof(fuse_lowlevel_ops), &fileSystem);
  fuse_opt_free_args(&arguments);
  if (session == nullptr) return nullptr;
  std::unique_ptr<MountSession> result(new MountSession(session));
  if (fuse_session_mount(session, mountPoint.c_str()) != 0) return nullptr;
  result->mounted_ = true;
  return result;
}

MountSession::~MountSession() {
  if (mounted_) fuse_session_unmount(session_);
  fuse_session_destroy(session_);
}

bool MountSession::serve() {
  return fuse_session_loop(session_) == 0;
}

void unmountLeftOver(const std::string& mountPoint) {
  if (umount2(mountPoint.c_str(), MNT_DETACH) == 0) return;
  std::string words[] = {"fusermount3", "-u", "-z", "-q", "--", mountPoint};
  char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                       words[4].data(), words[5].data(), nullptr};
  pid_t child = 0;
  if (posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments, environ) == 0) {
    waitpid(child, nullptr, 0);
  }
}

}  // namespace kelvane::isomount
