// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/volume_runner.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <sstream>
#include <utility>

namespace kelvane::model {
namespace {

constexpr int kSafe = O_NOFOLLOW | O_CLOEXEC;

Outcome outcomeOf(int status) {
  return status == 0 ? Outcome{} : Outcome::failure(errno);
}

std::string contentOf(int descriptor) {
  std::string content;
  char buffer[8192];
  ssize_t count = 0;
  while ((count = pread(descriptor, buffer, sizeof(buffer), static_cast<off_t>(content.size()))) >
         0) {
    content.append(buffer, static_cast<size_t>(count));
  }
  if (count < 0) content += "<" + std::string(strerrorname_np(errno)) + ">";
  return content;
}

std::vector<std::string> namesIn(const std::string& directory) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(directory.c_str()), closedir);
  while (const dirent* entry = open == nullptr ? nullptr : readdir(open.get())) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string textOf(const std::string& link) {
  char text[PATH_MAX];
  const ssize_t length = readlink(link.c_str(), text, sizeof(text));
  return length < 0 ? std::string("<unreadable>") : std::string(text, static_cast<size_t>(length));
}

Entry readEntry(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0) return {'?', {}, 0, {}};
  if (S_ISDIR(status.st_mode)) return {'d', {}, status.st_mode & 07777, {}};
  if (S_ISLNK(status.st_mode)) return {'l', textOf(path), 0777, {}};
  const int descriptor = ::open(path.c_str(), O_RDONLY | kSafe);
  if (descriptor < 0) return {'?', strerrorname_np(errno), 0, {}};
  Entry entry{'f', contentOf(descriptor), status.st_mode & 07777, status.st_mtim.tv_sec};
  close(descriptor);
  return entry;
}

void addTree(const std::string& root, const std::string& below, Tree* tree) {
  for (const std::string& name : namesIn(root + below)) {
    const std::string path = below + "/" + name;
    Entry entry = readEntry(root + path);
    const bool isDirectory = entry.type == 'd';
    if (!tree->emplace(path, std::move(entry)).second)
      (*tree)[path + " (twice)"] = {'?', {}, 0, {}};
    if (isDirectory) addTree(root, path, tree);
  }
}

std::string describe(const Entry& entry, Compare compare) {
  std::ostringstream text;
  text << entry.type;
  if (compare == Compare::Everything) text << " " << std::oct << entry.mode << std::dec;
  if (entry.type == 'f') text << " " << summaryOf(entry.content);
  if (entry.type == 'l') text << " -> \"" << readable(entry.content) << "\"";
  return text.str();
}

}  // namespace

Outcome VolumeRunner::openAndWrite(const Step& step, int flags) const {
  const int descriptor = ::open(at(step.path).c_str(), flags | kSafe, step.mode);
  if (descriptor < 0) return Outcome::failure(errno);
  const std::string bytes = bytesOf(step);
  const ssize_t count = (flags & O_APPEND) != 0
                            ? ::write(descriptor, bytes.data(), bytes.size())
                            : pwrite(descriptor, bytes.data(), bytes.size(), step.offset);
  Outcome outcome = count < 0 ? Outcome::failure(errno) : Outcome{};
  if (count >= 0 && static_cast<size_t>(count) != bytes.size()) outcome.detail = "short write";
  close(descriptor);
  return outcome;
}

Outcome VolumeRunner::read(const Step& step) const {
  const int descriptor = ::open(at(step.path).c_str(), O_RDONLY | kSafe);
  if (descriptor < 0) return Outcome::failure(errno);
  struct stat status = {};
  fstat(descriptor, &status);
  Outcome outcome{0, summaryOf(contentOf(descriptor)), {}, true};
  if (S_ISDIR(status.st_mode)) outcome = Outcome::failure(EISDIR);
  close(descriptor);
  return outcome;
}

Outcome VolumeRunner::stat(const Step& step) const {
  struct stat status = {};
  if (lstat(at(step.path).c_str(), &status) != 0) return Outcome::failure(errno);
  char text[64];
  const mode_t mode = status.st_mode & 07777;
  if (S_ISDIR(status.st_mode)) {
    std::snprintf(text, sizeof(text), "d %o", mode);
  } else if (S_ISLNK(status.st_mode)) {
    std::snprintf(text, sizeof(text), "l %zu", static_cast<size_t>(status.st_size));
  } else {
    std::snprintf(text, sizeof(text), "f %o %zu", mode, static_cast<size_t>(status.st_size));
  }
  return {0, text, status.st_mtim.tv_sec, true};
}

Outcome VolumeRunner::list(const Step& step) const {
  const int descriptor = ::open(at(step.path).c_str(), O_RDONLY | O_DIRECTORY | kSafe);
  if (descriptor < 0) return Outcome::failure(errno);
  close(descriptor);
  std::string names;
  for (const std::string& name : namesIn(at(step.path))) names += readable(name) + "|";
  return {0, names, {}, true};
}

