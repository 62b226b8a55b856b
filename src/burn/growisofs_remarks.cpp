// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/growisofs_remarks.h"

#include <algorithm>
#include <iterator>

#include "burn/ordinary_words.h"

namespace kelvane {
namespace {

constexpr size_t kLongestLine = 4096;

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
  if (isOrdinaryLine(line)) return;
  lines_.emplace_back(line);
  if (lines_.size() > kMostLines) lines_.pop_front();
}

}  // namespace kelvane
