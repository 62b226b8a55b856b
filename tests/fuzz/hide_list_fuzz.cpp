// SPDX-License-Identifier: GPL-2.0-or-later
// Feeds names to the hide-list writer. All bytes at once are a path for hidePattern; then the bytes
// behind the first, cut at each NUL, are paths of a disc, which is made, and the delegate deletes
// its items and unmounts. Bits of the first byte: 1 every item is deleted twice, 2 its parent is
// deleted behind it, 4 its parent is deleted before it, 8 an overlay copy of it is made first.
//
// What must hold: none of the eight characters is left in a pattern, in either case and either
// form, and everything else is left as it was; the pattern matches its own path as mkisofs matches,
// unless the path holds a backslash; the file has the patterns of all deletions in their order; a
// placeholder stands where nothing else deleted is above or below it.
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "overlayfs/burn_fs_delegate.h"
#include "overlayfs/hide_pattern.h"
#include "platform/foundation/system_log.h"

namespace kelvane::fuzz {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostPaths = 12;
constexpr std::size_t kLongestName = 255;
/// Where a path is longer the tools' own limits begin.
constexpr std::size_t kLongestPath = 1024;
constexpr std::string_view kOverlayName = "812";

/// Where temporary folders are made: in memory where that is possible, unless told otherwise.
std::string temporaryBase() {
  const char* const told = std::getenv("TMPDIR");
  if (told != nullptr) return told;
  return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
}

/// A folder for one process, removed at its end.
class Room {
 public:
  Room() {
    std::string name = temporaryBase() + "/kelvanefs-fuzz-XXXXXX";
    FUZZ_CHECK(mkdtemp(name.data()) != nullptr);
    path_ = name;
    setenv("KELVANEFS_PREFIX", path_.c_str(), 1);
    fs::create_directory(path_ / "tmp");
  }
  ~Room() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  Room(const Room&) = delete;
  Room& operator=(const Room&) = delete;

  [[nodiscard]] fs::path overlay() const { return path_ / "tmp" / kOverlayName; }
  [[nodiscard]] fs::path disc() const { return path_ / "disc"; }
  [[nodiscard]] fs::path hideListFile() const { return path_ / "tmp" / ".812.hide"; }

  /// Empties the trees for the next run.
  void sweep() const {
    fs::remove_all(overlay());
    fs::remove_all(disc());
    fs::remove(hideListFile());
    fs::create_directory(disc());
  }

