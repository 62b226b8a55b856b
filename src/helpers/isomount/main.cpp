// SPDX-License-Identifier: GPL-2.0-or-later
// isomount: mounts the ISO-9660 volume of one session of a disc, read-only, and serves it with no
// right but that.
//
// Without --foreground it returns 0 once the mount answers, and a process in the background serves
// until the volume is unmounted; nobody need wait or poll. Otherwise it returns 1 with one line on
// standard error and leaves nothing mounted and nothing running (2: the command line was wrong).
// With --print-volume-id it mounts nothing and prints the volume's name.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "helpers/isomount/detached_process.h"
#include "helpers/isomount/iso_file_system.h"
#include "helpers/isomount/mount_session.h"
#include "helpers/isomount/sandbox.h"

namespace kelvane::isomount {
namespace {

struct Request {
  std::string source;
  isovolume::SessionStart start;
  std::string fsName;
  std::string mountPoint;
  bool foreground = false;
  bool printVolumeId = false;
};

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;

int fail(const std::string& why) {
  std::fprintf(stderr, "isomount: %s\n", why.c_str());
  return kFailure;
}

/// Whoever started us may have left descriptors open, which a process that lives as long as a disc
/// must not keep. The standard ones have to exist, or the source would take their place.
void tidyDescriptors() {
  while (true) {
    const int descriptor = open("/dev/null", O_RDWR);
    if (descriptor > STDERR_FILENO || descriptor < 0) break;
  }
  close_range(STDERR_FILENO + 1, ~0U, 0);
}

/// Makes the mount point's path absolute, as the serving process leaves the working directory, and
/// finds the obstacles that can be named in better words than those of the mount's failure.
bool prepareMountPoint(std::string* mountPoint, std::string* error) {
  struct stat status = {};
  const std::unique_ptr<char, void (*)(void*)> absolute(realpath(mountPoint->c_str(), nullptr),
                                                        &std::free);
  if (!absolute || stat(absolute.get(), &status) != 0) {
    *error = "mount point " + *mountPoint + ": " + std::strerror(errno);
  } else if (!S_ISDIR(status.st_mode)) {
    *error = "mount point " + *mountPoint + " is not a directory";
  } else if (stat("/dev/fuse", &status) != 0) {
    *error = "/dev/fuse is missing: this system has no user-space file systems";
  } else {
    *mountPoint = absolute.get();
    return true;
  }
  return false;
}

int serve(const Request& request, isovolume::FileBlockSource& source, isovolume::IsoVolume& volume,
          StartReport& report) {
  IsoFileSystem fileSystem(source, volume, request.start, [&report] { report.ready(); });
  // What can only be read, and not be continued by mkisofs, is of another type in the mount table.
  const char* const subtype = volume.hasPrimaryDescriptor() ? "cd9660" : "cd9660-damaged";
  const auto session = MountSession::mount(fileSystem, request.mountPoint, subtype, request.fsName);
  if (!session) return kFailure;
  report.mounted();
  std::string error;
  if (!giveUpRights(&error)) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return kFailure;
  }
  return session->serve() ? kSuccess : kFailure;
}

int serveInBackground(const Request& request, isovolume::FileBlockSource& source,
                      isovolume::IsoVolume& volume) {
  const StartOutcome outcome =
      startDetached([&](StartReport& report) { return serve(request, source, volume, report); });
  struct stat status = {};
  // The first answer shows that the mount is there for everyone: the kernel asks the new process
  // for it.
  if (outcome.ready && stat(request.mountPoint.c_str(), &status) == 0) return kSuccess;
  if (outcome.mounted) unmountLeftOver(request.mountPoint);
  const std::string why = outcome.words.empty() ? "the serving process ended" : outcome.words;
  return fail("cannot mount at " + request.mountPoint + ": " + why);
}

int printLine(const std::string& text) {
  return std::puts(text.c_str()) >= 0 && std::fflush(stdout) == 0 ? kSuccess : kFailure;
}

int run(Request request) {
  std::string error;
  const auto source = isovolume::FileBlockSource::open(request.source, &error);
  if (!source) return fail(error);
  const auto volume = isovolume::IsoVolume::open(*source, request.start, &error);
  if (!volume) return fail(request.source + ": " + error);
  if (request.printVolumeId) return printLine(volume->volumeId());
  if (!prepareMountPoint(&request.mountPoint, &error)) return fail(error);
  if (!request.foreground) return serveInBackground(request, *source, *volume);
  StartReport nobody(-1);
  return serve(request, *source, *volume, nobody);
}

int parseAndRun(int argc, char** argv) try {
  Request request;
  CLI::App app("Mounts the ISO-9660 volume of one session of a disc, read-only.", "isomount");
  app.add_option("--source", request.source, "disc image or drive")->required();
  app.add_option("--session", request.start.lba, "block at which the session starts");
  app.add_option("--fsname", request.fsName, "name in the mount table (default: the source)");
  app.add_flag("--foreground", request.foreground, "serve in this process");
  CLI::Option_group* purpose = app.add_option_group("purpose");
  purpose->add_option("mountpoint", request.mountPoint, "directory to mount at");
  purpose->add_flag("--print-volume-id", request.printVolumeId,
                    "print the volume's name instead of mounting");
  purpose->require_option(1);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& help) {
    return app.exit(help);
  } catch (const CLI::ParseError& problem) {
    std::fprintf(stderr, "isomount: %s\n", problem.what());
    return kWrongUsage;
  }
  if (request.fsName.empty()) request.fsName = request.source;
  return run(request);
} catch (const std::exception& problem) {
  // Of the libraries below; nothing of ours throws, but memory may run out.
  return fail(problem.what());
}

}  // namespace
}  // namespace kelvane::isomount

#ifdef __SANITIZE_ADDRESS__
// The search for leaks needs the right to look at other threads, which has been given up by the
// time it would run.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
  return "detect_leaks=0";
}
#endif

int main(int argc, char** argv) {
  kelvane::isomount::tidyDescriptors();
  std::signal(SIGPIPE, SIG_IGN);
  return kelvane::isomount::parseAndRun(argc, argv);
}
