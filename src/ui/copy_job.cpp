// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/copy_job.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "ui/copy_survey.h"

namespace kelvane {
namespace {

namespace fs = std::filesystem;

constexpr size_t kChunkBytes = size_t{1} << 20;
constexpr mode_t kPermissions = 07777;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }
  bool isOpen() const { return number_ >= 0; }
  /// What was written may be refused as late as here.
  bool close() { return ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

bool isThere(const std::string& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0;
}

std::string nameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

// Where the ending of a name begins; its end where it has none. A leading dot begins a name.
size_t endingOf(const std::string& name) {
  const size_t dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 ? name.size() : dot;
}

// "a (2).txt" for "a.txt", with the first number that is free.
std::string freeNameFor(const std::string& folder, const std::string& name) {
  const size_t ending = endingOf(name);
  for (int number = 2;; ++number) {
    std::string candidate =
        name.substr(0, ending) + " (" + std::to_string(number) + ")" + name.substr(ending);
    if (!isThere(folder + "/" + candidate)) return candidate;
  }
}

// Links have times, too, and no mode of their own.
void keepTimes(const std::string& path, const struct stat& status) {
  const std::array<timespec, 2> times{status.st_atim, status.st_mtim};
  utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW);
}

CopyProblem problemOf(int errorNumber) {
  switch (errorNumber) {
    case ENOSPC:
    case EDQUOT:
      return CopyProblem::NoRoom;
    case EACCES:
    case EPERM:
      return CopyProblem::NotReadable;
    default:
      return CopyProblem::Failed;
  }
}

class CopyJob {
 public:
  CopyJob(const CopyRequest& request, CopyObserver& observer, const std::stop_token& stop)
      : request_(request), observer_(observer), stop_(stop), buffer_(kChunkBytes) {}

  CopyOutcome run() {
    CopySurvey survey = surveyCopy(request_, stop_);
    outcome_.failures = std::move(survey.failures);
    progress_.filesInAll = survey.files;
    progress_.bytesInAll = survey.bytes;
    const uint64_t room =
        std::min(freeRoomIn(request_.folder),
                 request_.scratchFolder.empty() ? UINT64_MAX : freeRoomIn(request_.scratchFolder));
    if (survey.bytes > room) {
      outcome_.missingRoom = {survey.bytes, room};
      return outcome_;
    }
    observer_.progressed(progress_);
    for (const std::string& source : survey.sources) {
      if (isCancelled()) break;
      made_.clear();
      copyItem(source, request_.folder);
      if (isCancelled()) takeBack();
    }
    outcome_.cancelled = isCancelled();
    return outcome_;
  }

 private:
  bool isCancelled() const { return cancelled_ || stop_.stop_requested(); }

  void fail(const std::string& path, int errorNumber) {
    outcome_.failures.push_back({path, problemOf(errorNumber), errorNumber});
  }

  void copyItem(const std::string& source, const std::string& folder) {
    struct stat status = {};
    if (lstat(source.c_str(), &status) != 0) {
      fail(source, errno);
      return;
    }
    if (whyNotCopied(source, status)) return;  // Told of already.
    if (S_ISDIR(status.st_mode)) {
      copyFolder(source, status, folder);
    } else {
      copyFileOrLink(source, status, folder);
    }
  }

  /// What is to be made of a name that is taken: the path to write to, and whether the item there
  /// goes. Empty where nothing is to be written.
  struct Target {
    std::string path;
    bool replaces = false;
  };
  std::optional<Target> targetFor(const std::string& name, const std::string& folder,
                                  bool canReplace) {
    const std::optional<ConflictAnswer> answer = observer_.ask({name, canReplace});
    if (!answer) cancelled_ = true;
    if (!answer || *answer == ConflictAnswer::Skip) return std::nullopt;
    if (*answer == ConflictAnswer::Replace && canReplace) return Target{folder + "/" + name, true};
    return Target{folder + "/" + freeNameFor(folder, name), false};
  }

  void copyFolder(const std::string& source, const struct stat& status, const std::string& folder) {
    std::string path = folder + "/" + nameOf(source);
    struct stat old = {};
    const bool isTaken = lstat(path.c_str(), &old) == 0;
    const bool joins = isTaken && S_ISDIR(old.st_mode);
    if (isTaken && !joins) {
      const std::optional<Target> target = targetFor(nameOf(source), folder, false);
      if (!target) return;
      path = target->path;
    }
    if (!joins && !makeFolder(path)) {
      fail(source, errno);
      return;
    }
    copyContents(source, path);
    if (joins || isCancelled()) return;
    chmod(path.c_str(), status.st_mode & kPermissions);
    keepTimes(path, status);
  }