 private:
  fs::path path_;
};

/// The bytes of the form of one of the eight characters with which `text` begins; 0 when it begins
/// with none. Written without tables, apart from what is tested.
std::size_t specialLength(std::string_view text) {
  const auto byte = [text](std::size_t index) {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0u;
  };
  if (byte(0) == '{' || byte(0) == '}' || byte(0) == '[' || byte(0) == ']') return 1;
  if (byte(0) == 0xC3) {
    const unsigned lower = byte(1) | 0x20;
    if (lower == 0xA4 || lower == 0xB6 || lower == 0xBC) return 2;
    if (byte(1) == 0x9F) return 2;
  }
  if (byte(0) == 0xE1 && byte(1) == 0xBA && byte(2) == 0x9E) return 3;  // capital sharp s
  const unsigned letter = byte(0) | 0x20;
  const bool isVowel = letter == 'a' || letter == 'o' || letter == 'u';
  return isVowel && byte(1) == 0xCC && byte(2) == 0x88 ? 3 : 0;
}

/// Reads path and pattern side by side.
void checkPattern(std::string_view path, std::string_view pattern) {
  const std::string_view whole = pattern;
  FUZZ_CHECK(pattern.size() <= path.size());
  for (std::string_view rest = path; !rest.empty();) {
    FUZZ_CHECK(!pattern.empty());
    const std::size_t length = specialLength(rest);
    FUZZ_CHECK(pattern.front() == (length > 0 ? '*' : rest.front()));
    rest.remove_prefix(length > 0 ? length : 1);
    pattern.remove_prefix(1);
  }
  FUZZ_CHECK(pattern.empty());
  for (std::size_t index = 0; index < whole.size(); ++index) {
    // What a replacement brings together may form a character only with bytes that are no UTF-8.
    FUZZ_CHECK(specialLength(whole.substr(index)) == 0);
  }
}

/// mkisofs compares with fnmatch, where "*" does not match a slash.
void checkMatch(const std::string& path, const std::string& pattern) {
  if (path.find('\\') != std::string::npos || path.find('\0') != std::string::npos) return;
  FUZZ_CHECK(fnmatch(pattern.c_str(), path.c_str(), FNM_PATHNAME) == 0);
}

bool isUsable(std::string_view path) {
  if (path.size() < 2 || path.size() > kLongestPath || path.front() != '/') return false;
  for (std::size_t begin = 1; begin <= path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    const std::string_view name = path.substr(begin, end - begin);
    if (name.empty() || name.size() > kLongestName || name == "." || name == "..") return false;
    begin = end + 1;
  }
  return true;
}

std::vector<std::string> pathsIn(std::string_view bytes) {
  std::vector<std::string> paths;
  while (!bytes.empty() && paths.size() < kMostPaths) {
    const std::size_t end = std::min(bytes.find('\0'), bytes.size());
    const std::string path = "/" + std::string(bytes.substr(0, end));
    if (isUsable(path)) paths.push_back(path);
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  return paths;
}

void touch(const fs::path& file) {
  const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (descriptor >= 0) close(descriptor);
}

std::string parentOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

/// One disc, its volume and the deletions on it.
class Session {
 public:
  explicit Session(const Room& room)
      : room_(room),
        delegate_(std::make_unique<BurnFSDelegate>(room.overlay().string(), room.disc().string(),
                                                   OverlayInfo{700, 0})) {}

  void putOnDisc(const std::string& path) {
    std::error_code ignored;
    fs::create_directories(room_.disc().string() + parentOf(path), ignored);
    touch(room_.disc().string() + path);
  }

  /// Which takes it from the hide list.
  void copyToOverlay(const std::string& path) {
    std::unique_ptr<UserData> file;
    std::erase(deleted_, path);
    if (delegate_->createFileAtPath(path, {}, &file, nullptr)) {
      delegate_->releaseFileAtPath(path, std::move(file));
    }
  }

  void remove(const std::string& path) {
    if (path.empty()) return;
    struct stat status = {};
    const bool onDisc = lstat((room_.disc().string() + path).c_str(), &status) == 0;
    if (delegate_->removeItemAtPath(path, nullptr) && onDisc) deleted_.push_back(path);
  }

  void unmountAndCheck() {
    delegate_->willUnmount();
    checkHideList();
    for (const std::string& path : deleted_) {
      if (standsAlone(path)) checkPlaceholder(path);
    }
  }

 private:
  void checkHideList() {
    std::ifstream file(room_.hideListFile(), std::ios::binary);
    FUZZ_CHECK(file.is_open());
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::string expected;
    for (std::size_t index = 0; index < deleted_.size(); ++index) {
      const std::string placeholder = room_.overlay().string() + deleted_[index];
      const std::string pattern = hidePattern(placeholder);
      checkPattern(placeholder, pattern);
      checkMatch(placeholder, pattern);
      expected += (index > 0 ? "\n" : "") + pattern;
    }
    FUZZ_CHECK(text == expected);
  }

  /// Whether no other deleted path is above or below `path`, nor what is tidied away at the end.
  [[nodiscard]] bool standsAlone(const std::string& path) const {
    for (const std::string& other : deleted_) {
      if (other.starts_with(path + "/") || path.starts_with(other + "/")) return false;
    }
    const std::string top = path.substr(0, std::min(path.find('/', 1), path.size()));
    return top != "/.Trashes" && top != "/._.Trashes" && top != "/.TemporaryItems" &&
           top != "/._.TemporaryItems";
  }

  void checkPlaceholder(const std::string& path) const {
    struct stat status = {};
    FUZZ_CHECK(lstat((room_.overlay().string() + path).c_str(), &status) == 0);
    FUZZ_CHECK(S_ISREG(status.st_mode) && status.st_size == 0);
  }

  const Room& room_;
  std::unique_ptr<BurnFSDelegate> delegate_;
  std::vector<std::string> deleted_;
};

void deleteAndUnmount(const Room& room, unsigned bits, const std::vector<std::string>& paths) {
  const SystemLogRedirection silence([](const std::string&) {});
  room.sweep();
  Session session(room);
  for (const std::string& path : paths) session.putOnDisc(path);
  for (const std::string& path : paths) {
    if ((bits & 8) != 0) session.copyToOverlay(path);
    if ((bits & 4) != 0) session.remove(parentOf(path));
    session.remove(path);
    if ((bits & 1) != 0) session.remove(path);
    if ((bits & 2) != 0) session.remove(parentOf(path));
  }
  session.unmountAndCheck();
}

}  // namespace
}  // namespace kelvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelvane::fuzz;
  static const Room room;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  checkPattern(bytes, kelvane::hidePattern(bytes));
  if (bytes.empty()) return 0;
  const auto paths = pathsIn(bytes.substr(1));
  if (!paths.empty()) deleteAndUnmount(room, data[0], paths);
  return 0;
}
