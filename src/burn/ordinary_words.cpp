// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/ordinary_words.h"

#include <algorithm>
#include <array>

namespace kelvane {
namespace {

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

}  // namespace

bool isOrdinaryLine(std::string_view line) {
  if (line.empty()) return true;
  if (line.find("% done, estimate finish") != std::string_view::npos) return true;
  if (line.find(" extents written (") != std::string_view::npos) return true;
  return std::any_of(kOrdinaryBeginnings.begin(), kOrdinaryBeginnings.end(),
                     [line](std::string_view beginning) { return line.starts_with(beginning); });
}

std::string withoutOrdinaryLines(const std::string& said) {
  std::string left;
  for (size_t start = 0; start < said.size();) {
    const size_t end = std::min(said.find('\n', start), said.size() - 1);
    const std::string_view line(said.data() + start, end - start + 1);
    const bool isEnded = line.ends_with('\n');
    if (!isOrdinaryLine(isEnded ? line.substr(0, line.size() - 1) : line)) left += line;
    start = end + 1;
  }
  return left.empty() ? said : left;
}

}  // namespace kelvane
