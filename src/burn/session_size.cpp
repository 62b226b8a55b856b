// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/session_size.h"

#include <algorithm>
#include <charconv>

#include "burn/growisofs_arguments.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/child_task.h"

namespace kelvane {
namespace {

constexpr char kImageBuilder[] = "mkisofs";
constexpr int kStopPollMilliseconds = 20;

std::optional<uint64_t> numberOf(const std::string& output) {
  uint64_t number = 0;
  const char* const end = output.data() + output.size();
  const auto [rest, failure] = std::from_chars(output.data(), end, number);
  const bool isAll = rest == end || (*rest == '\n' && rest + 1 == end);
  if (failure != std::errc() || !isAll) return std::nullopt;
  return number;
}

void insertBeforeSource(std::vector<std::string>& arguments,
                        std::initializer_list<std::string> options) {
  arguments.insert(arguments.end() - 1, options);
}

}  // namespace

std::vector<std::string> sessionSizeArguments(const SessionImageRequest& request) {
  std::vector<std::string> arguments = mkisofsArguments(request);
  const auto output = std::find(arguments.begin(), arguments.end(), "-o");
  arguments.erase(output, output + 2);
  insertBeforeSource(arguments, {"-print-size"});
  return arguments;
}

std::vector<std::string> sessionSizeArguments(const DVDBurnParameters& parameters,
                                              const std::optional<DvdContinuation>& continued) {
  // What stands before is for growisofs itself, and so is what it is forced to.
  std::vector<std::string> arguments = growisofsArguments(parameters);
  arguments.erase(arguments.begin(), std::find(arguments.begin(), arguments.end(), "-hide-list"));
  std::erase(arguments, "-use-the-force-luke=tty");
  insertBeforeSource(arguments, {"-quiet", "-print-size"});
  if (continued) {
    insertBeforeSource(arguments, {"-M", continued->deviceName, "-C", continued->sessionString});
  }
  return arguments;
}

void leaveOutAppleDouble(std::vector<std::string>& arguments) {
  insertBeforeSource(arguments, {"-m", "._*"});
}

SessionSize measureSession(const std::vector<std::string>& arguments, const std::stop_token& stop) {
  const auto program = Bundle::mainBundle().pathForAuxiliaryExecutable(kImageBuilder);
  if (!program) return {std::nullopt, "The program that builds the session image is missing."};
  ChildTask task;
  task.setArguments(arguments);
  task.setLaunchPath(*program);
  if (!task.launch()) return {std::nullopt, task.launchError()};
  while (!task.waitBlocking(kStopPollMilliseconds)) {
    if (stop.stop_requested()) return {};  // The task ends its child with itself.
  }
  SessionSize size;
  size.said = task.readStandardErrorToEnd();
  if (task.terminationStatus() == 0) size.blocks = numberOf(task.readStandardOutputToEnd());
  return size;
}

}  // namespace kelvane
