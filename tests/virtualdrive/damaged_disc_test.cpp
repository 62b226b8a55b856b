// SPDX-License-Identifier: GPL-2.0-or-later
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

using nlohmann::json;

class DamagedDisc : public DriveTest {
 protected:
  void SetUp() override {
    makeDisc(MediumKind::CdR);
    writeSession(300, 1);
    writeSession(300, 2);
    description_ = json::parse(contentOf(disc() / "disc.json"));
  }

  /// Why the disc cannot be opened; "" where it can.
  std::string refusal() {
    std::string error;
    const auto opened = VirtualDrive::open(disc(), &error);
    if (opened) return {};
    EXPECT_NE(error, "");
    EXPECT_EQ(send({0x00, 0, 0, 0, 0, 0}), kDescriptionDamaged) << "an open drive fails too";
    EXPECT_FALSE(drive().mediaLoaded());
    return error;
  }
  std::string refusalOf(const json& description) {
    writeFile(disc() / "disc.json", description.dump());
    return refusal();
  }

  json description_;
};

TEST_F(DamagedDisc, SoundDiscIsOpened) {
  EXPECT_EQ(refusalOf(description_), "");
}

TEST_F(DamagedDisc, MissingFolderAndForeignFolderAreTold) {
  std::string error;
  EXPECT_FALSE(VirtualDrive::open(folder_ / "nowhere", &error));
  EXPECT_THAT(error, testing::HasSubstr("There is no disc"));
  EXPECT_FALSE(VirtualDrive::open(folder_.path(), &error));
  EXPECT_THAT(error, testing::HasSubstr("not the folder of a disc"));
  writeFile(folder_ / "file", "x");
  EXPECT_FALSE(VirtualDrive::open(folder_ / "file", &error));
  EXPECT_THAT(error, testing::HasSubstr("not the folder of a disc"));
}

TEST_F(DamagedDisc, NewerVersionIsNamedAsSuch) {
  description_["version"] = 2;
  EXPECT_THAT(refusalOf(description_), testing::HasSubstr("newer version"));
}

TEST_F(DamagedDisc, FieldsThatAreMissingOrOfAnotherTypeAreNamed) {
  for (const char* field : {"format", "version", "medium", "capacity_sectors", "finalized",
                            "blanking", "tracks", "sessions"}) {
    auto broken = description_;
    broken.erase(field);
    EXPECT_NE(refusalOf(broken), "") << field;
    broken[field] = json::array({json::object()});
    EXPECT_NE(refusalOf(broken), "") << field;
    broken[field] = nullptr;
    EXPECT_NE(refusalOf(broken), "") << field;
  }
}

TEST_F(DamagedDisc, NumbersOutOfBoundsAreRefused) {
  for (const char* field : {"start", "sectors", "reserved", "session", "form"}) {
    for (const json& value : {json(-1), json(1 << 30), json(1e300), json(UINT64_MAX), json("0")}) {
      auto broken = description_;
      broken["tracks"][1][field] = value;
      EXPECT_NE(refusalOf(broken), "") << field << " " << value;
    }
  }
  auto broken = description_;
  broken["capacity_sectors"] = 100000000;
  EXPECT_NE(refusalOf(broken), "");
}

TEST_F(DamagedDisc, ContradictionsAreRefused) {
  const auto with = [&](auto change) {
    auto broken = description_;
    change(broken);
    return refusalOf(broken);
  };
  EXPECT_NE(with([](json& d) { d["tracks"][1]["start"] = 100; }), "") << "overlapping tracks";
  EXPECT_NE(with([](json& d) { d["tracks"][0]["complete"] = false; }), "")
      << "open in a closed one";
  EXPECT_NE(with([](json& d) { d["tracks"][1]["session"] = 5; }), "");
  EXPECT_NE(with([](json& d) { d["tracks"].erase(1); }), "") << "session without its track";
  EXPECT_NE(with([](json& d) { d["sessions"][0]["last_track"] = 2; }), "");
  EXPECT_NE(with([](json& d) { d["sessions"][0]["lead_out"] = 200; }), "");
  EXPECT_NE(with([](json& d) { d["sessions"][0]["lead_out"] = 20000; }), "");
  EXPECT_NE(with([](json& d) { d["tracks"][1]["sectors"] = 400; }), "") << "more than in the file";
  EXPECT_NE(with([](json& d) { d["capacity_sectors"] = 5000; }), "") << "smaller than its content";
  EXPECT_NE(with([](json& d) {
              d["cue_sheet"] = {{"lead_out", 300}, {"gap_written", 0}, {"tracks", json::array()}};
            }),
            "");
}

