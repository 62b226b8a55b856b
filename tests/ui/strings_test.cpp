// SPDX-License-Identifier: GPL-2.0-or-later
// The strings table: every key has a text in both languages, with the same placeholders.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTranslator>
#include <QXmlStreamReader>
#include <functional>
#include <map>
#include <set>

#include "platform/foundation/bundle.h"
#include "platform/foundation/node_access.h"
#include "ui/window_states.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Texts = std::map<std::string, QString>;

/// The texts of a source file by their keys. A key that stands there twice fails the test.
Texts textsOf(const std::string& language) {
  QFile file(QStringLiteral(KELVANE_SOURCE_DIR "/resources/strings/kelvanefs_%1.ts")
                 .arg(QString::fromStdString(language)));
  EXPECT_TRUE(file.open(QIODevice::ReadOnly));
  QXmlStreamReader xml(&file);
  Texts texts;
  std::string key;
  while (!xml.atEnd()) {
    if (xml.readNext() != QXmlStreamReader::StartElement) continue;
    if (xml.name() == QLatin1String("message"))
      key = xml.attributes().value("id").toString().toStdString();
    if (xml.name() == QLatin1String("translation")) {
      EXPECT_FALSE(xml.attributes().hasAttribute("type")) << key << " is not finished";
      EXPECT_TRUE(texts.emplace(key, xml.readElementText()).second) << key << " stands there twice";
    }
  }
  EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
  return texts;
}

std::vector<std::string> placeholdersOf(const QString& text) {
  static const QRegularExpression placeholder(QStringLiteral("%[@a-zA-Z]"));
  std::vector<std::string> found;
  for (auto match = placeholder.globalMatch(text); match.hasNext();) {
    found.push_back(match.next().captured().toStdString());
  }
  return found;
}

const std::vector<std::string> kKeysOfTheController = {"OK",
                                                       "Install",
                                                       "Quit",
                                                       "Erase",
                                                       "Cancel",
                                                       "InstallationIncomplete",
                                                       "InstallationIncompleteLong",
                                                       "buttonopen",
                                                       "buttonclose",
                                                       "insertdisk",
                                                       "loadingdisk",
                                                       "headerDisksMounting",
                                                       "headerDisksAvail",
                                                       "headerDisksRemounted",
                                                       "Unmountfailed",
                                                       "Unmountfailedlong",
                                                       "diskfull",
                                                       "unsupporteddiskformat",
                                                       "unsupporteddisktype",
                                                       "viewSizeOfDisk",
                                                       "viewSizeNotAvail",
                                                       "burningdisk",
                                                       "burnpreparing",
                                                       "preparingdata",
                                                       "burningchangescd",
                                                       "CreateTrackAbortedWithError",
                                                       "CreateTrackAbortedWithErrorLong",
                                                       "SessionNotPreparedLong",
                                                       "CDBurnError",
                                                       "CDBurnErrorLong",
                                                       "preparingemptydisk",
                                                       "burningchangesdvd",
                                                       "DVDDeviceNotResponding",
                                                       "DVDDeviceNotRespondingLong",
                                                       "DVDBurnError",
                                                       "DVDBurnErrorAllocLong",
                                                       "DVDBurnErrorFull",
                                                       "DVDBurnErrorLong",
                                                       "attempteraseshort",
                                                       "attempteraselong",
                                                       "erasingdisk",
                                                       "EraseError",
                                                       "EraseErrorLong",
                                                       "EraseDriveBusy",
                                                       "EraseDriveBusyLong",
                                                       "EraseVolumeBusy",
                                                       "EraseVolumeBusyLong",
                                                       "EraseDiscChanged",
                                                       "EraseDiscChangedLong",
                                                       "updatecheck",
                                                       "updatechecklong",
                                                       "updatecheckdownload",
                                                       "cancelbutton",
                                                       "LicenseResource",
                                                       "LicenseTitle",
                                                       "LicenseAgree",
                                                       "LicenseDisagree",
                                                       "VolumeBusy",
                                                       "VolumeBusyLong",
                                                       "VolumeNotUnmounted",
                                                       "VolumeNotUnmountedLong",
                                                       "DVDBurnedDoubtfully",
                                                       "DVDBurnedDoubtfullyLong",
                                                       "LogoutDiscOpen",
                                                       "LogoutDuringBurn",
                                                       "LogoutDuringBurnLong",
                                                       "ReasonNameNotText",
                                                       "ReasonNamesTooAlike",
                                                       "ReasonFileTooLarge",
                                                       "ReasonFileNotReadable",
                                                       "ReasonFolderHidden",
                                                       "ReasonFolderForFile",
                                                       "ReasonLinkLength",
                                                       "ReasonDiscFull",
                                                       "ReasonSessionLimit",
                                                       "ReasonFormatUnknown",
                                                       "ReasonTemporaryFolderFull",
                                                       "ReasonNoNextSession",
                                                       "ReasonNoImageBuilder",
                                                       "ReasonImageBuilderKilled",
                                                       "ReasonForeignItem",
                                                       "ReasonHideListNotWritten",
                                                       "ReasonImageNotMade",
                                                       "ChangesKeptWhere",
                                                       "VolumeUser",
                                                       "ReasonNoNode",
                                                       "ReasonGroupAtNextLogin",
                                                       "ReasonNotInGroup",
                                                       "ReasonNoAccess",
                                                       "ReasonDeviceNotOpened",
                                                       "ReasonNoFuseModule",
                                                       "ReasonContainer",
                                                       "ReasonNoFuseDevice",
                                                       "ReasonRunning",
                                                       "ReasonFileNotOpened",
                                                       "ReasonFileNotLocked",
                                                       "ReasonVolumesNotUsable",
                                                       "ReasonVolumesHelp",
                                                       "TrayKeptShut",
                                                       "TrayKeptShutLong",
                                                       "NoticeBurned",
                                                       "DriveClosed",
                                                       "DriveClosedLong",
                                                       "NoticeBurnedLong",
                                                       "NoticeBurnFailed",
                                                       "NoticeBurnFailedLong"};

