// SPDX-License-Identifier: GPL-2.0-or-later
//
// The argument lists and the verdict, held against the real program.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>
#include <filesystem>
#include <fstream>

#include "burn/imaging_verdict.h"
#include "burn/mkisofs_arguments.h"
#include "foundation/temporary_folder.h"

namespace kelvane {
namespace {

class MkisofsRunTest : public ::testing::Test {
 protected:
  void writeFile(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
  }

  SessionImageRequest request(const std::string& name, const std::string& sessionString) {
    writeFile(folder.file("list.hide"), "");
    return {.sessionString = sessionString,
            .volumeName = "RUN",
            .imagePath = folder.file(name + ".iso"),
            .hideListPath = folder.file("list.hide"),
            .deviceName = folder.file("disc"),
            .tmpDirPath = folder.file(name)};
  }

  // Runs the image builder; gives all it writes to standard error.
  std::string errorsOf(const SessionImageRequest& what) {
    QStringList arguments;
    for (const std::string& argument : mkisofsArguments(what)) {
      arguments << QString::fromStdString(argument);
    }
    QProcess process;
    process.start("genisoimage", arguments);
    EXPECT_TRUE(process.waitForFinished(-1));
    return process.readAllStandardError().toStdString();
  }

  testing::TemporaryFolder folder;
};

TEST_F(MkisofsRunTest, AFirstAndAFurtherSessionAreJudgedSuccessful) {
  writeFile(folder.file("one/file.txt"), "content");
  const SessionImageRequest first = request("one", "0");
  EXPECT_EQ(judgeImaging(errorsOf(first)), ImagingVerdict::Successful);
  std::filesystem::copy_file(first.imagePath, folder.file("disc"));

  writeFile(folder.file("two/other.txt"), "more");
  const SessionImageRequest further = request("two", "0,11702");
  EXPECT_EQ(errorsOf(further), "Rock Ridge signatures found\n");
  EXPECT_GT(std::filesystem::file_size(further.imagePath), 0U);
}

TEST_F(MkisofsRunTest, NamesThatCannotBeEncodedAreJudgedAFailure) {
  writeFile(folder.file("one/bad\xFFname"), "content");
  EXPECT_EQ(judgeImaging(errorsOf(request("one", "0"))), ImagingVerdict::Failed);
}

TEST_F(MkisofsRunTest, AVolumeNameThatIsTooLongIsJudgedAFailure) {
  writeFile(folder.file("one/file.txt"), "content");
  SessionImageRequest what = request("one", "0");
  what.volumeName = std::string(33, 'V');
  EXPECT_EQ(judgeImaging(errorsOf(what)), ImagingVerdict::Failed);
}

TEST_F(MkisofsRunTest, ASessionThatIsNotThereIsJudgedAFailure) {
  writeFile(folder.file("one/file.txt"), "content");
  writeFile(folder.file("disc"), std::string(100 * 2048, '\0'));
  EXPECT_EQ(judgeImaging(errorsOf(request("one", "0,11702"))), ImagingVerdict::Failed);
}

}  // namespace
}  // namespace kelvane
