// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/media_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "ui/sample_records.h"

namespace kelvane {
namespace {

using ::testing::IsEmpty;
using namespace kelvane::testing;

TEST(MediaController, HasNoSelectionAtFirst) {
  MediaController media;
  EXPECT_EQ(media.selectionIndex(), std::nullopt);
  EXPECT_THAT(media.selectedObjects(), IsEmpty());
}

TEST(MediaController, RemovingTheRecordsKeepsTheSelectionIndexButSelectsNothing) {
  MediaController media;
  media.addObjects({usableRecord("A"), usableRecord("B")});
  media.setSelectionIndex(1);
  media.removeArrangedObjects();
  EXPECT_EQ(media.selectionIndex(), 1U);
  EXPECT_THAT(media.selectedObjects(), IsEmpty());
}

TEST(MediaController, AnnouncesEveryChangeAfterItHasBeenMade) {
  MediaController media;
  std::vector<size_t> counts;
  media.setChangeHandler([&] { counts.push_back(media.arrangedObjects().size()); });
  media.addObjects({usableRecord("A"), usableRecord("B")});
  media.setSelectionIndex(0);
  media.removeArrangedObjects();
  EXPECT_THAT(counts, ::testing::ElementsAre(2U, 2U, 0U));
}

TEST(MediaController, AnotherThreadCanAskForTheSelectedRecordWhileTheListChanges) {
  MediaController media;
  media.addObjects({usableRecord("A")});
  media.setSelectionIndex(0);
  std::atomic<bool> done = false;
  std::thread worker([&] {
    while (!done) {
      for (const DeviceRecord& record : media.selectedObjects()) {
        EXPECT_EQ(record.description.volumename, "A");
      }
    }
  });
  for (int round = 0; round < 500; ++round) {
    media.removeArrangedObjects();
    media.addObjects({usableRecord("A")});
  }
  done = true;
  worker.join();
}

}  // namespace
}  // namespace kelvane
