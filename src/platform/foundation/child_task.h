// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class QProcess;

namespace kelvane {

/// A child process with a pipe each for its standard output and standard error.
///
/// What the child writes is taken in as it comes, so a child never stands still because nobody
/// reads. One thread makes the task, uses it and deletes it. A task that is deleted while its child
/// runs ends the child, unless it is detached.
class ChildTask {
 public:
  /// Whether the child shares the fate of our session: a terminal's Ctrl-C, a log-out, the end of
  /// this process. A child with a session of its own takes every `InheritedDescriptor` along.
  enum class Session { Shared, OfItsOwn };

  /// What the child has for standard input, output and error: nothing and two pipes, our own three,
  /// or our own with what it writes to its output going to our error.
  enum class StandardStreams { Pipes, Own, OwnOutputToError };

  ChildTask();
  ~ChildTask();
  ChildTask(const ChildTask&) = delete;
  ChildTask& operator=(const ChildTask&) = delete;

  void setLaunchPath(std::string path);
  void setArguments(std::vector<std::string> arguments);
  void setWorkingDirectory(const std::string& path);
  void setSession(Session session);
  /// Adds one variable to the environment, which otherwise is this process's own.
  void setEnvironmentVariable(const std::string& name, const std::string& value);
  void setStandardStreams(StandardStreams streams);
  /// Has what the child writes to standard error told apart: `availableStandardError` then gives
  /// one write of the child at a time, in pieces of 4096 bytes (pipe(7), O_DIRECT), however late it
  /// is asked. Nothing else gives standard error then, and standard output is dropped. Some hundred
  /// writes are kept; where nobody reads them, further ones are lost, so that the child never
  /// stands still for them, not even when this process has died. Set before `launch`.
  void keepErrorWritesApart();

  /// Starts the child. False where it cannot be started; `launchError` then says why.
  bool launch();
  std::string launchError() const;
  int64_t processIdentifier() const;

  /// What has arrived on standard error: blocks until something has, or gives an empty string once
  /// the child has closed it. For threads without an event loop.
  std::string availableStandardError();

  /// Calls `handler` on this thread, from its event loop, with each complete line (without its line
  /// feed) of standard output. Set before `launch`.
  void setOutputLineHandler(std::function<void(const std::string& line)> handler);
  /// Calls `handler` on this thread, from its event loop, when the child has ended and all its
  /// lines were delivered.
  void setEndHandler(std::function<void()> handler);

  /// Waits for the child's end and lets this thread's event loop turn meanwhile.
  void waitUntilExit();
  /// Waits for the child's end without an event loop. False where it still runs after
  /// `milliseconds` (negative: no limit).
  bool waitBlocking(int milliseconds);

  bool isRunning() const;
  /// Its exit status; 128 plus the signal's number where a signal ended it, as a shell reports it.
  int terminationStatus() const;
  /// Whether a signal ended it.
  bool wasSignalled() const;
  /// All of standard error, once the child has ended.
  std::string readStandardErrorToEnd();
  std::string readStandardOutputToEnd();
  /// Asks the child to end (SIGTERM).
  void terminate();
  /// Ends it (SIGKILL).
  void kill();

 private:
  bool makeErrorPipe();
  void closeErrorPipe();
  void configureChild();
  void deliverLines();

  std::unique_ptr<QProcess> process_;
  std::string launchPath_;
  std::vector<std::string> arguments_;
  std::map<std::string, std::string> environment_;
  Session session_ = Session::Shared;
  StandardStreams streams_ = StandardStreams::Pipes;
  std::function<void(const std::string&)> lineHandler_;
  std::function<void()> endHandler_;
  std::string incompleteLine_;
  std::string pipeError_;
  bool keepsErrorWritesApart_ = false;
  std::array<int, 2> errorPipe_ = {-1, -1};  // Where error writes are kept apart: its two ends.
};

}  // namespace kelvane