Outcome VolumeRunner::setTime(const Step& step) const {
  const timespec time{static_cast<time_t>(step.seed), 0};
  const timespec times[2] = {time, time};
  return outcomeOf(utimensat(AT_FDCWD, at(step.path).c_str(), times, AT_SYMLINK_NOFOLLOW));
}

Outcome VolumeRunner::useHandle(const Step& step) {
  int& handle = handles_.at(step.handle);
  if (step.kind == StepKind::HandleOpen) {
    const int access = step.isForWriting ? O_RDWR : O_RDONLY;
    handle = ::open(at(step.path).c_str(), access | kSafe);
    return handle < 0 ? Outcome::failure(errno) : Outcome{};
  }
  if (step.kind == StepKind::HandleRead) return {0, summaryOf(contentOf(handle)), {}, true};
  if (step.kind == StepKind::HandleClose) return outcomeOf(close(std::exchange(handle, -1)));
  const std::string bytes = bytesOf(step);
  const ssize_t count = pwrite(handle, bytes.data(), bytes.size(), step.offset);
  if (count < 0) return Outcome::failure(errno);
  return {0, static_cast<size_t>(count) == bytes.size() ? "" : "short write", {}, true};
}

void VolumeRunner::closeHandles() {
  for (int& handle : handles_) {
    if (handle >= 0) close(std::exchange(handle, -1));
  }
}

Outcome VolumeRunner::apply(const Step& step) {
  const std::string path = at(step.path);
  switch (step.kind) {
    case StepKind::Create:
      return openAndWrite(step, O_WRONLY | O_CREAT | O_EXCL);
    case StepKind::Replace:
      return openAndWrite(step, O_WRONLY | O_CREAT | O_TRUNC);
    case StepKind::WriteAt:
      return openAndWrite(step, O_WRONLY);
    case StepKind::Append:
      return openAndWrite(step, O_WRONLY | O_APPEND | O_CREAT);
    case StepKind::Truncate:
      return outcomeOf(::truncate(path.c_str(), step.offset));
    case StepKind::Read:
      return read(step);
    case StepKind::Stat:
      return stat(step);
    case StepKind::ReadLink: {
      char text[PATH_MAX];
      const ssize_t length = readlink(path.c_str(), text, sizeof(text));
      if (length < 0) return Outcome::failure(errno);
      const std::string shown(text, static_cast<size_t>(length));
      return {0, "\"" + readable(shown) + "\"", {}, true};
    }
    case StepKind::List:
      return list(step);
    case StepKind::StatFs: {
      struct statvfs status = {};
      if (statvfs(root_.c_str(), &status) != 0) return Outcome::failure(errno);
      return {0, std::to_string(status.f_blocks) + " " + std::to_string(status.f_bfree), {}, true};
    }
    case StepKind::MakeDirectory:
      return outcomeOf(mkdir(path.c_str(), step.mode));
    case StepKind::RemoveDirectory:
      return outcomeOf(rmdir(path.c_str()));
    case StepKind::Unlink:
      return outcomeOf(unlink(path.c_str()));
    case StepKind::Rename:
      return outcomeOf(std::rename(path.c_str(), at(step.other).c_str()));
    case StepKind::RenameNoReplace:
      return outcomeOf(
          renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, at(step.other).c_str(), RENAME_NOREPLACE));
    case StepKind::SymLink:
      return outcomeOf(symlink(step.other.c_str(), path.c_str()));
    case StepKind::ChangeMode:
      return outcomeOf(chmod(path.c_str(), step.mode));
    case StepKind::SetTime:
      return setTime(step);
    case StepKind::HandleOpen:
    case StepKind::HandleWrite:
    case StepKind::HandleRead:
    case StepKind::HandleClose:
      return useHandle(step);
    case StepKind::Reopen:
      return {};
  }
  return Outcome::undefined();
}

Tree readTree(const std::string& root) {
  Tree tree;
  addTree(root, "", &tree);
  return tree;
}

std::string differences(const Tree& expected, const Tree& actual, Compare compare) {
  std::ostringstream lines;
  for (const auto& [path, entry] : expected) {
    const auto other = actual.find(path);
    const std::string wanted = describe(entry, compare);
    const std::string found = other == actual.end() ? "missing" : describe(other->second, compare);
    if (wanted != found || (other != actual.end() && entry.content != other->second.content)) {
      lines << "  " << readable(path) << ": " << found << ", expected: " << wanted << "\n";
    }
  }
  for (const auto& [path, entry] : actual) {
    if (expected.contains(path)) continue;
    lines << "  " << readable(path) << ": " << describe(entry, compare) << ", not expected\n";
  }
  return lines.str();
}

}  // namespace kelvane::model
