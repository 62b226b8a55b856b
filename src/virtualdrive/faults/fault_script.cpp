// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/faults/fault_script.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <sstream>

namespace kelvane::virtualdrive {
namespace {

struct CommandName {
  std::string_view name;
  std::vector<std::uint8_t> operations;
};

const std::array<CommandName, 14>& commandNames() {
  static const std::array<CommandName, 14> names{{{"command", {}},
                                                  {"read", {0x28, 0xA8, 0xBE}},
                                                  {"write", {0x2A, 0xAA}},
                                                  {"sync", {0x35}},
                                                  {"close", {0x5B}},
                                                  {"reserve", {0x53}},
                                                  {"opc", {0x54}},
                                                  {"blank", {0xA1}},
                                                  {"format", {0x04}},
                                                  {"info", {0x51}},
                                                  {"track", {0x52}},
                                                  {"toc", {0x43}},
                                                  {"ready", {0x00}},
                                                  {"tray", {0x1B}}}};
  return names;
}

template <typename Number>
std::optional<Number> numberOf(std::string_view text, Number most, int base = 10) {
  Number number{};
  const auto* end = text.data() + text.size();
  const auto [stop, failure] = std::from_chars(text.data(), end, number, base);
  if (failure != std::errc() || stop != end || number < 0 || number > most) return std::nullopt;
  return number;
}

std::optional<std::uint8_t> byteOf(std::string_view hexadecimal) {
  const auto number = numberOf<int>(hexadecimal, 0xFF, 16);
  if (!number) return std::nullopt;
  return static_cast<std::uint8_t>(*number);
}

/// The words of one line, taken one after the other.
class Words {
 public:
  explicit Words(std::string_view text) {
    std::istringstream stream{std::string(text)};
    for (std::string word; stream >> word;) words_.push_back(word);
  }
  bool atEnd() const { return next_ == words_.size(); }
  std::string take() { return atEnd() ? std::string() : words_[next_++]; }
  bool takeIf(std::string_view word) {
    if (atEnd() || words_[next_] != word) return false;
    ++next_;
    return true;
  }
  /// The next word where it is a number; otherwise it stays.
  std::optional<std::int64_t> takeNumber() {
    if (atEnd()) return std::nullopt;
    const auto number = numberOf<std::int64_t>(words_[next_], std::numeric_limits<Lba>::max());
    if (number) ++next_;
    return number;
  }

