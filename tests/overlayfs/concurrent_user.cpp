// SPDX-License-Identifier: GPL-2.0-or-later
// concurrent_user FOLDER NUMBER ROUNDS: one of several programs that use a volume at the same time.
//
// In FOLDER it keeps files of its own in "own<NUMBER>", which must always be as it left them; it
// replaces and reads files in "shared", which must always be whole; it adds records to "log"; it
// moves items between "pool/a" and "pool/b", where each must be at one place; and it claims items
// of "claims", each of which only one program may get. Status 1, with a sentence, where something
// is not so.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <random>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr int kOwnFiles = 12;
constexpr int kSharedFiles = 3;
constexpr int kPoolItems = 10;
constexpr int kClaims = 40;

[[noreturn]] void fail(const std::string& what, const std::string& path) {
  std::fprintf(stderr, "%s: %s (%s)\n", path.c_str(), what.c_str(), std::strerror(errno));
  std::exit(1);
}

/// The content of a file; empty where there is none.
std::optional<std::string> contentOf(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0 && errno == ENOENT) return std::nullopt;
  if (file < 0) fail("cannot be opened", path);
  std::string content;
  std::array<char, 8192> buffer;
  ssize_t count = 0;
  while ((count = read(file, buffer.data(), buffer.size())) > 0) {
    content.append(buffer.data(), static_cast<size_t>(count));
  }
  if (count < 0) fail("cannot be read", path);
  close(file);
  return content;
}

void writeAll(const std::string& path, int flags, const std::string& content) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0644);
  if (file < 0) fail("cannot be opened for writing", path);
  if (write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
    fail("cannot be written", path);
  }
  if (close(file) != 0) fail("cannot be closed", path);
}

class User {
 public:
  User(std::string folder, int number)
      : folder_(std::move(folder)),
        number_(number),
        own_(folder_ + "/own" + std::to_string(number)),
        random_(static_cast<unsigned>(number)) {
    if (mkdir(own_.c_str(), 0755) != 0) fail("cannot be made", own_);
  }

  void doOneRound(int round) {
    round_ = round;
    switch (below(6)) {
      case 0:
      case 1:
        changeOwnFile();
        break;
      case 2:
        replaceShared();
        break;
      case 3:
        readShared();
        break;
      case 4:
        movePoolItem();
        break;
      default:
        claim();
    }
    addToLog();
    if (round % 8 == 0) checkOwnFiles();
  }

  void checkOwnFiles() {
    size_t listed = 0;
    for (const auto& entry : fs::directory_iterator(own_)) {
      ++listed;
      if (!model_.contains(entry.path().filename())) fail("is there again", entry.path());
    }
    if (listed != model_.size()) fail("does not list all files", own_);
    for (const auto& [name, content] : model_) {
      if (contentOf(own_ + "/" + name) != content) fail("has other bytes", own_ + "/" + name);
    }
  }

 private:
  unsigned below(unsigned limit) {
    return std::uniform_int_distribution<unsigned>(0, limit - 1)(random_);
  }
  std::string line() const {
    return "program " + std::to_string(number_) + " round " + std::to_string(round_) + "\n";
  }
  std::string lines(unsigned count) const {
    std::string text;
    for (unsigned index = 0; index < count; ++index) text += line();
    return text;
  }
  std::string anyOwnName() { return "f" + std::to_string(below(kOwnFiles)); }

  void changeOwnFile() {
    const std::string name = anyOwnName();
    const std::string path = own_ + "/" + name;
    const std::string content = lines(below(500));
    switch (below(5)) {
      case 0:
        writeAll(path, O_APPEND, content);
        model_[name] += content;
        break;
      case 1:
        if (unlink(path.c_str()) != (model_.erase(name) == 1 ? 0 : -1)) fail("unlink", path);
        break;
      case 2:
        renameOwnFile(name);
        break;
      default:
        writeAll(path, O_TRUNC, content);
        model_[name] = content;
    }
    const auto known = model_.find(name);
    const auto expected = known == model_.end() ? std::nullopt : std::optional(known->second);
    if (contentOf(path) != expected) fail("has other bytes than were written", path);
  }

  void renameOwnFile(const std::string& from) {
    const std::string to = anyOwnName();
    const bool isThere = model_.contains(from);
    const int status = rename((own_ + "/" + from).c_str(), (own_ + "/" + to).c_str());
    if (status != (isThere ? 0 : -1)) fail("rename", own_ + "/" + from);
    if (!isThere || from == to) return;
    model_[to] = model_[from];
    model_.erase(from);
  }

  std::string anyShared() { return folder_ + "/shared/s" + std::to_string(below(kSharedFiles)); }

  void replaceShared() {
    const std::string fresh = folder_ + "/shared/.new" + std::to_string(number_);
    writeAll(fresh, O_TRUNC, lines(1 + below(3000)) + "end\n");
    const std::string shared = anyShared();
    if (rename(fresh.c_str(), shared.c_str()) != 0) fail("cannot be replaced", shared);
  }

  /// One line many times, then "end": of one writer, and all of it.
  void readShared() {
    const std::string path = anyShared();
    const auto content = contentOf(path);
    if (!content.has_value()) fail("is missing", path);
    const std::string first = content->substr(0, content->find('\n') + 1);
    size_t at = 0;
    while (content->compare(at, first.size(), first) == 0) at += first.size();
    if (first.empty() || content->substr(at) != "end\n") fail("is not whole", path);
  }

  void movePoolItem() {
    const std::string name = "/p" + std::to_string(below(kPoolItems));
    const std::string a = folder_ + "/pool/a" + name;
    const std::string b = folder_ + "/pool/b" + name;
    const bool forward = below(2) == 0;
    const std::string& from = forward ? a : b;
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, (forward ? b : a).c_str(), RENAME_NOREPLACE) !=
            0 &&
        errno != ENOENT) {
      fail("cannot be moved", from);
    }
    for (const std::string& path : {a, b}) {
      const auto content = contentOf(path);
      if (content.has_value() && *content != "item " + name.substr(2) + "\n") {
        fail("is another item", path);
      }
    }
  }

  /// Items of the disc: whoever moves one away first has it.
  void claim() {
    const std::string name = "c" + std::to_string(below(kClaims));
    const std::string mine = own_ + "/" + name;
    if (rename((folder_ + "/claims/" + name).c_str(), mine.c_str()) == 0) {
      model_[name] = "claim " + name + "\n";
    } else if (errno != ENOENT) {
      fail("cannot be claimed", name);
    }
  }

  void addToLog() { writeAll(folder_ + "/log", O_APPEND, line()); }

  std::string folder_;
  int number_;
  int round_ = 0;
  std::string own_;
  std::map<std::string, std::string> model_;
  std::mt19937 random_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  User user(argv[1], std::atoi(argv[2]));
  const int rounds = std::atoi(argv[3]);
  for (int round = 1; round <= rounds; ++round) user.doOneRound(round);
  user.checkOwnFiles();
  return 0;
}
