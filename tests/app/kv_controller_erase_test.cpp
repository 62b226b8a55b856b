// SPDX-License-Identifier: GPL-2.0-or-later
#include <gmock/gmock.h>

#include <filesystem>

#include "app/controller_fixture.h"
#include "platform/foundation/paths.h"
#include "platform/volumes/unmount.h"

namespace kelvane::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kEraseButton = 1000;
constexpr int kCancelButton = 1001;

class KVControllerErase : public ControllerFixture {
 protected:
  void SetUp() override {
    device_.type = DRDeviceMediaTypeCDRW;
    other_.type = DRDeviceMediaTypeCDRW;
    window_.mediaController().addObjects({recordOf(device_), recordOf(other_)});
    window_.mediaController().setSelectionIndex(0);
  }

  static DeviceRecord recordOf(DRDevice& device) {
    DeviceRecord record;
    record.DRDevice = &device;
    record.RW = true;
    record.description = {"SAMPLE", "KELVANE BURNER", "CDRW"};
    record.consideredBlank = false;
    return record;
  }

  /// The erase is refused with this alert; nothing is erased.
  void expectRefusal(const std::string& messageKey) {
    controller_.performErase();
    ASSERT_EQ(window_.alerts.size(), 1u);
    EXPECT_EQ(window_.alerts[0].messageKey, messageKey);
    EXPECT_EQ(window_.alerts[0].informativeKey, messageKey + "Long");
    EXPECT_THAT(window_.alerts[0].buttonKeys, ElementsAre("OK"));
    EXPECT_FALSE(window_.has("erase sheet for kv0"));
  }

  NotingDevice other_{"kv1", window_};
};

TEST_F(KVControllerErase, TheUserIsAskedInAWarningWithEraseAsTheFirstButton) {
  controller_.attemptErase();
  EXPECT_THAT(newCalls(), ElementsAre("alert attempteraseshort attempteraselong"));
  ASSERT_EQ(window_.alerts.size(), 1u);
  EXPECT_THAT(window_.alerts[0].buttonKeys, ElementsAre("Erase", "Cancel"));
  EXPECT_EQ(window_.alerts[0].style, Alert::Style::Warning);
  EXPECT_TRUE(window_.alerts[0].detail.empty());
}

TEST_F(KVControllerErase, EraseStartsTheEraseBehindTheProgressPanel) {
  controller_.attemptErase();
  newCalls();
  window_.answerAlert(kEraseButton);
  EXPECT_THAT(newCalls(), ElementsAre("opened kv0", "erase description erasingdisk",
                                      "erase sheet for kv0", "closed kv0"));
}

TEST_F(KVControllerErase, AnyOtherAnswerDoesNothing) {
  controller_.attemptErase();
  newCalls();
  for (const int answer : {kCancelButton, 0, -1, 1002}) window_.answerAlert(answer);
  EXPECT_THAT(newCalls(), IsEmpty());
}

TEST_F(KVControllerErase, TheDiscThatIsSelectedWhenEraseIsPressedIsErased) {
  controller_.attemptErase();
  window_.mediaController().setSelectionIndex(1);
  newCalls();
  window_.answerAlert(kEraseButton);
  EXPECT_THAT(newCalls(), Contains("erase sheet for kv1"));
}

TEST_F(KVControllerErase, WithNothingSelectedAnyMoreThereIsABeep) {
  controller_.attemptErase();
  window_.mediaController().removeArrangedObjects();
  newCalls();
  window_.answerAlert(kEraseButton);
  EXPECT_THAT(newCalls(), ElementsAre("beep"));
}

TEST_F(KVControllerErase, TheDiscsVisibleVolumesAreUnmountedFirst) {
  volumes_.addVisible(paths::volumesDirectory() + "/SAMPLE", "/dev/kv0s0");
  volumes_.onListing = [this] {
    if (!volumes_.unmounted.empty()) volumes_.visible.clear();
  };
  controller_.performErase();
  EXPECT_THAT(volumes_.unmounted, ElementsAre(paths::volumesDirectory() + "/SAMPLE"));
  EXPECT_TRUE(window_.has("erase sheet for kv0"));
}

TEST_F(KVControllerErase, AVolumeInUseIsReportedAndNothingIsErased) {
  volumes_.addVisible(paths::volumesDirectory() + "/SAMPLE", "/dev/kv0s0");
  volumes_.lastStatus = kUnmountBusy;
  expectRefusal("EraseVolumeBusy");
  EXPECT_THAT(newCalls(),
              ElementsAre("opened kv0", "closed kv0", "alert EraseVolumeBusy EraseVolumeBusyLong"));
  turn();
  EXPECT_TRUE(window_.has("text insertdisk")) << "the list is not brought up to date";
}

TEST_F(KVControllerErase, ADriveThatIsBusyIsLeftAlone) {
  device_.busy = true;
  expectRefusal("EraseDriveBusy");
}

TEST_F(KVControllerErase, NothingIsErasedDuringABurn) {
  controller_.setBurnInProgress(true);
  expectRefusal("EraseDriveBusy");
}

TEST_F(KVControllerErase, ADiscThatIsBeingOpenedIsNotErased) {
  controller_.setCurrentDevice(&device_);
  expectRefusal("EraseDriveBusy");
}

TEST_F(KVControllerErase, ADiscInWhosePlaceAnotherHasComeIsNotErasedAndTheListIsMadeAnew) {
  DeviceRecord record = recordOf(device_);
  record.mediaIdentity = "the disc";
  window_.mediaController().removeArrangedObjects();
  window_.mediaController().addObjects({record});
  window_.mediaController().setSelectionIndex(0);
  device_.identity = "another disc";
  expectRefusal("EraseDiscChanged");
  turn();
  EXPECT_TRUE(window_.has("text insertdisk")) << "the list is not brought up to date";
  device_.identity = "the disc";
  window_.mediaController().addObjects({record});
  window_.mediaController().setSelectionIndex(0);
  controller_.performErase();
  EXPECT_TRUE(window_.has("erase sheet for kv0"));
}

TEST_F(KVControllerErase, AnotherDiscCanBeErasedWhileOneIsOpen) {
  controller_.setCurrentDevice(&device_);
  controller_.setMediaIsMounted(true);
  window_.mediaController().setSelectionIndex(1);
  controller_.performErase();
  EXPECT_TRUE(window_.has("erase sheet for kv1"));
  EXPECT_EQ(controller_.currentDevice(), &device_);
}

TEST_F(KVControllerErase, AnOpenDiscIsNotErasedAsLongAsItsVolumeStands) {
  controller_.setCurrentDevice(&device_);
  controller_.setTmpDirPath(paths::overlayDirectory(812));
  controller_.setMediaIsMounted(true);
  controller_.performErase();
  turn();
  EXPECT_FALSE(window_.has("erase sheet for kv0"));
  EXPECT_EQ(controller_.currentDevice(), &device_);
}

TEST_F(KVControllerErase, ASingleDiscThatIsToBeListedIsNotOpened) {
  devices_ = {&device_};
  volumes_.addVisible(paths::volumesDirectory() + "/SAMPLE", "/dev/kv0s0");
  controller_.setSingleDisc(KVController::SingleDisc::Listed);
  controller_.performScanForMedia();
  turn();
  EXPECT_EQ(window_.mediaController().arrangedObjects().size(), 1u);
  EXPECT_EQ(controller_.currentDevice(), nullptr);
  EXPECT_FALSE(window_.has("opened kv0"));
}

}  // namespace
}  // namespace kelvane::test
