// SPDX-License-Identifier: GPL-2.0-or-later
// Bytes: reads, writes, maps, holes, files without a name.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <random>

#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

std::string randomBytes(size_t size, unsigned seed) {
  std::mt19937 generator(seed);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(generator());
  return bytes;
}

class MountedContent : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/big", big);
    trees.addDiscFile("/small", "0123456789");
    mount();
  }
  int openAt(const std::string& path, int flags) {
    const int file = ::open(at(path).c_str(), flags | O_CLOEXEC, 0644);
    EXPECT_GE(file, 0) << path << ": " << std::strerror(errno);
    return file;
  }
  const std::string big = randomBytes(5'000'003, 1);
};

TEST_F(MountedContent, ABigDiscFileReadsAsItIs) {
  EXPECT_EQ(contentOf(at("/big")), big);
  EXPECT_EQ(contentOf(at("/big")), big);
}

TEST_F(MountedContent, ReadsEndAtTheFilesEnd) {
  const int file = openAt("/small", O_RDONLY);
  std::string buffer(4096, '?');
  EXPECT_EQ(pread(file, buffer.data(), 4096, 0), 10);
  EXPECT_EQ(buffer.substr(0, 12), "0123456789??");
  EXPECT_EQ(pread(file, buffer.data(), 4096, 10), 0);
  EXPECT_EQ(pread(file, buffer.data(), 4096, 100000), 0);
  close(file);
}

TEST_F(MountedContent, DirectReadsEndAtTheFilesEndToo) {
  const int file = open(at("/small").c_str(), O_RDONLY | O_DIRECT);
  if (file < 0) GTEST_SKIP() << "no direct reads here";
  alignas(4096) static char buffer[4096];
  EXPECT_EQ(pread(file, buffer, sizeof(buffer), 0), 10);
  close(file);
}

