// SPDX-License-Identifier: GPL-2.0-or-later
// What mkisofs and growisofs say, in words that tell the user what to do. mkisofs is the real one;
// growisofs's words are recorded ones.
#include "burn/plain_reason.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <filesystem>
#include <fstream>

#include "foundation/temporary_folder.h"
#include "platform/foundation/child_task.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class PlainReason : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    static int count = 0;
    if (QCoreApplication::instance() == nullptr) new QCoreApplication(count, nullptr);
    loadStringsTable("en");
  }

  std::string overlay() const { return folder.file("812"); }

  void put(const std::string& path) {
    std::filesystem::create_directories(
        std::filesystem::path(overlay() + "/" + path).parent_path());
    std::ofstream(overlay() + "/" + path) << "content";
  }

  /// What mkisofs says of the overlay directory, with these options besides the usual ones.
  std::string mkisofs(const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments = {"-quiet", "-D",           "-r",
                                          "-J",     "-joliet-long", "-input-charset",
                                          "utf-8",  "-o",           folder.file("image")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(overlay());
    ChildTask task;
    task.setLaunchPath("mkisofs");
    task.setArguments(arguments);
    EXPECT_TRUE(task.launch()) << task.launchError();
    task.waitBlocking(-1);
    return task.readStandardErrorToEnd();
  }
  /// The same of a session that continues a disc with what the overlay directory held until now.
  std::string nextSession(const std::vector<std::string>& hidden = {}) {
    EXPECT_EQ(mkisofs(), "");
    std::filesystem::rename(folder.file("image"), folder.file("disc"));
    std::filesystem::remove_all(overlay());
    std::filesystem::create_directory(overlay());
    std::ofstream list(folder.file("list"));
    for (const std::string& pattern : hidden) list << pattern << "\n";
    return folder.file("disc");
  }
  std::string continued() {
    return mkisofs({"-hide-list", folder.file("list"), "-M", folder.file("disc"), "-C", "0,20000"});
  }

  static std::string recorded(const std::string& name) {
    std::ifstream file(KELVANE_SOURCE_DIR "/tests/burn/growisofs_output/" + name + ".txt");
    return {std::istreambuf_iterator<char>(file), {}};
  }

  testing::TemporaryFolder folder;
};

TEST_F(PlainReason, NothingIsMadeUp) {
  EXPECT_EQ(plainReason("", ""), "");
  EXPECT_EQ(plainReason("Rock Ridge signatures found\nVolume ID string too long\n", "/tmp/812"),
            "");
  EXPECT_EQ(withPlainReason("genisoimage: whatever", "/tmp/812"), "genisoimage: whatever");
}

TEST_F(PlainReason, TheProgramsWordsFollowIt) {
  const std::string said = "File big is larger than 4GiB-1.\n";
  EXPECT_EQ(withPlainReason(said, ""), plainReason(said, "") + "\n" + said);
}

TEST_F(PlainReason, WordsOfABurnWithoutTroubleAreLeftOut) {
  const std::string usual = "Rock Ridge signatures found\n";
  EXPECT_EQ(withPlainReason(usual + "genisoimage: whatever\n\n", ""), "genisoimage: whatever\n");
  EXPECT_EQ(withPlainReason(usual + "genisoimage: what", ""), "genisoimage: what");
  EXPECT_EQ(withPlainReason(usual, ""), usual) << "better than nothing";
  EXPECT_EQ(withPlainReason("", ""), "");
  const std::string said = "File big is larger than 4GiB-1.\n";
  EXPECT_EQ(withPlainReason(usual + said, ""), plainReason(said, "") + "\n" + said);
}

TEST_F(PlainReason, SomeReasonsLieInTheDiscWhateverTheChangesAre) {
  EXPECT_TRUE(reasonLiesInTheDisc(recorded("session-past-4-gb")));
  EXPECT_TRUE(reasonLiesInTheDisc("Cannot parse Rock Ridge attributes"));
  EXPECT_FALSE(reasonLiesInTheDisc(recorded("file-of-4-gib")));
  EXPECT_FALSE(reasonLiesInTheDisc("File big is larger than 4GiB-1.\n"));
  EXPECT_FALSE(reasonLiesInTheDisc(""));
}

