// SPDX-License-Identifier: GPL-2.0-or-later
// kv_bench_workload OPERATION PATH COUNT: does one kind of work and prints the seconds that it
// took. Bare system calls, so that what is measured is the file system and not the program that
// uses it.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t kBlock = 1 << 20;
constexpr size_t kPage = 4096;

void check(bool isRight, const char* what) {
  if (isRight) return;
  std::perror(what);
  std::exit(1);
}

std::string nameOf(char letter, long index) {
  return std::string(1, letter) + std::to_string(index);
}

void createNames(const std::string& /*path*/, long count) {
  for (long index = 0; index < count; ++index) {
    const int file =
        open(nameOf('f', index).c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644);
    check(file >= 0, "create");
    close(file);
  }
}

void renameNames(const std::string& /*path*/, long count) {
  for (long index = 0; index < count; ++index) {
    check(std::rename(nameOf('f', index).c_str(), nameOf('g', index).c_str()) == 0, "rename");
  }
}

void unlinkNames(const std::string& /*path*/, long count) {
  for (long index = 0; index < count; ++index) {
    check(::unlink(nameOf('g', index).c_str()) == 0, "unlink");
  }
}

void readThrough(const std::string& path, long megabytes) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  check(file >= 0, path.c_str());
  std::vector<char> block(kBlock);
  long done = 0;
  for (ssize_t got = 0; (got = read(file, block.data(), block.size())) > 0;) done += got;
  check(done == megabytes << 20, "read");
  close(file);
}

// The same places in every run.
void readAround(const std::string& path, long count) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  check(file >= 0, path.c_str());
  struct stat status = {};
  check(fstat(file, &status) == 0, "fstat");
  std::mt19937_64 places(1);
  std::vector<char> page(kPage);
  for (long index = 0; index < count; ++index) {
    const auto offset =
        static_cast<off_t>(places() % (static_cast<uint64_t>(status.st_size) / kPage) * kPage);
    check(pread(file, page.data(), page.size(), offset) == static_cast<ssize_t>(kPage), "pread");
  }
  close(file);
}

void writeAndSync(const std::string& path, long megabytes) {
  const int file = open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0644);
  check(file >= 0, path.c_str());
  const std::vector<char> block(kBlock, 'w');
  for (long index = 0; index < megabytes; ++index) {
    check(write(file, block.data(), block.size()) == static_cast<ssize_t>(kBlock), "write");
  }
  check(fsync(file) == 0, "fsync");
  close(file);
}

}  // namespace

int main(int argc, char** argv) {
  using Work = std::function<void(const std::string&, long)>;
  const std::map<std::string, Work> inDirectory = {
      {"create", createNames}, {"rename", renameNames}, {"unlink", unlinkNames}};
  const std::map<std::string, Work> onFile = {
      {"read", readThrough}, {"random", readAround}, {"write", writeAndSync}};
  const std::string operation = argc == 4 ? argv[1] : "";
  const bool isInDirectory = inDirectory.contains(operation);
  if (!isInDirectory && !onFile.contains(operation)) {
    std::fprintf(stderr,
                 "usage: kv_bench_workload create|rename|unlink|read|random|write PATH COUNT\n");
    return 2;
  }
  if (isInDirectory) check(chdir(argv[2]) == 0, argv[2]);
  const Work& work = isInDirectory ? inDirectory.at(operation) : onFile.at(operation);
  const auto start = std::chrono::steady_clock::now();
  work(argv[2], std::strtol(argv[3], nullptr, 10));
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  std::printf("%.6f\n", taken.count());
  return 0;
}
