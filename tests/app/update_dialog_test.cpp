// SPDX-License-Identifier: GPL-2.0-or-later
// What the user sees of the update check: the real dialog, at the answers of a server on this
// machine.
#include <QMessageBox>

#include "app/window_session_fixture.h"
#include "platform/foundation/strings_table.h"
#include "services/version_server.h"
#include "ui/opened_urls.h"

namespace kelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class UpdateDialog : public WindowSessionTest {
 protected:
  UpdateSource updates() const override {
    return {.versionEndpoint = server_.endpoint(),
            .productPage = "https://kelvanefs.example/download",
            .patience = kPatience};
  }

  static QWidget* panel() { return shown("alertPanel"); }

  VersionServer server_;
  // Whoever waited for the answer of a silent server would still do so when the test is given up.
  static constexpr std::chrono::minutes kPatience{10};
  kelvane::testing::OpenedUrls browser_{QStringLiteral("https")};
};

TEST_F(UpdateDialog, LeadsToTheProductPageByItsFirstButton) {
  agreeBeforehand();
  server_.answerBody("1601");
  when(panel, [] {
    const auto* box = qobject_cast<QMessageBox*>(panel());
    EXPECT_EQ(box->windowModality(), Qt::ApplicationModal);
    EXPECT_EQ(box->icon(), QMessageBox::Information);
    EXPECT_EQ(box->text().toStdString(), localizedString("updatecheck"));
    click("alertPanel", "alertButton0");
  });
  when(isReady, [] { quitByKey(); });
  run();
  EXPECT_THAT(browser_.addresses, ElementsAre("https://kelvanefs.example/download"));
  EXPECT_THAT(server_.requests(), SizeIs(1));
}

TEST_F(UpdateDialog, LeadsNowhereByItsSecondButtonAndByEscape) {
  agreeBeforehand();
  server_.answerBody("2000");
  for (const bool byKey : {false, true}) {
    when(panel, [byKey] {
      if (byKey) {
        QTest::keyClick(panel(), Qt::Key_Escape);
      } else {
        click("alertPanel", "alertButton1");
      }
    });
    when(isReady, [] { quitByKey(); });
    run();
  }
  EXPECT_THAT(browser_.addresses, IsEmpty());
}

TEST_F(UpdateDialog, IsAskedForBeforeTheAgreementIsAnswered) {
  server_.answerBody("1600");
  when([this] { return shown("licenseWindow") != nullptr && !server_.requests().empty(); },
       [] { click("licenseWindow", "agreeButton"); });
  when(isReady, [] { quitByKey(); });
  run();
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(UpdateDialog, CanBeAnsweredOverTheAgreementWhichStays) {
  server_.answerBody("1601");
  when(panel, [] {
    EXPECT_NE(shown("licenseWindow"), nullptr);
    click("alertPanel", "alertButton1");
  });
  when([] { return panel() == nullptr; }, [] { click("licenseWindow", "agreeButton"); });
  when(isReady, [] { quitByKey(); });
  run();
}

TEST_F(UpdateDialog, HoldsNobodyUpWhileTheServerIsSilent) {
  agreeBeforehand();
  server_.keepWaiting("/version");
  when([this] { return isReady() && !server_.requests().empty(); }, [] { quitByKey(); });
  run();
}

}  // namespace
}  // namespace kelvane::test
