// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/copy_survey.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace kelvane {
namespace {

namespace fs = std::filesystem;

constexpr off_t kSizeLimit = off_t{1} << 32;

// The path without links, and without what is not there; the path itself where that fails.
std::string withoutLinks(const std::string& path) {
  std::error_code failure;
  const fs::path resolved = fs::weakly_canonical(path, failure);
  return failure ? path : resolved.string();
}

std::string parentOf(const std::string& path) {
  return fs::path(path).parent_path().string();
}

// The path without a slash behind it, so that its last component is the item's name.
std::string withName(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path.ends_with("/.") || path.ends_with("/..") ? withoutLinks(path) : path;
}

bool isWithin(const std::string& path, const std::string& folder) {
  return path == folder || path.starts_with(folder == "/" ? folder : folder + "/");
}

void addTree(const std::string& top, const struct stat& topStatus, const std::stop_token& stop,
             CopySurvey& survey) {
  const auto add = [&survey](const std::string& path, const struct stat& status) {
    if (auto failure = whyNotCopied(path, status)) {
      survey.failures.push_back(*failure);
    } else if (!S_ISDIR(status.st_mode)) {
      ++survey.files;
      if (S_ISREG(status.st_mode)) survey.bytes += static_cast<uint64_t>(status.st_size);
    }
  };
  add(top, topStatus);
  if (!S_ISDIR(topStatus.st_mode)) return;
  std::vector<std::string> folders = {top};
  while (!folders.empty() && !stop.stop_requested()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
      const std::string path = entry->path().string();
      struct stat status = {};
      if (stop.stop_requested()) return;
      if (lstat(path.c_str(), &status) != 0) continue;  // It fails again, and is told, when copied.
      add(path, status);
      if (S_ISDIR(status.st_mode)) folders.push_back(path);
    }
  }
}

// Why an item that was asked for is not copied, apart from what it is itself.
std::optional<CopyProblem> whyRefused(const std::string& source, const struct stat& status,
                                      const std::string& folder) {
  if (withoutLinks(parentOf(source)) == folder) return CopyProblem::AlreadyThere;
  if (S_ISDIR(status.st_mode) && isWithin(folder, withoutLinks(source))) {
    return CopyProblem::HoldsTheVolume;
  }
  return std::nullopt;
}

}  // namespace

std::optional<CopyFailure> whyNotCopied(const std::string& path, const struct stat& status) {
  if (S_ISREG(status.st_mode)) {
    if (status.st_size >= kSizeLimit) return CopyFailure{path, CopyProblem::TooLarge, 0};
    return std::nullopt;
  }
  if (S_ISDIR(status.st_mode) || S_ISLNK(status.st_mode)) return std::nullopt;
  return CopyFailure{path, CopyProblem::NotAFile, 0};
}

CopySurvey surveyCopy(const CopyRequest& request, const std::stop_token& stop) {
  CopySurvey survey;
  const std::string folder = withoutLinks(request.folder);
  for (const std::string& asked : request.sources) {
    const std::string source = withName(asked);
    struct stat status = {};
    if (!source.starts_with('/')) {
      survey.failures.push_back({source, CopyProblem::NotAbsolute, 0});
    } else if (lstat(source.c_str(), &status) != 0) {
      survey.failures.push_back({source, CopyProblem::NotReadable, errno});
    } else if (const auto problem = whyRefused(source, status, folder)) {
      survey.failures.push_back({source, *problem, 0});
    } else {
      const size_t failures = survey.failures.size();
      addTree(source, status, stop, survey);
      const bool isCopied = S_ISDIR(status.st_mode) || survey.failures.size() == failures;
      if (isCopied) survey.sources.push_back(source);
    }
  }
  return survey;
}

uint64_t freeRoomIn(const std::string& folder) {
  struct statvfs status = {};
  if (statvfs(folder.c_str(), &status) != 0) return UINT64_MAX;
  // A volume that has been filled beyond its end reports more free blocks than it has.
  if (status.f_bavail > status.f_blocks) return 0;
  return static_cast<uint64_t>(status.f_bavail) * status.f_frsize;
}

}  // namespace kelvane
