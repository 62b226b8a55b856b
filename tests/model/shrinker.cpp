// SPDX-License-Identifier: GPL-2.0-or-later
// Delta debugging of a scenario that fails.
#include <algorithm>
#include <iterator>
#include <utility>

#include "model/scenario.h"

namespace kelvane::model {
namespace {

/// What is still tried, and how often.
struct Search {
  Scenario best;
  Failure failure;
  int runsLeft = 400;

  bool accept(Scenario candidate) {
    if (runsLeft-- <= 0) return false;
    const auto found = runScenario(candidate);
    if (!found.has_value()) return false;
    failure = *found;
    best = std::move(candidate);
    return true;
  }

  // What comes after the failing step does not matter.
  void cutAfterFailure() {
    if (failure.stepIndex < best.steps.size()) best.steps.resize(failure.stepIndex + 1);
  }

  bool leaveOutSteps(size_t count) {
    bool hasChanged = false;
    for (size_t end = best.steps.size(); end > 0 && runsLeft > 0;) {
      end = std::min(end, best.steps.size());
      const size_t begin = end > count ? end - count : 0;
      Scenario shorter = best;
      shorter.steps.erase(shorter.steps.begin() + static_cast<std::ptrdiff_t>(begin),
                          shorter.steps.begin() + static_cast<std::ptrdiff_t>(end));
      if (accept(std::move(shorter))) {
        hasChanged = true;
        cutAfterFailure();
      }
      end = begin;
    }
    return hasChanged;
  }

  void leaveOutDiscItems() {
    std::vector<std::string> paths;
    for (const auto& [path, entry] : best.disc) paths.push_back(path);
    for (const std::string& top : paths) {
      Scenario smaller = best;
      std::erase_if(smaller.disc, [&](const auto& pair) {
        return pair.first == top || pair.first.starts_with(top + "/");
      });
      if (smaller.disc.size() < best.disc.size()) accept(std::move(smaller));
    }
  }
};

}  // namespace

Scenario shrink(Scenario scenario, Failure* failure) {
  Search search{std::move(scenario), *failure};
  search.cutAfterFailure();
  for (size_t count = std::max<size_t>(search.best.steps.size() / 2, 1); count > 0;) {
    const bool hasChanged = search.leaveOutSteps(count);
    if (count == 1 && !hasChanged) break;
    count = std::max<size_t>(count / 2, 1);
    if (search.runsLeft <= 0) break;
  }
  search.leaveOutDiscItems();
  *failure = search.failure;
  return std::move(search.best);
}

}  // namespace kelvane::model