  // Its own permissions may forbid to put anything into it; they come last.
  bool makeFolder(const std::string& path) {
    if (mkdir(path.c_str(), S_IRWXU) != 0) return false;
    made_.push_back(path);
    return true;
  }

  void copyContents(const std::string& source, const std::string& path) {
    std::vector<std::string> contents;
    std::error_code failure;
    for (fs::directory_iterator entry(source, failure), end; !failure && entry != end;
         entry.increment(failure)) {
      contents.push_back(entry->path().string());
    }
    if (failure) fail(source, failure.value());
    std::ranges::sort(contents);
    for (const std::string& item : contents) {
      if (isCancelled()) return;
      copyItem(item, path);
    }
  }

  void copyFileOrLink(const std::string& source, const struct stat& status,
                      const std::string& folder) {
    Target target{folder + "/" + nameOf(source), false};
    struct stat old = {};
    if (lstat(target.path.c_str(), &old) == 0) {
      const std::optional<Target> wanted = targetFor(nameOf(source), folder, !S_ISDIR(old.st_mode));
      if (!wanted) {
        skip(status);
        return;
      }
      target = *wanted;
    }
    progress_.name = nameOf(source);
    observer_.progressed(progress_);
    const std::string partial = folder + "/.kelvane-copy-" + std::to_string(getpid());
    const uint64_t before = progress_.bytes;
    const int error =
        S_ISLNK(status.st_mode) ? copyLink(source, partial) : copyContent(source, status, partial);
    if (error == 0 && !isCancelled()) keepTimes(partial, status);
    const bool isWhole = error == 0 && !isCancelled();
    if (isWhole && std::rename(partial.c_str(), target.path.c_str()) == 0) {
      if (!target.replaces) made_.push_back(target.path);
      ++outcome_.files;
    } else {
      if (!isCancelled()) fail(source, error != 0 ? error : errno);
      unlink(partial.c_str());
    }
    ++progress_.files;
    // Whatever became of it, it is done with.
    progress_.bytes = before + (S_ISREG(status.st_mode) ? bytesOf(status) : 0);
    observer_.progressed(progress_);
  }

  static uint64_t bytesOf(const struct stat& status) {
    return static_cast<uint64_t>(status.st_size);
  }

  void skip(const struct stat& status) {
    ++progress_.files;
    if (S_ISREG(status.st_mode)) progress_.bytes += bytesOf(status);
    observer_.progressed(progress_);
  }

  // Both give 0, or an errno value.
  static int copyLink(const std::string& source, const std::string& partial) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = readlink(source.c_str(), text.data(), text.size() - 1);
    if (length < 0) return errno;
    return symlink(text.data(), partial.c_str()) == 0 ? 0 : errno;
  }

  int copyContent(const std::string& source, const struct stat& status,
                  const std::string& partial) {
    const Descriptor from(open(source.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!from.isOpen()) return errno;
    Descriptor to(open(partial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                       S_IRUSR | S_IWUSR));
    if (!to.isOpen()) return errno;
    while (!isCancelled()) {
      const ssize_t count = read(from.number(), buffer_.data(), buffer_.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return errno;
      if (count == 0) break;
      if (const int error = writeAll(to.number(), static_cast<size_t>(count))) return error;
      progress_.bytes += static_cast<uint64_t>(count);
      observer_.progressed(progress_);
    }
    if (!to.close()) return errno;
    return chmod(partial.c_str(), status.st_mode & kPermissions) == 0 ? 0 : errno;
  }

  int writeAll(int descriptor, size_t size) const {
    for (size_t done = 0; done < size;) {
      const ssize_t count = write(descriptor, buffer_.data() + done, size - done);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return errno;
      if (count == 0) return ENOSPC;
      done += static_cast<size_t>(count);
    }
    return 0;
  }

  void takeBack() {
    // A folder that has its own permissions already may not let anything go.
    for (const std::string& path : made_) {
      std::error_code failure;
      if (fs::is_directory(fs::symlink_status(path, failure))) chmod(path.c_str(), S_IRWXU);
    }
    // A folder that something else was put into meanwhile stays.
    for (auto path = made_.rbegin(); path != made_.rend(); ++path) std::remove(path->c_str());
  }

  const CopyRequest& request_;
  CopyObserver& observer_;
  const std::stop_token& stop_;
  std::vector<char> buffer_;
  CopyProgress progress_;
  CopyOutcome outcome_;
  // What stands where nothing stood before, of the item that is copied now; folders before what is
  // in them.
  std::vector<std::string> made_;
  bool cancelled_ = false;
};

}  // namespace

CopyOutcome copyInto(const CopyRequest& request, CopyObserver& observer,
                     const std::stop_token& stop) {
  return CopyJob(request, observer, stop).run();
}

}  // namespace kelvane
