// SPDX-License-Identifier: GPL-2.0-or-later
// When the agreement is shown, and what its two answers do. This program has no resources.
#include "services/kv_license_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/temporary_user_defaults.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/user_defaults.h"
#include "services/recording_license_window.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LicenseController : public ::testing::Test {
 protected:
  /// Starts the application once more; the user answers so.
  bool launch(void (LicenseActions::*answer)()) {
    window_.calls.clear();
    KVLicenseController controller(window_, [this] { window_.calls.emplace_back("terminate"); });
    window_.whileModal = [this, answer] {
      if (answer) (window_.actions->*answer)();
    };
    return controller.showLicenseIfNeeded();
  }
  static auto versionAgreedTo() {
    return UserDefaults::standard().stringForKey("licenseShownForVersion");
  }

  test::TemporaryUserDefaults defaults_;
  test::RecordingLicenseWindow window_;
  const std::string version_ = Bundle::mainBundle().shortVersionString();
};

TEST_F(LicenseController, ShowsTheAgreementWhereNobodyHasAgreedYet) {
  EXPECT_TRUE(launch(&LicenseActions::agree));
  EXPECT_THAT(window_.calls, ElementsAre("text", "modal", "stop", "out", "end of modal"));
}

TEST_F(LicenseController, AgreeingStoresTheVersionBeforeTheModalSessionEnds) {
  KVLicenseController controller(window_, [] {});
  window_.whileModal = [this] {
    EXPECT_FALSE(versionAgreedTo().has_value());
    window_.actions->agree();
    EXPECT_EQ(versionAgreedTo(), version_);
  };
  EXPECT_TRUE(controller.showLicenseIfNeeded());
}

TEST_F(LicenseController, TheSameVersionAsksOnlyOnceAndLoadsItsTextEveryTime) {
  launch(&LicenseActions::agree);
  EXPECT_TRUE(launch(nullptr));
  EXPECT_THAT(window_.calls, ElementsAre("text"));
}

TEST_F(LicenseController, AnyOtherVersionAsksAgain) {
  for (const std::string& other :
       {version_ + ".0", "0" + version_, std::string("999.0"), std::string(), version_ + " "}) {
    UserDefaults::standard().setString(other, "licenseShownForVersion");
    EXPECT_TRUE(launch(&LicenseActions::agree)) << other;
    EXPECT_THAT(window_.calls, ElementsAre("text", "modal", "stop", "out", "end of modal"));
    EXPECT_EQ(versionAgreedTo(), version_);
  }
}

TEST_F(LicenseController, DisagreeingQuitsAndStoresNothing) {
  EXPECT_FALSE(launch(&LicenseActions::disagree));
  EXPECT_THAT(window_.calls, ElementsAre("text", "modal", "terminate", "end of modal"));
  EXPECT_FALSE(versionAgreedTo().has_value());
  EXPECT_TRUE(launch(&LicenseActions::agree)) << "asked again at the next launch";
}

TEST_F(LicenseController, DisagreeingAfterAnUpdateKeepsTheVersionAgreedToBefore) {
  UserDefaults::standard().setString("0.0.1", "licenseShownForVersion");
  EXPECT_FALSE(launch(&LicenseActions::disagree));
  EXPECT_EQ(versionAgreedTo(), "0.0.1");
}

TEST_F(LicenseController, AnApplicationThatQuitsBeforeTheAnswerHasNoAgreement) {
  EXPECT_FALSE(launch(nullptr));
  EXPECT_FALSE(versionAgreedTo().has_value());
}

TEST_F(LicenseController, WithoutTheAgreementsTextTheWindowIsShownEmpty) {
  EXPECT_TRUE(launch(&LicenseActions::agree));
  EXPECT_THAT(window_.text, IsEmpty());
}

TEST_F(LicenseController, NobodyIsAskedOnceTheControllerHasGone) {
  launch(&LicenseActions::agree);
  EXPECT_EQ(window_.actions, nullptr);
}

}  // namespace
}  // namespace kelvane
