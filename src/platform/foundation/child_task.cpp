// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/child_task.h"

#include <fcntl.h>
#include <unistd.h>

#include <QEventLoop>
#include <QProcess>
#include <QProcessEnvironment>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

#include "platform/foundation/inherited_descriptor.h"

namespace kelvane {
namespace {

// QProcess kills its child with itself. One that is to outlive us keeps its object, which goes when
// the child ends; or never, where we end first.
void leaveRunning(QProcess* process) {
  static auto* const leftRunning = new std::vector<QProcess*>;
  leftRunning->push_back(process);
  QObject::connect(process, &QProcess::finished, process, [process] {
    std::erase(*leftRunning, process);
    process->deleteLater();
  });
}

}  // namespace

ChildTask::ChildTask() : process_(std::make_unique<QProcess>()) {
  process_->setStandardInputFile(QProcess::nullDevice());
}

ChildTask::~ChildTask() {
  closeErrorPipe();
  process_->disconnect();
  if (!isRunning()) return;
  if (session_ == Session::OfItsOwn) {
    leaveRunning(process_.release());
    return;
  }
  process_->kill();
  process_->waitForFinished(-1);
}

void ChildTask::setLaunchPath(std::string path) {
  launchPath_ = std::move(path);
}

void ChildTask::setArguments(std::vector<std::string> arguments) {
  arguments_ = std::move(arguments);
}

void ChildTask::setWorkingDirectory(const std::string& path) {
  process_->setWorkingDirectory(QString::fromStdString(path));
}

void ChildTask::setSession(Session session) {
  session_ = session;
}

void ChildTask::setEnvironmentVariable(const std::string& name, const std::string& value) {
  environment_[name] = value;
}

void ChildTask::setStandardStreams(StandardStreams streams) {
  streams_ = streams;
  if (streams == StandardStreams::Pipes) return;
  process_->setStandardInputFile({});
  process_->setInputChannelMode(QProcess::ForwardedInputChannel);
  process_->setProcessChannelMode(QProcess::ForwardedChannels);
}

void ChildTask::keepErrorWritesApart() {
  keepsErrorWritesApart_ = true;
  // Whoever waits for the error pipe does not take in anything else.
  process_->setStandardOutputFile(QProcess::nullDevice());
}

bool ChildTask::makeErrorPipe() {
  if (!keepsErrorWritesApart_) return true;
  if (pipe2(errorPipe_.data(), O_CLOEXEC | O_DIRECT) != 0) return false;
  // A page for each write; there are 16 otherwise.
  constexpr int kPipeBytes = 1 << 20;
  fcntl(errorPipe_[1], F_SETPIPE_SZ, kPipeBytes);
  return fcntl(errorPipe_[1], F_SETFL, O_DIRECT | O_NONBLOCK) == 0;
}

void ChildTask::closeErrorPipe() {
  for (int& end : errorPipe_) {
    if (end >= 0) close(end);
    end = -1;
  }
}

void ChildTask::configureChild() {
  const bool ownSession = session_ == Session::OfItsOwn;
  const bool outputToError = streams_ == StandardStreams::OwnOutputToError;
  const int errorEnd = errorPipe_[1];
  if (!ownSession && !outputToError && errorEnd < 0) return;
  const std::vector<int> inherited = ownSession ? InheritedDescriptor::all() : std::vector<int>();
  // Runs in the child, between fork and exec.
  process_->setChildProcessModifier([ownSession, outputToError, errorEnd, inherited] {
    if (ownSession) setsid();
    for (const int descriptor : inherited) fcntl(descriptor, F_SETFD, 0);
    if (errorEnd >= 0) dup2(errorEnd, STDERR_FILENO);
    if (outputToError) dup2(STDERR_FILENO, STDOUT_FILENO);
  });
}

bool ChildTask::launch() {
  QStringList arguments;
  for (const std::string& argument : arguments_) arguments << QString::fromStdString(argument);
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const auto& [name, value] : environment_) {
    environment.insert(QString::fromStdString(name), QString::fromStdString(value));
  }
  process_->setProcessEnvironment(environment);
  if (!makeErrorPipe()) {
    pipeError_ = std::strerror(errno);
    return false;
  }
  configureChild();
  QObject::connect(process_.get(), &QProcess::readyReadStandardOutput, [this] { deliverLines(); });
  QObject::connect(process_.get(), &QProcess::finished, [this] {
    deliverLines();
    if (!incompleteLine_.empty() && lineHandler_) lineHandler_(std::exchange(incompleteLine_, {}));
    if (endHandler_) endHandler_();
  });
  process_->start(QString::fromStdString(launchPath_), arguments);
  const bool started = process_->waitForStarted(-1);
  // The child's end is the child's alone: with it closes the pipe.
  if (errorPipe_[1] >= 0) close(std::exchange(errorPipe_[1], -1));
  return started;
}

std::string ChildTask::launchError() const {
  return pipeError_.empty() ? process_->errorString().toStdString() : pipeError_;
}

int64_t ChildTask::processIdentifier() const {
  return process_->processId();
}

std::string ChildTask::availableStandardError() {
  if (errorPipe_[0] >= 0) {
    std::array<char, PIPE_BUF> buffer{};
    ssize_t length = 0;
    do {
      length = read(errorPipe_[0], buffer.data(), buffer.size());
    } while (length < 0 && errno == EINTR);
    return {buffer.data(), length > 0 ? static_cast<size_t>(length) : 0};
  }
  process_->setReadChannel(QProcess::StandardError);
  if (process_->bytesAvailable() == 0) process_->waitForReadyRead(-1);
  return process_->readAllStandardError().toStdString();
}

void ChildTask::setOutputLineHandler(std::function<void(const std::string&)> handler) {
  lineHandler_ = std::move(handler);
}

void ChildTask::setEndHandler(std::function<void()> handler) {
  endHandler_ = std::move(handler);
}

void ChildTask::deliverLines() {
  if (!lineHandler_) return;
  incompleteLine_ += process_->readAllStandardOutput().toStdString();
  size_t end = 0;
  while ((end = incompleteLine_.find('\n')) != std::string::npos) {
    const std::string line = incompleteLine_.substr(0, end);
    incompleteLine_.erase(0, end + 1);
    lineHandler_(line);
  }
}

void ChildTask::waitUntilExit() {
  if (!isRunning()) return;
  QEventLoop loop;
  QObject::connect(process_.get(), &QProcess::finished, &loop, &QEventLoop::quit);
  loop.exec();
}

bool ChildTask::waitBlocking(int milliseconds) {
  return !isRunning() || process_->waitForFinished(milliseconds);
}

bool ChildTask::isRunning() const {
  return process_->state() != QProcess::NotRunning;
}

int ChildTask::terminationStatus() const {
  constexpr int kSignalledByShellConvention = 128;
  return wasSignalled() ? kSignalledByShellConvention + process_->exitCode() : process_->exitCode();
}

bool ChildTask::wasSignalled() const {
  return process_->exitStatus() == QProcess::CrashExit;
}

std::string ChildTask::readStandardErrorToEnd() {
  return process_->readAllStandardError().toStdString();
}

std::string ChildTask::readStandardOutputToEnd() {
  return process_->readAllStandardOutput().toStdString();
}

void ChildTask::terminate() {
  process_->terminate();
}

void ChildTask::kill() {
  process_->kill();
}

}  // namespace kelvane