TEST_F(MountedContent, RandomWritesReadBackAsFromAPlainFile) {
  const std::string plain = trees.root() + "/plain";
  const int mirror = open(plain.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  const int file = openAt("/random", O_RDWR | O_CREAT);
  std::mt19937 generator(7);
  const auto below = [&generator](unsigned limit) {
    return std::uniform_int_distribution<unsigned>(0, limit - 1)(generator);
  };
  for (int step = 0; step < 500; ++step) {
    const off_t offset = below(300000);
    const std::string bytes = randomBytes(below(20000), below(1000000));
    if (step % 50 == 49) {
      ASSERT_EQ(ftruncate(file, offset), 0);
      ASSERT_EQ(ftruncate(mirror, offset), 0);
    } else {
      ASSERT_EQ(pwrite(file, bytes.data(), bytes.size(), offset),
                static_cast<ssize_t>(bytes.size()));
      ASSERT_EQ(pwrite(mirror, bytes.data(), bytes.size(), offset),
                static_cast<ssize_t>(bytes.size()));
    }
    if (step % 100 == 0) {
      ASSERT_EQ(fsync(file), 0);
    }
  }
  close(file);
  close(mirror);
  EXPECT_EQ(contentOf(at("/random")), contentOf(plain));
  EXPECT_EQ(contentOf(trees.overlay() + "/random"), contentOf(plain));
}

TEST_F(MountedContent, AMappedFileIsWrittenThrough) {
  const int file = openAt("/mapped", O_RDWR | O_CREAT);
  ASSERT_EQ(ftruncate(file, 10000), 0);
  void* const map = mmap(nullptr, 10000, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  ASSERT_NE(map, MAP_FAILED);
  std::memcpy(static_cast<char*>(map) + 5000, "mapped", 6);
  ASSERT_EQ(msync(map, 10000, MS_SYNC), 0);
  EXPECT_EQ(contentOf(trees.overlay() + "/mapped").substr(5000, 6), "mapped");
  std::memcpy(static_cast<char*>(map) + 9000, "late", 4);
  munmap(map, 10000);
  close(file);
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_EQ(contentOf(trees.overlay() + "/mapped").substr(9000, 4), "late");
}

TEST_F(MountedContent, ADiscFileCanBeMapped) {
  const int file = openAt("/big", O_RDONLY);
  void* const map = mmap(nullptr, big.size(), PROT_READ, MAP_PRIVATE, file, 0);
  ASSERT_NE(map, MAP_FAILED);
  EXPECT_EQ(std::memcmp(map, big.data(), big.size()), 0);
  munmap(map, big.size());
  close(file);
}

TEST_F(MountedContent, AFileWithoutANameLivesUntilItIsClosed) {
  const int file = openAt("/temporary", O_RDWR | O_CREAT);
  ASSERT_EQ(unlink(at("/temporary").c_str()), 0);
  EXPECT_EQ(pwrite(file, "still here", 10, 0), 10);
  EXPECT_EQ(ftruncate(file, 5), 0);
  EXPECT_EQ(fchmod(file, 0600), 0);
  char buffer[16] = {};
  EXPECT_EQ(pread(file, buffer, sizeof(buffer), 0), 5);
  EXPECT_STREQ(buffer, "still");
  struct stat status = {};
  ASSERT_EQ(fstat(file, &status), 0);
  EXPECT_EQ(status.st_size, 5);
  close(file);
  EXPECT_FALSE(exists(at("/temporary")));
}

TEST_F(MountedContent, TruncationOfANamelessFileLeavesItsSuccessorAlone) {
  const int old = openAt("/file", O_RDWR | O_CREAT);
  ASSERT_EQ(pwrite(old, "the old one", 11, 0), 11);
  ASSERT_EQ(unlink(at("/file").c_str()), 0);
  writeFile(at("/file"), "the new one");
  EXPECT_EQ(ftruncate(old, 0), 0);
  EXPECT_EQ(pwrite(old, "X", 1, 0), 1);
  EXPECT_EQ(contentOf(at("/file")), "the new one");
  close(old);
}

TEST_F(MountedContent, ADeletedDiscFileCanBeReadWhileOpen) {
  const int file = openAt("/small", O_RDONLY);
  ASSERT_EQ(unlink(at("/small").c_str()), 0);
  char buffer[16] = {};
  EXPECT_EQ(pread(file, buffer, sizeof(buffer), 0), 10);
  EXPECT_STREQ(buffer, "0123456789");
  close(file);
}

TEST_F(MountedContent, AppendingProgramsWriteAtTheEnd) {
  const int one = openAt("/log", O_WRONLY | O_CREAT | O_APPEND);
  const int two = openAt("/log", O_WRONLY | O_APPEND);
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(write(one, "one ", 4), 4);
    EXPECT_EQ(write(two, "two ", 4), 4);
  }
  close(one);
  close(two);
  EXPECT_EQ(contentOf(at("/log")), "one two one two one two ");
}

TEST_F(MountedContent, SpaceCanBeReservedAndHolesFound) {
  const int file = openAt("/sparse", O_RDWR | O_CREAT);
  const int reserved = posix_fallocate(file, 0, 1 << 20);
  EXPECT_TRUE(reserved == 0 || reserved == EOPNOTSUPP) << reserved;
  struct stat status = {};
  ASSERT_EQ(fstat(file, &status), 0);
  EXPECT_EQ(status.st_size, reserved == 0 ? 1 << 20 : 0);
  ASSERT_EQ(ftruncate(file, 0), 0);
  ASSERT_EQ(pwrite(file, "x", 1, 8 << 20), 1);
  const off_t data = lseek(file, 0, SEEK_DATA);
  EXPECT_GE(data, 0);
  EXPECT_LE(data, 8 << 20);
  close(file);
}

TEST_F(MountedContent, WritesAreCountedAndAnnouncedBytesRemain) {
  sh("head -c 100000 /dev/zero > f && head -c 50000 /dev/zero > g && rm g");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_EQ(volume->delegate().localusedbytes(), 100000);
}

TEST_F(MountedContent, ManyFilesInOneDirectoryAreAllListed) {
  sh("mkdir many && cd many && seq -f 'a file with a longish name, number %g' 5000 | xargs -d "
     "'\\n' touch");
  EXPECT_EQ(namesIn(at("/many")).size(), 5000U);
  EXPECT_EQ(sh("find many -type f | wc -l"), "5000\n");
  sh("rm -r many");
}

}  // namespace
}  // namespace kelvane::tests
