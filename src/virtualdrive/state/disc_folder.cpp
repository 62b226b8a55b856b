// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/state/disc_folder.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "virtualdrive/state/disc_json.h"
#include "virtualdrive/state/drive_json.h"

namespace kelvane::virtualdrive {
namespace {

constexpr const char* kAudioFile = "audio";
constexpr std::size_t kLongestDescription = 1 << 20;

std::string quoted(const std::filesystem::path& path) {
  return "“" + path.string() + "”";
}

bool fail(std::string* error, const std::string& what) {
  *error = what;
  return false;
}

/// Reads a file that can only be short. Empty where it cannot be read, is no plain file or is too
/// long.
std::optional<std::string> readShortFile(const std::filesystem::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file || static_cast<std::size_t>(status.st_size) > kLongestDescription) return std::nullopt;
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t have = 0;
  while (have < text.size()) {
    const auto count = read(file.get(), text.data() + have, text.size() - have);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    have += static_cast<std::size_t>(count);
  }
  text.resize(have);
  return text;
}

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const auto count = write(descriptor, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

/// Puts `text` in the place of the file in one step. The lock makes the temporary name nobody
/// else's.
bool replaceFile(const std::filesystem::path& path, std::string_view text) {
  auto temporary = path;
  temporary += ".new";
  const FileDescriptor file(
      open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (file && writeAll(file.get(), text) && rename(temporary.c_str(), path.c_str()) == 0) {
    return true;
  }
  unlink(temporary.c_str());
  return false;
}

/// Takes or gives back the place at the head of the queue for the lock: a record lock on a byte of
/// the lock's file. Whoever waits for the lock stands there, so that a process with one command
/// after the other cannot go past it, as it would with flock(2) alone.
void queueFor(const FileDescriptor& lock, short type) {
  struct flock place {};
  place.l_type = type;
  place.l_whence = SEEK_SET;
  place.l_start = 1;
  place.l_len = 1;
  while (fcntl(lock.get(), F_OFD_SETLKW, &place) != 0 && errno == EINTR) {
  }
}

/// Waits for the lock and holds it as long as the descriptor is open. No descriptor where that
/// fails, with errno set.
FileDescriptor takeTurn(const std::filesystem::path& path) {
  FileDescriptor lock(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
  // A disc that may only be read can be looked at too; without a place in the queue then.
  if (!lock) lock = FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!lock) return lock;
  queueFor(lock, F_WRLCK);
  int result = 0;
  do {
    result = flock(lock.get(), LOCK_EX);
  } while (result != 0 && errno == EINTR);
  const int why = errno;
  queueFor(lock, F_UNLCK);
  errno = why;
  return result == 0 ? std::move(lock) : FileDescriptor();
}

}  // namespace

SignalsBlocked::SignalsBlocked() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before_);
}

SignalsBlocked::~SignalsBlocked() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

std::optional<DiscFolder> DiscFolder::lock(const std::filesystem::path& folder,
                                           std::string* error) {
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) {
    *error = errno == ENOENT ? "There is no disc " + quoted(folder) + "."
                             : "The disc " + quoted(folder) +
                                   " cannot be reached: " + std::strerror(errno) + ".";
    return std::nullopt;
  }
  if (!S_ISDIR(status.st_mode) || access((folder / "disc.json").c_str(), F_OK) != 0) {
    *error = quoted(folder) + " is not the folder of a disc.";
    return std::nullopt;
  }
  auto lock = takeTurn(folder / "lock");
  if (!lock) {
    *error = "The disc " + quoted(folder) + " cannot be locked: " + std::strerror(errno) + ".";
    return std::nullopt;
  }
  DiscFolder locked(folder, std::move(lock));
  if (!locked.load(error)) return std::nullopt;
  return locked;
}

bool DiscFolder::openFiles() {
  sectors_ = SectorFile::open(folder_ / "sectors", kSectorBytes);
  if (access((folder_ / kAudioFile).c_str(), F_OK) == 0) {
    audio_ = SectorFile::open(folder_ / kAudioFile, kAudioSectorBytes);
    if (!audio_) return false;
  }
  return sectors_.has_value();
}

SectorFile* DiscFolder::fileOf(TrackForm form) {
  if (form != TrackForm::Audio) return &*sectors_;
  if (!audio_) {
    const auto path = folder_ / kAudioFile;
    const FileDescriptor made(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (made) audio_ = SectorFile::open(path, kAudioSectorBytes);
  }
  return audio_ ? &*audio_ : nullptr;
}

std::optional<FileLengths> DiscFolder::fileLengths() const {
  const auto sectors = sectors_->length();
  const auto audio = audio_ ? audio_->length() : std::optional<std::uint64_t>(0);
  if (!sectors || !audio) return std::nullopt;
  return FileLengths{*sectors, *audio};
}

bool DiscFolder::cutFiles() {
  return sectors_->resize(disc.fileSectors) && (!audio_ || audio_->resize(disc.audioSectors));
}

bool DiscFolder::load(std::string* error) {
  if (!openFiles()) {
    return fail(error,
                "The disc " + quoted(folder_) + " is damaged: its sectors cannot be opened.");
  }
  if (!loadDisc(error)) return false;
  const auto text = readShortFile(folder_ / "drive.json");
  std::string why = "it cannot be read";
  const auto loaded = text ? driveFromJson(*text, &why) : std::nullopt;
  if (!loaded) {
    return fail(error, "The disc " + quoted(folder_) + " is damaged: drive.json: " + why + ".");
  }
  drive = *loaded;
  return true;
}

bool DiscFolder::loadDisc(std::string* error) {
  const auto text = readShortFile(folder_ / "disc.json");
  const auto lengths = fileLengths();
  std::string why = "it cannot be read";
  const auto parsed = text && lengths ? discFromJson(*text, *lengths, &why) : std::nullopt;
  if (!parsed) {
    return fail(error, "The disc " + quoted(folder_) + " cannot be used: disc.json: " + why + ".");
  }
  disc = parsed->disc;
  if (parsed->cutFiles && (!cutFiles() || !storeDisc())) {
    return fail(error, "The disc " + quoted(folder_) + " cannot be written to.");
  }
  return true;
}

bool DiscFolder::create(const std::filesystem::path& folder, const DiscState& disc,
                        const DriveState& drive, std::string* error) {
  if (mkdir(folder.c_str(), 0777) != 0) {
    const auto why = errno;
    return fail(error, why == EEXIST
                           ? quoted(folder) + " exists already."
                           : quoted(folder) + " cannot be made: " + std::strerror(why) + ".");
  }
  const FileDescriptor sectors(
      open((folder / "sectors").c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  const FileDescriptor lock(
      open((folder / "lock").c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  // The description comes last: a folder without it is no disc.
  if (sectors && lock && replaceFile(folder / "drive.json", driveToJson(drive)) &&
      replaceFile(folder / "disc.json", discToJson(disc))) {
    return true;
  }
  const auto why = errno;
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  return fail(error, quoted(folder) + " cannot be filled: " + std::strerror(why) + ".");
}

bool DiscFolder::storeDisc() {
  return replaceFile(folder_ / "disc.json", discToJson(disc));
}

bool DiscFolder::storeDrive() {
  return replaceFile(folder_ / "drive.json", driveToJson(drive));
}

bool DiscFolder::removeEverything(const DiscState& blank) {
  if (!replaceFile(folder_ / "disc.json", blankingToJson(blank))) return false;
  disc = blank;
  return cutFiles() && storeDisc();
}

}  // namespace kelvane::virtualdrive
