// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/child_task.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "foundation/application_fixture.h"
#include "platform/foundation/inherited_descriptor.h"

namespace kelvane {
namespace {

class ChildTaskTest : public ApplicationFixture {
 protected:
  void shell(const std::string& script) {
    task_.setLaunchPath("/bin/sh");
    task_.setArguments({"-c", script});
  }

  ChildTask task_;
};

TEST_F(ChildTaskTest, OutputErrorAndStatusAreKeptUntilTheyAreAskedFor) {
  shell("echo out; echo err >&2; exit 7");
  ASSERT_TRUE(task_.launch());
  task_.waitUntilExit();
  EXPECT_EQ(task_.readStandardOutputToEnd(), "out\n");
  EXPECT_EQ(task_.readStandardErrorToEnd(), "err\n");
  EXPECT_EQ(task_.terminationStatus(), 7);
}

TEST_F(ChildTaskTest, AChildThatWritesMoreThanAPipeHoldsIsNotHeldUp) {
  shell("head -c 1000000 /dev/zero; head -c 1000000 /dev/zero >&2");
  ASSERT_TRUE(task_.launch());
  task_.waitUntilExit();
  EXPECT_EQ(task_.readStandardOutputToEnd().size(), 1000000u);
  EXPECT_EQ(task_.readStandardErrorToEnd().size(), 1000000u);
}

TEST_F(ChildTaskTest, WritesToStandardErrorAreToldApartHoweverLateTheyAreAskedFor) {
  shell("echo one >&2; printf 'two\\nlines\\n' >&2; printf : >&2; echo end >&2");
  task_.keepErrorWritesApart();
  ASSERT_TRUE(task_.launch());
  ASSERT_TRUE(task_.waitBlocking(-1));
  EXPECT_EQ(task_.availableStandardError(), "one\n");
  EXPECT_EQ(task_.availableStandardError(), "two\nlines\n");
  EXPECT_EQ(task_.availableStandardError(), ":");
  EXPECT_EQ(task_.availableStandardError(), "end\n");
  EXPECT_EQ(task_.availableStandardError(), "");
}

TEST_F(ChildTaskTest, AChildWhoseErrorWritesNobodyReadsIsNotHeldUp) {
  shell("i=0; while [ $i -lt 3000 ]; do i=$((i+1)); echo $i >&2 || :; done; exit 3");
  task_.keepErrorWritesApart();
  ASSERT_TRUE(task_.launch());
  ASSERT_TRUE(task_.waitBlocking(-1));
  EXPECT_EQ(task_.terminationStatus(), 3);
  EXPECT_EQ(task_.availableStandardError(), "1\n");
  EXPECT_EQ(task_.availableStandardError(), "2\n");
}

TEST_F(ChildTaskTest, LinesAreDeliveredCompleteAndTheLastOneWithoutALineFeedToo) {
  std::vector<std::string> lines;
  bool ended = false;
  task_.setOutputLineHandler([&](const std::string& line) {
    EXPECT_FALSE(ended);
    lines.push_back(line);
  });
  task_.setEndHandler([&] { ended = true; });
  shell("printf 'one\\ntw'; printf 'o\\nrest'");
  ASSERT_TRUE(task_.launch());
  task_.waitUntilExit();
  EXPECT_TRUE(ended);
  EXPECT_EQ(lines, (std::vector<std::string>{"one", "two", "rest"}));
}

TEST_F(ChildTaskTest, StandardErrorCanBeReadAsItComesOnAThreadWithoutAnEventLoop) {
  std::string text;
  std::thread reader([&] {
    ChildTask task;
    task.setLaunchPath("/bin/sh");
    task.setArguments({"-c", "echo a >&2; echo b >&2"});
    ASSERT_TRUE(task.launch());
    for (std::string chunk = task.availableStandardError(); !chunk.empty();
         chunk = task.availableStandardError()) {
      text += chunk;
    }
    EXPECT_TRUE(task.waitBlocking(-1));
  });
  reader.join();
  EXPECT_EQ(text, "a\nb\n");
}

TEST_F(ChildTaskTest, TheEnvironmentIsOursWithWhatWasAdded) {
  setenv("KELVANE_TEST_OURS", "ours", 1);
  task_.setEnvironmentVariable("KELVANE_TEST_ADDED", "added");
  shell("echo $KELVANE_TEST_OURS $KELVANE_TEST_ADDED");
  ASSERT_TRUE(task_.launch());
  task_.waitUntilExit();
  EXPECT_EQ(task_.readStandardOutputToEnd(), "ours added\n");
}

TEST_F(ChildTaskTest, StandardInputIsEmpty) {
  shell("cat; echo end");
  ASSERT_TRUE(task_.launch());
  task_.waitUntilExit();
  EXPECT_EQ(task_.readStandardOutputToEnd(), "end\n");
}

TEST_F(ChildTaskTest, AChildEndedByASignalHasTheStatusThatAShellWouldGive) {
  shell("kill -TERM $$");
  ASSERT_TRUE(task_.launch());
  task_.waitUntilExit();
  EXPECT_EQ(task_.terminationStatus(), 128 + SIGTERM);
}

TEST_F(ChildTaskTest, AMissingProgramIsNotLaunchedAndSaysWhy) {
  task_.setLaunchPath("/nowhere/program");
  EXPECT_FALSE(task_.launch());
  EXPECT_FALSE(task_.launchError().empty());
  EXPECT_FALSE(task_.isRunning());
}

TEST_F(ChildTaskTest, DeletingTheTaskEndsItsChild) {
  pid_t child = 0;
  {
    ChildTask task;
    task.setLaunchPath("/bin/sleep");
    task.setArguments({"1000"});
    ASSERT_TRUE(task.launch());
    child = static_cast<pid_t>(task.processIdentifier());
    ASSERT_EQ(kill(child, 0), 0);
  }
  EXPECT_NE(kill(child, 0), 0);
}

TEST_F(ChildTaskTest, AChildInASessionOfItsOwnOutlivesItsTask) {
  pid_t child = 0;
  {
    ChildTask task;
    task.setSession(ChildTask::Session::OfItsOwn);
    task.setLaunchPath("/bin/sleep");
    task.setArguments({"1000"});
    ASSERT_TRUE(task.launch());
    child = static_cast<pid_t>(task.processIdentifier());
  }
  EXPECT_EQ(kill(child, 0), 0);
  EXPECT_EQ(getsid(child), child);
  kill(child, SIGKILL);
}

class ChildThatInherits : public ChildTaskTest {
 protected:
  /// The number by which whoever inherits the file has it.
  static int numberInherited() {
    const std::vector<int> all = InheritedDescriptor::all();
    EXPECT_EQ(all.size(), 1u);
    return all.empty() ? -1 : all[0];
  }

