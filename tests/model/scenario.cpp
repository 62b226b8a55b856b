// SPDX-License-Identifier: GPL-2.0-or-later
#include "model/scenario.h"

#include <sys/stat.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <utility>

#include "model/session_disc.h"
#include "model/step_generator.h"
#include "model/volume_runner.h"
#include "overlayfs/mounted_volume.h"

namespace kelvane::model {
namespace {

constexpr int64_t kMegabyte = 1 << 20;
constexpr int64_t kUsedMegabytes = 1;
constexpr size_t kStepsBetweenTrees = 50;

std::multiset<std::string> linesOf(const std::string& file) {
  std::multiset<std::string> lines;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) lines.insert(line);
  return lines;
}

/// One run of a scenario on real mounts.
class Run {
 public:
  explicit Run(const Scenario& scenario)
      : scenario_(scenario), sessions_(trees_.root(), trees_.disc()) {}

  std::optional<Failure> result() {
    std::string problem = open(scenario_.disc);
    for (; problem.empty() && index_ < scenario_.steps.size(); ++index_) {
      problem = take(scenario_.steps[index_]);
      if (!problem.empty()) break;
    }
    if (problem.empty()) problem = compareTrees();
    if (problem.empty()) problem = close();
    volume_.reset();
    if (problem.empty()) return std::nullopt;
    return Failure{index_, problem};
  }

 private:
  std::string open(const Tree& disc) {
    if (std::string failure = sessions_.makeFrom(disc); !failure.empty()) return failure;
    if (std::string failure = sessions_.mount(); !failure.empty()) return failure;
    const int64_t total = kUsedMegabytes + scenario_.freeMegabytes;
    model_ = std::make_unique<VolumeModel>(
        disc, VolumeModel::Setting{trees_.overlay(), total * kMegabyte, kUsedMegabytes * kMegabyte,
                                   [this](const std::string& path) {
                                     struct stat status = {};
                                     // Of one that is made and removed in one step: a new one's.
                                     if (lstat((trees_.overlay() + path).c_str(), &status) != 0) {
                                       lstat((trees_.root() + "/Volumes").c_str(), &status);
                                     }
                                     return static_cast<int64_t>(status.st_size);
                                   }});
    const OverlayInfo info{static_cast<double>(total), static_cast<double>(kUsedMegabytes)};
    volume_ = std::make_unique<tests::MountedVolume>(trees_, info);
    if (!volume_->waitUntilMounted()) return "not mounted: " + volume_->failure();
    runner_ = std::make_unique<VolumeRunner>(volume_->path());
    return {};
  }

  std::string take(const Step& step) {
    const Outcome expected = model_->apply(step);
    if (!expected.isDefined) return {};
    const Outcome actual = runner_->apply(step);
    if (!agree(expected, actual)) {
      std::ostringstream text;
      text << step << ": " << actual << "; expected: " << expected;
      return text.str();
    }
    return step.comparesTree ? compareTrees() : std::string();
  }

  std::string compareTrees() const {
    const std::string lines =
        differences(model_->visibleTree(), readTree(volume_->path()), Compare::Everything);
    return lines.empty() ? lines : "the volume shows:\n" + lines;
  }

  std::string close() {
    runner_->closeHandles();
    if (!volume_->unmountAndWait()) return "the volume stays mounted";
    sessions_.unmount();
    if (linesOf(trees_.hideListFile()) != model_->hidePatterns()) return describeHideLists();
    if (!model_->canBeBurned()) return {};
    if (std::string failure = sessions_.addSession(trees_.overlay(), trees_.hideListFile());
        !failure.empty()) {
      return failure;
    }
    Tree actual;
    if (std::string failure = sessions_.readByXorriso(&actual); !failure.empty()) return failure;
    const std::string lines = differences(model_->sessionTree(), actual, Compare::NamesAndContent);
    return lines.empty() ? lines : "the new session holds:\n" + lines;
  }

  std::string describeHideLists() const {
    std::string text = "the hide list is:\n";
    for (const std::string& line : linesOf(trees_.hideListFile())) text += "  " + line + "\n";
    text += "expected:\n";
    for (const std::string& line : model_->hidePatterns()) text += "  " + line + "\n";
    return text;
  }

  const Scenario& scenario_;
  tests::OverlayTrees trees_;
  SessionDisc sessions_;
  std::unique_ptr<VolumeModel> model_;
  std::unique_ptr<tests::MountedVolume> volume_;
  std::unique_ptr<VolumeRunner> runner_;
  size_t index_ = 0;
};

}  // namespace

// Whether the step puts a directory where the disc has something else: no session can be built
// then.
static bool preventsBurning(const Step& step, const Tree& disc, const VolumeModel& model) {
  const auto isFileAt = [&](const std::string& top, bool orBelow) {
    for (const auto& [path, entry] : disc) {
      if (entry.type != 'd' && (path == top || (orBelow && path.starts_with(top + "/"))))
        return true;
    }
    return false;
  };
  if (step.kind == StepKind::MakeDirectory) return isFileAt(step.path, false);
  if (step.kind != StepKind::Rename && step.kind != StepKind::RenameNoReplace) return false;
  if (!isFileAt(step.other, true)) return false;
  const Tree tree = model.visibleTree();
  const auto source = tree.find(step.path);
  return source != tree.end() && source->second.type == 'd';
}

// A model that needs no volume beside it: every directory has the size of a small one.
static VolumeModel modelAlone(const Tree& disc, int64_t freeMegabytes) {
  return {disc,
          {"/overlay", (kUsedMegabytes + freeMegabytes) * kMegabyte, kUsedMegabytes * kMegabyte,
           [](const std::string&) { return 4096; }}};
}

Scenario makeScenario(uint64_t seed, size_t stepCount) {
  StepGenerator generator(seed);
  Scenario scenario;
  scenario.disc = generator.disc();
  if (generator.below(4) == 0) scenario.freeMegabytes = 1;
  VolumeModel model = modelAlone(scenario.disc, scenario.freeMegabytes);
  while (scenario.steps.size() < stepCount) {
    Step step = generator.next(model);
    step.comparesTree = scenario.steps.size() % kStepsBetweenTrees == kStepsBetweenTrees - 1;
    if (seed % 4 != 0 && preventsBurning(step, scenario.disc, model)) continue;
    // What the rules leave open is no step.
    if (model.apply(step).isDefined) scenario.steps.push_back(step);
  }
  return scenario;
}

bool endsInASession(const Scenario& scenario) {
  VolumeModel model = modelAlone(scenario.disc, scenario.freeMegabytes);
  for (const Step& step : scenario.steps) model.apply(step);
  return model.canBeBurned();
}

std::optional<Failure> runScenario(const Scenario& scenario) {
  Run run(scenario);
  return run.result();
}

std::string describe(const Scenario& scenario) {
  std::ostringstream text;
  text << "disc, " << scenario.freeMegabytes << " MB free:\n";
  for (const auto& [path, entry] : scenario.disc) {
    text << "  " << entry.type << " " << readable(path);
    if (entry.type == 'f') text << " " << entry.content.size() << " bytes";
    if (entry.type == 'l') text << " -> " << entry.content;
    text << "\n";
  }
  text << "steps:\n";
  for (const Step& step : scenario.steps) text << "  " << step << "\n";
  return text.str();
}

}  // namespace kelvane::model
