// SPDX-License-Identifier: GPL-2.0-or-later
#include "owned_path.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "virtualdrive/file_descriptor.h"

namespace kelvane::kernelburner {
namespace {

std::string failureOf(const char* what, const std::filesystem::path& path) {
  return std::string(what) + " " + path.string() + ": " + std::strerror(errno);
}

}  // namespace

std::unique_ptr<OwnedFolder> OwnedFolder::make(const std::filesystem::path& path,
                                               std::string* error) {
  constexpr mode_t kMode = 0755;
  if (mkdir(path.c_str(), kMode) != 0) {
    *error = failureOf("mkdir", path);
    return nullptr;
  }
  return std::unique_ptr<OwnedFolder>(new OwnedFolder(path));
}

OwnedFolder::~OwnedFolder() {
  if (rmdir(path_.c_str()) != 0) {
    std::fprintf(stderr, "%s\n", failureOf("rmdir", path_).c_str());
  }
}

std::unique_ptr<OwnedLink> OwnedLink::make(const std::filesystem::path& target,
                                           const std::filesystem::path& path, std::string* error) {
  if (symlink(target.c_str(), path.c_str()) != 0) {
    *error = failureOf("symlink", path);
    return nullptr;
  }
  return std::unique_ptr<OwnedLink>(new OwnedLink(path));
}

OwnedLink::~OwnedLink() {
  if (unlink(path_.c_str()) != 0) {
    std::fprintf(stderr, "%s\n", failureOf("unlink", path_).c_str());
  }
}

bool writeAttribute(const std::filesystem::path& path, std::string_view value, std::string* error) {
  const virtualdrive::FileDescriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
  if (file && write(file.get(), value.data(), value.size()) == static_cast<ssize_t>(value.size())) {
    return true;
  }
  *error = failureOf("write", path);
  return false;
}

std::string readAttribute(const std::filesystem::path& path) {
  std::ifstream stream(path);
  std::string line;
  std::getline(stream, line);
  return line;
}

}  // namespace kelvane::kernelburner
