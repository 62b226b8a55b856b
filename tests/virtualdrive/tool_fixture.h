// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "program.h"
#include "temporary_folder.h"

namespace kelvane::virtualdrive {

/// Discs that are made and used by kelvanedisc and by programs not written here.
class ToolTest : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  std::string disc() const { return path("disc.kvdisc"); }

  void create(const std::vector<std::string>& options) {
    std::vector<std::string> arguments{"create", disc()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const auto finished = kelvanedisc(arguments);
    ASSERT_EQ(finished.status, 0) << finished.err;
  }
  /// Runs a program with the disc before it.
  Finished run(const std::vector<std::string>& command, const std::string& input = {}) {
    std::vector<std::string> arguments{"run", disc(), "--"};
    arguments.insert(arguments.end(), command.begin(), command.end());
    return kelvanedisc(arguments, {folder_.path(), input});
  }
  /// The same, with the waiting for a real drive taken out of the program.
  Finished runImpatiently(std::vector<std::string> command) {
    const std::vector<std::string> words{
        "sh", "-c", "LD_PRELOAD=\"$LD_PRELOAD:" KELVANE_IMPATIENCE "\" exec \"$@\"", "sh"};
    command.insert(command.begin(), words.begin(), words.end());
    return run(command);
  }
  nlohmann::json info() {
    const auto finished = kelvanedisc({"info", "--json", disc()});
    EXPECT_EQ(finished.status, 0) << finished.err;
    return nlohmann::json::parse(finished.out, nullptr, false);
  }
  std::string sectors() { return contentOf(disc() + "/sectors"); }
  /// The image of a folder, made by genisoimage; the file's path.
  std::string imageOf(const std::string& folder, const std::string& name,
                      const std::vector<std::string>& options = {}) {
    std::vector<std::string> command{"genisoimage", "-quiet", "-r", "-J", "-o", path(name)};
    command.insert(command.end(), options.begin(), options.end());
    command.push_back(folder);
    const auto finished = runProgram(command);
    EXPECT_EQ(finished.status, 0) << finished.err;
    return path(name);
  }
  /// A folder with two files, a subfolder and a link; `mark` goes into the content.
  std::string makeSource(const std::string& name, unsigned mark) {
    const auto root = folder_ / name;
    std::filesystem::create_directories(root / ("folder " + std::to_string(mark)));
    writeFile(root / ("text " + std::to_string(mark)), "content " + std::to_string(mark));
    writeFile(root / ("folder " + std::to_string(mark)) / "data", patternBytes(1000000, mark));
    std::filesystem::create_symlink("text " + std::to_string(mark),
                                    root / ("link " + std::to_string(mark)));
    return root.string();
  }

  TemporaryFolder folder_;
};

/// A medium's name, made of what the names of tests can be made of.
inline std::string testNameOf(std::string medium) {
  std::erase(medium, '-');
  std::ranges::replace(medium, '+', 'P');
  return medium;
}

/// What differs between two folders, links followed nowhere; "" where nothing does.
inline std::string differences(const std::string& one, const std::string& other) {
  return runProgram({"diff", "-r", "--no-dereference", one, other}).out;
}

}  // namespace kelvane::virtualdrive