/// Calls `use` with the text of each source file of the application.
void forEachSource(const std::function<void(const QString& text)>& use) {
  QDirIterator files(QStringLiteral(KELVANE_SOURCE_DIR "/src"), {QStringLiteral("*.cpp")},
                     QDir::Files, QDirIterator::Subdirectories);
  while (files.hasNext()) {
    QFile file(files.next());
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    use(QString::fromUtf8(file.readAll()));
  }
}

/// The keys that stand in the sources where a text is asked for or an alert is made, with that of
/// the explanation where an alert takes it from its message's.
std::set<std::string> keysInSources() {
  static const QRegularExpression use(
      QStringLiteral(R"re((localizedString\(|localizedText\(|warningAlert\(|refuseBurn\(|)re"
                     R"re(refuseErase\(|messageKey = |informativeKey = )\s*"(\w+)"\s*[^+\s])re"));
  std::set<std::string> keys;
  forEachSource([&keys](const QString& text) {
    for (auto match = use.globalMatch(text); match.hasNext();) {
      const QRegularExpressionMatch found = match.next();
      const std::string key = found.captured(2).toStdString();
      keys.insert(key);
      if (found.captured(1) == QLatin1String("warningAlert(")) keys.insert(key + "Long");
    }
  });
  return keys;
}

class Strings : public ::testing::TestWithParam<std::string> {};

TEST_P(Strings, EveryKeyThatTheControllerNamesHasAText) {
  const Texts texts = textsOf(GetParam());
  for (const std::string& key : kKeysOfTheController) {
    const auto found = texts.find(key);
    ASSERT_NE(found, texts.end()) << key;
    EXPECT_FALSE(found->second.trimmed().isEmpty()) << key;
  }
}

TEST_P(Strings, EveryKeyInTheSourcesHasAText) {
  const Texts texts = textsOf(GetParam());
  const std::set<std::string> keys = keysInSources();
  EXPECT_GE(keys.size(), 100U);
  for (const std::string& key : keys) EXPECT_TRUE(texts.contains(key)) << key;
}

