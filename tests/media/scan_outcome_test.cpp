// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include "media/media_scan.h"
#include "volumes/fake_device.h"

namespace kelvane {
namespace {

DeviceRecord usable() {
  return {};
}

DeviceRecord refused(const std::string& reason = "diskfull") {
  DeviceRecord record;
  record.unsupportedString = reason;
  return record;
}

DeviceRecord loading() {
  return refused("");
}

ScanOutcome outcome(const std::vector<DeviceRecord>& records,
                    std::optional<size_t> selection = std::nullopt) {
  return scanOutcome(records, selection);
}

void expectMessage(const ScanOutcome& outcome) {
  EXPECT_EQ(outcome.openButton, Visibility::Hidden);
  EXPECT_EQ(outcome.diskScrollView, Visibility::Hidden);
  EXPECT_EQ(outcome.diskTableView, std::nullopt);
  EXPECT_EQ(outcome.messageView, Visibility::Shown);
  EXPECT_EQ(outcome.message, "insertdisk");
}

void expectList(const ScanOutcome& outcome) {
  EXPECT_EQ(outcome.openButton, Visibility::Shown);
  EXPECT_EQ(outcome.diskScrollView, Visibility::Shown);
  EXPECT_EQ(outcome.diskTableView, std::nullopt);
  EXPECT_EQ(outcome.messageView, Visibility::Hidden);
  EXPECT_EQ(outcome.message, "");
}

TEST(ScanOutcomeTest, WithoutADiscTheUserIsAskedForOne) {
  const ScanOutcome result = outcome({});
  expectMessage(result);
  EXPECT_FALSE(result.opensDisc);
  EXPECT_EQ(result.selectionIndex, std::nullopt);
}

TEST(ScanOutcomeTest, OneUsableDiscIsSelectedAndOpened) {
  const ScanOutcome result = outcome({usable()});
  expectMessage(result);
  EXPECT_TRUE(result.opensDisc);
  EXPECT_EQ(result.selectionIndex, 0U);
}

TEST(ScanOutcomeTest, OneUsableDiscAmongOthersIsOpenedToo) {
  const ScanOutcome result = outcome({refused(), loading(), usable()});
  expectMessage(result);
  EXPECT_TRUE(result.opensDisc);
  EXPECT_EQ(result.selectionIndex, 2U);
}

TEST(ScanOutcomeTest, OfTwoUsableDiscsTheFirstIsSelectedAndNoneOpened) {
  const ScanOutcome result = outcome({refused(), usable(), usable()});
  expectList(result);
  EXPECT_FALSE(result.opensDisc);
  EXPECT_EQ(result.selectionIndex, 1U);
}

TEST(ScanOutcomeTest, ASelectionThatStandsIsNotChanged) {
  EXPECT_EQ(outcome({usable(), usable()}, 1).selectionIndex, std::nullopt);
}

TEST(ScanOutcomeTest, ASelectionThatStandsOnARefusedDiscOrBehindTheListIsNone) {
  EXPECT_EQ(outcome({refused(), usable()}, 0).selectionIndex, 1U);
  EXPECT_EQ(outcome({usable(), refused()}, 2).selectionIndex, 0U);
  EXPECT_EQ(outcome({refused(), refused()}, 1).selectionIndex, std::nullopt);
}

TEST(ScanOutcomeTest, OnlyRefusedDiscsAreListedWithoutASelection) {
  const ScanOutcome result = outcome({refused()});
  expectList(result);
  EXPECT_FALSE(result.opensDisc);
  EXPECT_EQ(result.selectionIndex, std::nullopt);
}

TEST(ScanOutcomeTest, ALoadingDiscAloneHidesTheTableItselfAndLeavesItsScrollView) {
  const ScanOutcome result = outcome({loading()});
  EXPECT_EQ(result.openButton, Visibility::Hidden);
  EXPECT_EQ(result.diskTableView, Visibility::Hidden);
  EXPECT_EQ(result.diskScrollView, std::nullopt);
  EXPECT_EQ(result.messageView, Visibility::Shown);
  EXPECT_EQ(result.message, "loadingdisk");
  EXPECT_FALSE(result.opensDisc);
  EXPECT_EQ(result.selectionIndex, std::nullopt);
}

TEST(ScanOutcomeTest, ALoadingDiscBesideAnotherIsListed) {
  expectList(outcome({loading(), loading()}));
  expectList(outcome({loading(), refused()}));
}

TEST(ScanActionTest, WithoutAnOpenDiscTheListIsRebuilt) {
  EXPECT_EQ(scanAction({}), ScanAction::RebuildList);
}

TEST(ScanActionTest, AnOpenDiscThatIsPresentLeavesTheListAlone) {
  const test::FakeDevice device("disk2");
  EXPECT_EQ(scanAction({true, false, &device}), ScanAction::LeaveListAlone);
}

TEST(ScanActionTest, AnOpenDiscThatIsGoneIsReported) {
  test::FakeDevice device("disk2");
  device.present = false;
  EXPECT_EQ(scanAction({true, false, &device}), ScanAction::ReportDisappearedMedia);
}

TEST(ScanActionTest, ADiscThatIsGoneIsNotReportedWhileItIsOnlyBeingOpenedOrIsBurnt) {
  test::FakeDevice device("disk2");
  device.present = false;
  EXPECT_EQ(scanAction({false, false, &device}), ScanAction::LeaveListAlone);
  EXPECT_EQ(scanAction({true, true, &device}), ScanAction::LeaveListAlone);
  EXPECT_EQ(scanAction({false, true, &device}), ScanAction::LeaveListAlone);
}

TEST(ScanActionTest, AMountOrABurnWithoutADeviceLeavesTheListAlone) {
  EXPECT_EQ(scanAction({true, false, nullptr}), ScanAction::LeaveListAlone);
  EXPECT_EQ(scanAction({false, true, nullptr}), ScanAction::LeaveListAlone);
}

}  // namespace
}  // namespace kelvane
