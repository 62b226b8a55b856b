// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/growisofs_output.h"

#include <QString>
#include <cstdlib>

namespace kelvane {
namespace {

constexpr std::string_view kErrorMark = ":-(";

std::string textOfLatin1(std::string_view bytes) {
  return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size())).toStdString();
}

// The line that ends with the last line feed, without it.
std::string_view lastCompleteLine(std::string_view bytes, size_t lastLineFeed) {
  const std::string_view before = bytes.substr(0, lastLineFeed);
  const size_t lineFeed = before.rfind('\n');
  return lineFeed == std::string_view::npos ? before : before.substr(lineFeed + 1);
}

// The percentage stands right-aligned in six characters, with two decimals.
bool tellsPercentage(std::string_view line) {
  constexpr size_t kLeastCharacters = 14;
  constexpr size_t kPercentageWidth = 6;
  constexpr std::string_view kMark = "% done";
  return line.size() >= kLeastCharacters && line.substr(kPercentageWidth, kMark.size()) == kMark;
}

}  // namespace

GrowisofsChunk readGrowisofsChunk(std::string_view bytes) {
  GrowisofsChunk chunk;
  if (bytes.starts_with(kErrorMark)) {
    chunk.kind = GrowisofsChunk::Kind::Error;
    chunk.error = textOfLatin1(bytes);
    return chunk;
  }
  const size_t lastLineFeed = bytes.rfind('\n');
  if (lastLineFeed == std::string_view::npos) {
    chunk.fragment = textOfLatin1(bytes);
    return chunk;
  }
  chunk.kind = GrowisofsChunk::Kind::Lines;
  chunk.fragment = textOfLatin1(bytes.substr(lastLineFeed + 1));
  const std::string_view line = lastCompleteLine(bytes, lastLineFeed);
  constexpr size_t kIntegerPart = 3;
  if (tellsPercentage(line)) {
    chunk.percentDone = textOfLatin1(line.substr(0, kIntegerPart));
  } else if (line.starts_with(kErrorMark)) {
    chunk.error = textOfLatin1(line);
  }
  return chunk;
}

bool tellsOfForeignMount(const std::string& error) {
  return error.starts_with(":-( unable to O_EXCL ") || error.starts_with(":-( unable to umount ");
}

double barValueOfPercent(const std::string& percentDone) {
  const double percent = std::strtod(percentDone.c_str(), nullptr);
  return (percent / 100) + (percent / 100);
}

}  // namespace kelvane