TEST_F(PlainReason, ANameThatIsNoUtf8) {
  put("bad\377name");
  EXPECT_THAT(plainReason(mkisofs(), overlay()),
              AllOf(HasSubstr("“bad\377name”"), HasSubstr("UTF-8")));
}

TEST_F(PlainReason, TwoNamesThatAreTooMuchAlike) {
  const std::string name(103, 'n');
  put("sub/" + name + "1");
  put("sub/" + name + "2");
  EXPECT_THAT(
      plainReason(mkisofs(), overlay()),
      AllOf(HasSubstr("“sub/" + name + "1”"), HasSubstr("“sub/" + name + "2”"), HasSubstr("103")));
}

TEST_F(PlainReason, AFileOf4GB) {
  put("sub/huge.bin");
  ASSERT_EQ(truncate((overlay() + "/sub/huge.bin").c_str(), off_t{1} << 32), 0);
  EXPECT_THAT(plainReason(mkisofs(), overlay()),
              AllOf(StartsWith("“sub/huge.bin”"), HasSubstr("4 GB")));
}

TEST_F(PlainReason, AFolderInThePlaceOfAFileOfTheDisc) {
  put("a");
  nextSession();
  put("a/b");
  EXPECT_THAT(plainReason(continued(), overlay()), HasSubstr("a file on the disc"));
}

TEST_F(PlainReason, AFolderThatAPatternHidesWithWhatTheDiscHasInIt) {
  put("qx/c d/file");
  nextSession({overlay() + "/*x"});
  put("qx/new");
  EXPECT_THAT(plainReason(continued(), overlay()), HasSubstr("“c d”"));
}

TEST_F(PlainReason, ALinkThatMkisofsCannotReadAgain) {
  put("file");
  const std::string name(180, 'p');
  std::filesystem::create_symlink(name + "/" + name + "/x", overlay() + "/link");
  nextSession();
  put("new");
  EXPECT_THAT(plainReason(continued(), overlay()), HasSubstr("symbolic link"));
}

TEST_F(PlainReason, AFullFolderForTemporaryFiles) {
  put("file");
  EXPECT_THAT(plainReason(mkisofs({"-o", "/dev/full"}), overlay()), HasSubstr("temporary files"));
}

TEST_F(PlainReason, ASessionThatTheRecorderFindsTooLong) {
  EXPECT_THAT(plainReason("The session needs 39063 blocks, but only 300 are free on the disc.", ""),
              HasSubstr("not enough room"));
}

TEST_F(PlainReason, OfThisApplicationsOwnStandsForItsWords) {
  const std::string said = "The drive does not say where the next session may begin.";
  EXPECT_THAT(plainReason(said, ""), HasSubstr("Try another drive"));
  EXPECT_EQ(withPlainReason(said, ""), plainReason(said, ""));
}

TEST_F(PlainReason, WhatGrowisofsSaid) {
  for (const char* name : {"dvd+rw-does-not-fit", "dvd-r-does-not-fit", "dvd-rw-does-not-fit"}) {
    EXPECT_THAT(plainReason(recorded(name), ""), HasSubstr("not enough room")) << name;
  }
  EXPECT_THAT(plainReason(recorded("file-of-4-gib"), ""), HasSubstr("4 GB"));
  EXPECT_THAT(plainReason(recorded("name-in-no-encoding"), ""), HasSubstr("UTF-8"));
  EXPECT_THAT(plainReason(recorded("names-equal-in-joliet"), ""), HasSubstr("103"));
  EXPECT_THAT(plainReason(recorded("session-past-4-gb"), ""), HasSubstr("beyond 4 GB"));
  EXPECT_THAT(plainReason(":-( FORMAT allocaion length isn't sane\n", ""), HasSubstr("formatted"));
  for (const char* name : {"dvd+rw-append", "dvd-r-append", "dvd-rw-append"}) {
    EXPECT_EQ(plainReason(recorded(name), ""), "") << name;
  }
}

}  // namespace
}  // namespace kelvane
