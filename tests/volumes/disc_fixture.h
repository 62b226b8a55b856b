// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "volumes/temporary_prefix.h"

namespace kelvane::test {

/// Tests that mount discs for real: emulated drives "kv0" … whose file of sectors genisoimage has
/// made. Skipped where this user has no user-space file systems.
class DiscFixture : public ::testing::Test {
 protected:
  void SetUp() override;

  /// Makes the sectors of `drive`'s disc: one session, named `volumeName`, with the file "hello" in
  /// it. Replaces the disc that was in the drive.
  void makeDisc(const std::string& drive, const std::string& volumeName);
  /// Adds a session that begins at the block `start` to the disc's one session.
  void appendSession(const std::string& drive, const std::string& volumeName, int64_t start);
  /// Makes the sectors of a disc without an ISO-9660 volume.
  void makeForeignDisc(const std::string& drive);
  std::string discFolder(const std::string& drive) const;

  /// Makes a folder and mounts the drive's disc there.
  void mountAt(const std::string& drive, const std::string& mountPoint);

  TemporaryPrefix prefix_;

 private:
  void announceDrives();

  std::optional<ScopedVariable> drives_;
};

/// Runs a program with arguments; true where it ends with status 0.
bool runProgram(const std::vector<std::string>& words);

/// Waits until a program that was started from here has ended. How is left to its starter to learn.
void awaitEndOfProgram();

}  // namespace kelvane::test