  /// What a child with that session has open by that number.
  std::string fileOfChild(ChildTask::Session session, int number) {
    shell("readlink /proc/self/fd/" + std::to_string(number) + " || echo closed");
    task_.setSession(session);
    EXPECT_TRUE(task_.launch());
    task_.waitUntilExit();
    return task_.readStandardOutputToEnd();
  }

  const std::unique_ptr<FILE, int (*)(FILE*)> file_{fopen("/dev/zero", "re"), fclose};
};

TEST_F(ChildThatInherits, HasASessionOfItsOwn) {
  const InheritedDescriptor inherited(fileno(file_.get()));
  EXPECT_EQ(fileOfChild(ChildTask::Session::OfItsOwn, numberInherited()), "/dev/zero\n");
}

TEST_F(ChildThatInherits, DoesNotShareOurSession) {
  const InheritedDescriptor inherited(fileno(file_.get()));
  EXPECT_EQ(fileOfChild(ChildTask::Session::Shared, numberInherited()), "closed\n");
}

TEST_F(ChildThatInherits, InheritsNothingThatHasBeenLetGo) {
  auto inherited = std::make_unique<InheritedDescriptor>(fileno(file_.get()));
  const int number = numberInherited();
  inherited.reset();
  EXPECT_TRUE(InheritedDescriptor::all().empty());
  // Somebody else may have the number by now.
  EXPECT_NE(fileOfChild(ChildTask::Session::OfItsOwn, number), "/dev/zero\n");
}

TEST_F(ChildThatInherits, InheritsNothingThatCouldNotBeCopied) {
  constexpr int kNoDescriptor = -1;
  const InheritedDescriptor inherited(kNoDescriptor);
  EXPECT_TRUE(InheritedDescriptor::all().empty());
}

}  // namespace
}  // namespace kelvane