TEST_P(Strings, NoTextIsEmptyOrEndsInABlank) {
  for (const auto& [key, text] : textsOf(GetParam())) {
    EXPECT_FALSE(text.isEmpty()) << key;
    EXPECT_EQ(text, text.trimmed()) << key;
  }
}

TEST_P(Strings, CompiledTableAnswersEveryKeyWithTheTextOfItsSource) {
  QTranslator table;
  ASSERT_TRUE(table.load(QStringLiteral(":/kelvanefs/strings/kelvanefs_%1.qm")
                             .arg(QString::fromStdString(GetParam()))));
  for (const auto& [key, text] : textsOf(GetParam())) {
    EXPECT_EQ(table.translate(nullptr, key.c_str()), text) << key;
  }
}

TEST_P(Strings, FreeSpaceHasOneIntegerPlaceholder) {
  EXPECT_THAT(placeholdersOf(textsOf(GetParam()).at("viewSizeOfDisk")), ElementsAre("%i"));
}

INSTANTIATE_TEST_SUITE_P(Languages, Strings, ::testing::Values("en", "de"),
                         [](const auto& language) { return language.param; });

TEST(StringsOfBothLanguages, HaveTheSameKeysAndPlaceholders) {
  const Texts english = textsOf("en");
  const Texts german = textsOf("de");
  ASSERT_EQ(english.size(), german.size());
  for (const auto& [key, text] : english) {
    ASSERT_TRUE(german.contains(key)) << key;
    EXPECT_EQ(placeholdersOf(text), placeholdersOf(german.at(key))) << key;
  }
}

TEST(StringsOfBothLanguages, EveryLongTextHasItsShortOne) {
  // These explain the message of another key.
  const std::set<std::string> others = {"DVDBurnErrorAllocLong", "PreferenceNoUpdateCheckLong",
                                        "SessionNotPreparedLong"};
  for (const auto& [key, text] : textsOf("en")) {
    if (!key.ends_with("Long") || others.contains(key)) continue;
    EXPECT_TRUE(textsOf("en").contains(key.substr(0, key.size() - 4))) << key;
  }
}

/// The English words that stand in the sources beside a key.
std::map<std::string, QString> wordsInSources() {
  static const QRegularExpression call(
      QStringLiteral(R"re(localizedString\(\s*"(\w+)",\s*((?:"[^"]*"\s*)+)\))re"));
  std::map<std::string, QString> words;
  forEachSource([&words](const QString& text) {
    for (auto match = call.globalMatch(text); match.hasNext();) {
      const QRegularExpressionMatch found = match.next();
      QString joined = found.captured(2).trimmed();
      joined.replace(QRegularExpression(QStringLiteral("\"\\s*\"")), QString());
      words[found.captured(1).toStdString()] = joined.mid(1, joined.size() - 2);
    }
  });
  return words;
}

TEST(EnglishStrings, AreTheWordsThatStandInTheSourcesForWhereThereIsNoTable) {
  const Texts english = textsOf("en");
  const auto words = wordsInSources();
  EXPECT_GE(words.size(), 15U);
  for (const auto& [key, text] : words) {
    ASSERT_TRUE(english.contains(key)) << key;
    EXPECT_EQ(english.at(key), text) << key;
  }
}

TEST(GermanStrings, TellWhyADriveIsClosed) {
  const testing::Language german("de");
  NodeAccess access;
  access.exists = true;
  access.groupIsAllowed = true;
  access.group = "cdrom";
  access.user = "anna";
  EXPECT_THAT(describeMissingAccess("/dev/sr0", access, ""),
              ::testing::HasSubstr("Führen Sie als root aus: adduser anna cdrom."));
}

TEST(BundleResources, DiscIconIsAPictureAndTheVolumeIconAnIconFile) {
  const auto icon = Bundle::mainBundle().pathForResource("diskicon", "png");
  ASSERT_TRUE(icon.has_value());
  EXPECT_FALSE(QImage(QString::fromStdString(*icon)).isNull());
  const auto volumeIcon = Bundle::mainBundle().pathForResource("disk", "icns");
  ASSERT_TRUE(volumeIcon.has_value());
  QFile file(QString::fromStdString(*volumeIcon));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.read(4), "icns");
}

}  // namespace
}  // namespace kelvane
