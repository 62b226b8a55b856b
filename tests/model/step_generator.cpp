// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/step_generator.h"

#include <array>
#include <utility>

namespace kelvane::model {
namespace {

// Plain names, composed and decomposed ones, all that patterns know, and some that patterns match.
constexpr std::array kNames = {"a",       "b",           "c d",      "docs", "sub",
                               "\u00e4x", "a\u0308x",    "qx",       "x[1]", "xz1y",
                               "{q}",     "Stra\u00dfe", "back\\up", "st*r", "zz.txt"};
constexpr std::array kLinkTexts = {"a", "docs/b", "/docs", "/docs/a", "/sub", "nowhere", "../b"};
constexpr std::array<mode_t, 6> kModes = {0600, 0640, 0644, 0666, 0700, 0755};
constexpr mode_t kDirectoryMode = 0755;
constexpr size_t kDeepest = 4;

// How often each kind of step comes, in the order of StepKind.
constexpr std::array<unsigned, 23> kWeights = {10, 8,  6, 5, 5, 6, 6, 2, 5, 2, 9, 8,
                                               10, 16, 3, 5, 3, 2, 4, 5, 4, 3, 0};

size_t depthOf(const std::string& path) {
  size_t depth = 0;
  for (const char character : path) depth += character == '/';
  return depth;
}

std::string join(const std::string& directory, const std::string& name) {
  return directory == "/" ? "/" + name : directory + "/" + name;
}

}  // namespace

std::string StepGenerator::name() {
  return kNames[below(oneIn(3) ? unsigned{kNames.size()} : 6U)];
}

size_t StepGenerator::length() {
  if (oneIn(20)) return 1 + below(70000);
  if (oneIn(5)) return 4090 + below(12);
  return 1 + below(100);
}

Tree StepGenerator::disc() {
  Tree tree;
  std::vector<std::string> directories = {"/"};
  const unsigned count = 10 + below(20);
  for (unsigned index = 0; index < count; ++index) {
    const std::string path =
        join(directories[below(static_cast<unsigned>(directories.size()))], name());
    if (tree.contains(path)) continue;
    const unsigned choice = below(10);
    if (choice < 4 && depthOf(path) < kDeepest) {
      tree[path] = Entry{'d', {}, 0555, {}};
      directories.push_back(path);
    } else if (choice == 4) {
      tree[path] = Entry{'l', oneIn(2) ? "a" : "nowhere/" + std::string(60, 'n'), 0777, {}};
    } else {
      Step bytes;
      bytes.size = oneIn(8) ? 0 : length();
      bytes.seed = below(26);
      tree[path] = Entry{'f', bytesOf(bytes), 0444, 1000000000 + below(1000)};
    }
  }
  return tree;
}

std::string StepGenerator::existing(const std::vector<std::string>& paths) {
  return paths.empty() ? anywhere(paths) : paths[below(static_cast<unsigned>(paths.size()))];
}

std::string StepGenerator::anywhere(const std::vector<std::string>& paths) {
  std::string directory = "/";
  if (!paths.empty() && !oneIn(3)) directory = paths[below(static_cast<unsigned>(paths.size()))];
  while (depthOf(directory) >= kDeepest) directory = directory.substr(0, directory.rfind('/'));
  return join(directory, name());
}

StepKind StepGenerator::kind() {
  unsigned sum = 0;
  for (const unsigned weight : kWeights) sum += weight;
  unsigned pick = below(sum);
  for (size_t index = 0; index < kWeights.size(); ++index) {
    if (pick < kWeights[index]) return static_cast<StepKind>(index);
    pick -= kWeights[index];
  }
  return StepKind::Stat;
}

Step StepGenerator::next(const VolumeModel& model) {
  const std::vector<std::string> paths = model.visiblePaths();
  // A volume that has grown full of items is mostly emptied.
  const bool isFull = paths.size() > 80;
  Step step;
  step.kind = isFull && oneIn(2) ? StepKind::Rename : kind();
  const bool makes = step.kind == StepKind::Create || step.kind == StepKind::MakeDirectory ||
                     step.kind == StepKind::SymLink || step.kind == StepKind::Replace ||
                     step.kind == StepKind::Append;
  step.path = makes != oneIn(4) ? anywhere(paths) : existing(paths);
  step.seed = step.kind == StepKind::SetTime ? 900000000 + below(100000) : below(26);
  step.handle = below(kHandleCount);
  step.isForWriting = oneIn(2);
  if (step.kind <= StepKind::Append || step.kind == StepKind::HandleWrite) step.size = length();
  const bool hasOffset = step.kind == StepKind::WriteAt || step.kind == StepKind::HandleWrite ||
                         step.kind == StepKind::Truncate;
  if (hasOffset && !oneIn(3)) step.offset = below(oneIn(4) ? 9000 : 60);
  if (step.kind == StepKind::Create || step.kind == StepKind::Replace ||
      step.kind == StepKind::Append || step.kind == StepKind::ChangeMode) {
    step.mode = kModes[below(kModes.size())];
  }
  if (step.kind == StepKind::MakeDirectory) step.mode = oneIn(2) ? kDirectoryMode : 0700;
  if (step.kind == StepKind::ChangeMode) step.mode |= 0700;
  if (step.kind == StepKind::List && oneIn(4)) step.path = "/";
  if (step.kind == StepKind::SymLink) step.other = kLinkTexts[below(kLinkTexts.size())];
  if (step.kind == StepKind::Rename || step.kind == StepKind::RenameNoReplace) {
    step.other = oneIn(3) ? existing(paths) : anywhere(paths);
    if (oneIn(30) || (isFull && oneIn(3))) step.other = "/.Trashes/501/x";
  }
  return step;
}

}  // namespace kelvane::model