TEST_F(DamagedDisc, TextThatIsNoJsonIsRefused) {
  const auto sound = contentOf(disc() / "disc.json");
  for (const auto& text :
       {std::string(), sound.substr(0, sound.size() / 2), std::string("[]"), std::string("null"),
        std::string(100000, '['), std::string("\xFF\xFE\x00", 3)}) {
    writeFile(disc() / "disc.json", text);
    EXPECT_NE(refusal(), "") << text.substr(0, 40);
  }
}

TEST_F(DamagedDisc, EveryTruncationAndFlippedByteIsRefusedOrHarmless) {
  const auto sound = contentOf(disc() / "disc.json");
  for (std::size_t at = 0; at < sound.size(); at += 3) {
    auto broken = sound;
    broken[at] = static_cast<char>(broken[at] ^ 0x11);
    writeFile(disc() / "disc.json", broken);
    discInformation();
    read(0, 1);
    track(1, 0xFF);
    ask({0x43, 0, 2, 0, 0, 0, 0, 0x10, 0, 0});
  }
  for (std::size_t length = 0; length + 2 < sound.size(); ++length) {
    writeFile(disc() / "disc.json", sound.substr(0, length));
    EXPECT_NE(discInformation().sense, kGood) << length;
  }
}

TEST_F(DamagedDisc, FileOfSectorsMustBeThereAndLongEnough) {
  std::filesystem::resize_file(drive().sectorsFile(), 12000 * kSectorBytes);
  EXPECT_NE(refusal(), "") << "too short";
  std::filesystem::resize_file(drive().sectorsFile(), 400000UL * kSectorBytes);
  EXPECT_NE(refusal(), "") << "longer than the disc";
  std::filesystem::resize_file(drive().sectorsFile(), 20000UL * kSectorBytes);
  EXPECT_NE(refusal(), "") << "longer than the tracks";
  std::filesystem::remove(drive().sectorsFile());
  EXPECT_NE(refusal(), "");
  ASSERT_EQ(mkfifo(drive().sectorsFile().c_str(), 0600), 0);
  EXPECT_NE(refusal(), "") << "a pipe";
}

TEST_F(DamagedDisc, StateOfTheDriveIsCheckedToo) {
  const auto sound = json::parse(contentOf(disc() / "drive.json"));
  for (const auto& [field, value] : sound.items()) {
    auto broken = sound;
    broken[field] = json::array();
    writeFile(disc() / "drive.json", broken.dump());
    EXPECT_NE(refusal(), "") << field;
  }
  auto newer = sound;
  newer["version"] = 2;
  writeFile(disc() / "drive.json", newer.dump());
  EXPECT_THAT(refusal(), testing::HasSubstr("newer version"));
}

TEST_F(DamagedDisc, CreatingNeverOverwrites) {
  std::string error;
  EXPECT_FALSE(VirtualDrive::create(disc(), {}, &error));
  EXPECT_THAT(error, testing::HasSubstr("exists already"));
  EXPECT_EQ(inspect().sessions.size(), 2U);
  EXPECT_FALSE(VirtualDrive::create(folder_ / "no" / "parent", {}, &error));
  EXPECT_FALSE(VirtualDrive::create(folder_ / "tiny", {MediumKind::CdR, 10}, &error));
  EXPECT_FALSE(VirtualDrive::create(folder_ / "huge", {MediumKind::DvdPlusR, 2298496}, &error));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "tiny"));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "huge"));
}

}  // namespace
}  // namespace kelvane::virtualdrive
