// SPDX-License-Identifier: GPL-2.0-or-later
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

#include "virtualdrive/file_descriptor.h"
#include "virtualdrive/tool/commands.h"
#include "virtualdrive/tool/disc_volume.h"

namespace kelvane::virtualdrive::tool {
namespace {

using isovolume::Attributes;
using isovolume::IsoVolume;
using isovolume::NodeId;

constexpr std::size_t kPieceBytes = 1 << 20;

/// Copies a tree out of a volume. Every item is made below the descriptor of its directory and must
/// be new, so that no link on the disc or in the target leads elsewhere.
class Extraction {
 public:
  explicit Extraction(IsoVolume& volume) : volume_(volume), piece_(kPieceBytes) {}

  void copyDirectory(NodeId directory, int target, const std::string& path) {
    const auto status = volume_.readDirectory(
        directory, 0, [&](const isovolume::DirectoryEntry& entry, std::uint64_t) {
          copyEntry(entry, target, path + "/" + std::string(entry.name));
          return true;
        });
    if (status != isovolume::Status::ok) report(path, "damaged on the disc");
  }
  bool complete() const { return complete_; }

 private:
  void copyEntry(const isovolume::DirectoryEntry& entry, int target, const std::string& path) {
    const auto attributes = volume_.attributes(entry.node);
    const std::string name(entry.name);
    if (S_ISDIR(attributes.mode))
      return copySubdirectory(entry.node, attributes, target, name, path);
    if (S_ISREG(attributes.mode)) return copyFile(entry.node, attributes, target, name, path);
    if (S_ISLNK(attributes.mode)) return copyLink(entry.node, attributes, target, name, path);
    report(path, "neither file, folder nor link");
  }

  void copySubdirectory(NodeId node, const Attributes& attributes, int target,
                        const std::string& name, const std::string& path) {
    if (mkdirat(target, name.c_str(), 0700) != 0) return reportErrno(path);
    const FileDescriptor made(
        openat(target, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!made) return reportErrno(path);
    copyDirectory(node, made.get(), path);
    fchmod(made.get(), attributes.mode & 0777);
    setTimes(made.get(), attributes);
  }

  void copyFile(NodeId node, const Attributes& attributes, int target, const std::string& name,
                const std::string& path) {
    const FileDescriptor file(
        openat(target, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) return reportErrno(path);
    for (std::uint64_t offset = 0; offset < attributes.size;) {
      std::size_t length = 0;
      const auto status = volume_.readFile(node, offset, piece_, &length);
      if (status != isovolume::Status::ok || length == 0)
        return report(path, "damaged on the disc");
      if (!writeAll(file.get(), std::span(piece_).first(length))) return reportErrno(path);
      offset += length;
    }
    fchmod(file.get(), attributes.mode & 0777);
    setTimes(file.get(), attributes);
  }

  void copyLink(NodeId node, const Attributes& attributes, int target, const std::string& name,
                const std::string& path) {
    std::string to;
    if (volume_.readLink(node, &to) != isovolume::Status::ok)
      return report(path, "damaged on the disc");
    if (symlinkat(to.c_str(), target, name.c_str()) != 0) return reportErrno(path);
    const auto times = timesOf(attributes);
    utimensat(target, name.c_str(), times.data(), AT_SYMLINK_NOFOLLOW);
  }

  static std::array<timespec, 2> timesOf(const Attributes& attributes) {
    return {timespec{attributes.accessed, 0}, timespec{attributes.modified, 0}};
  }
  static void setTimes(int descriptor, const Attributes& attributes) {
    futimens(descriptor, timesOf(attributes).data());
  }

  static bool writeAll(int descriptor, std::span<const std::uint8_t> data) {
    while (!data.empty()) {
      const auto count = write(descriptor, data.data(), data.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return false;
      data = data.subspan(static_cast<std::size_t>(count));
    }
    return true;
  }

  void report(const std::string& path, const char* why) {
    complain(path + ": " + why);
    complete_ = false;
  }
  void reportErrno(const std::string& path) { report(path, std::strerror(errno)); }

  IsoVolume& volume_;
  std::vector<std::uint8_t> piece_;
  bool complete_ = true;
};

}  // namespace

int extractFiles(const std::filesystem::path& disc, const std::filesystem::path& target,
                 std::optional<int> session) {
  int status = kFailed;
  const auto opened = openVolume(disc, session, &status);
  if (!opened) return status;
  if (mkdir(target.c_str(), 0777) != 0 && errno != EEXIST) {
    complain("“" + target.string() + "” cannot be made: " + std::strerror(errno) + ".");
    return kFailed;
  }
  const FileDescriptor folder(open(target.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) {
    complain("“" + target.string() + "” is no folder that can be opened.");
    return kFailed;
  }
  Extraction extraction(*opened->volume);
  extraction.copyDirectory(isovolume::kRootNode, folder.get(), "");
  return extraction.complete() ? kDone : kFailed;
}

}  // namespace kelvane::virtualdrive::tool
