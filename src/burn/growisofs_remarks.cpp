// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/growisofs_remarks.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace kelvane {
namespace {

constexpr size_t kLongestLine = 4096;

// How the lines begin that a burn without trouble consists of, beside those that begin with the
// drive's name and those of the progress.
constexpr std::array<std::string_view, 9> kOrdinaryBeginnings = {
    "Rock Ridge signatures found",
    "Total translation table size:",
    "Total rockridge attributes bytes:",
    "Total directory bytes:",
    "Path table size(bytes):",
    "Max brk space used",
    "Using ",
    "WARNING: /dev/",
    "/dev/"};

bool isOrdinary(std::string_view line) {
  if (line.empty()) return true;
  if (line.find("% done, estimate finish") != std::string_view::npos) return true;
  if (line.find(" extents written (") != std::string_view::npos) return true;
  return std::any_of(kOrdinaryBeginnings.begin(), kOrdinaryBeginnings.end(),
                     [line](std::string_view beginning) { return line.starts_with(beginning); });
}

// ":-[" tells of a command that the drive has refused, ":-?" of something odd, ":-!" of something
// that is ignored.
bool leavesDoubt(const std::string& line) {
  if (line.starts_with(":-[") || line.starts_with(":-?") || line.starts_with(":-!")) return true;
  return line.ends_with("is not readable - ignoring") || line.ends_with("Broken pipe");
}

}  // namespace

void GrowisofsRemarks::take(std::string_view bytes) {
  for (const char byte : bytes) {
    if (byte == '\n') {
      end();
    } else if (incomplete_.size() < kLongestLine) {
      incomplete_ += byte;
    }
  }
}

void GrowisofsRemarks::end() {
  takeLine(incomplete_);
  incomplete_.clear();
}

std::vector<std::string> GrowisofsRemarks::doubts() const {
  std::vector<std::string> doubts;
  std::ranges::copy_if(lines_, std::back_inserter(doubts), leavesDoubt);
  return doubts;
}

void GrowisofsRemarks::takeLine(std::string_view line) {
  if (isOrdinary(line)) return;
  lines_.emplace_back(line);
  if (lines_.size() > kMostLines) lines_.pop_front();
}

}  // namespace kelvane