 private:
  std::vector<std::string> words_;
  std::size_t next_ = 0;
};

bool parseOperations(const std::string& word, FaultTrigger* trigger) {
  if (word.starts_with("0x")) {
    const auto operation = byteOf(word.substr(2));
    if (operation) trigger->operations = {*operation};
    return operation.has_value();
  }
  const auto* known = std::ranges::find(commandNames(), word, &CommandName::name);
  if (known == commandNames().end()) return false;
  trigger->operations = known->operations;
  return true;
}

// "write 120 and later", the word before it being taken already.
std::string parseTrigger(Words& words, FaultTrigger* trigger) {
  const std::string name = words.take();
  if (!parseOperations(name, trigger)) return "no command has the name “" + name + "”";
  if (const auto number = words.takeNumber()) {
    if (*number == 0) return "commands are counted from 1";
    trigger->number = static_cast<std::uint64_t>(*number);
  }
  if (words.takeIf("lba")) {
    const auto address = words.takeNumber();
    if (!address) return "“lba” needs the number of a sector";
    trigger->address = static_cast<Lba>(*address);
  }
  if (words.takeIf("and")) {
    if (!words.takeIf("later")) return "“and” is followed by “later”";
    trigger->andLater = true;
  }
  return words.atEnd() ? std::string() : "“" + words.take() + "” is not understood";
}

std::optional<Sense> senseOf(std::string_view text) {
  const auto first = text.find('/');
  const auto second = text.find('/', first + 1);
  if (first == std::string_view::npos || second == std::string_view::npos) return std::nullopt;
  const auto key = byteOf(text.substr(0, first));
  const auto code = byteOf(text.substr(first + 1, second - first - 1));
  const auto qualifier = byteOf(text.substr(second + 1));
  if (!key || *key == 0 || *key > 0x0F || !code || !qualifier) return std::nullopt;
  return Sense{*key, *code, *qualifier};
}

std::string parseEffect(Words& words, Fault* fault) {
  const bool isAfter = fault->trigger.moment == FaultTrigger::Moment::After;
  const std::string name = words.take();
  if (name == "attention") {
    fault->effect = FaultEffect::Attention;
  } else if (name == "gone") {
    fault->effect = FaultEffect::Gone;
  } else if (name == "stale" && isAfter) {
    fault->effect = FaultEffect::Stale;
  } else if (name == "full" && !isAfter) {
    fault->sense = kEndOfUserArea;
  } else if (name == "sense" && !isAfter) {
    const auto sense = senseOf(words.take());
    if (!sense) return "a sense is written as 3/0C/00";
    fault->sense = *sense;
  } else {
    return "“" + name + "” cannot happen here";
  }
  return words.atEnd() ? std::string() : "“" + words.take() + "” is not understood";
}

std::string parseLoad(Words& words, FaultScript* script) {
  if (words.takeIf("never")) {
    script->notReadyAfterLoad = FaultScript::kNeverReady;
    return words.takeIf("ready") && words.atEnd() ? "" : "“never” is followed by “ready”";
  }
  const bool isDelay = words.takeIf("not") && words.takeIf("ready");
  const auto delay = isDelay ? words.takeNumber() : std::nullopt;
  if (!delay || !words.takeIf("ms") || !words.atEnd()) {
    return "after “load:” comes “not ready N ms” or “never ready”";
  }
  script->notReadyAfterLoad = std::chrono::milliseconds(*delay);
  return {};
}

std::string parseExclusive(Words& words, FaultScript* script) {
  script->refusesExclusiveAccess = true;
  return words.takeIf("refused") && words.atEnd() ? "" : "after “exclusive:” comes “refused”";
}

std::string parsePace(Words& words, FaultScript* script) {
  constexpr std::int64_t kKilobyte = 1000;
  const auto kilobytes = words.takeNumber();
  if (!kilobytes || *kilobytes == 0 || !words.takeIf("KB/s") || !words.atEnd()) {
    return "after “pace:” comes “N KB/s”";
  }
  script->bytesPerSecond = *kilobytes * kKilobyte;
  return {};
}

std::string parseLine(std::string_view line, FaultScript* script) {
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) return "there is no colon";
  Words condition(line.substr(0, colon));
  Words outcome(line.substr(colon + 1));
  const std::string first = condition.take();
  if (first == "on" || first == "after") {
    Fault fault;
    using Moment = FaultTrigger::Moment;
    fault.trigger.moment = first == "on" ? Moment::Before : Moment::After;
    if (auto problem = parseTrigger(condition, &fault.trigger); !problem.empty()) return problem;
    if (auto problem = parseEffect(outcome, &fault); !problem.empty()) return problem;
    script->faults.push_back(std::move(fault));
    return {};
  }
  if (!condition.atEnd()) return "“" + first + "” is followed by a colon";
  if (first == "load") return parseLoad(outcome, script);
  if (first == "exclusive") return parseExclusive(outcome, script);
  if (first == "pace") return parsePace(outcome, script);
  return "a line begins with “on”, “after”, “load:”, “exclusive:” or “pace:”";
}

}  // namespace

std::optional<FaultScript> parseFaultScript(std::string_view text, std::string* error) {
  FaultScript script;
  std::istringstream lines{std::string(text)};
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    line.resize(std::min(line.find('#'), line.size()));
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    const std::string problem = parseLine(line, &script);
    if (problem.empty()) continue;
    *error = "line " + std::to_string(number) + ": " + problem;
    return std::nullopt;
  }
  return script;
}

}  // namespace kelvane::virtualdrive
