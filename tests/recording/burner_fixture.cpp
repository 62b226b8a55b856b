// SPDX-License-Identifier: GPL-2.0-or-later
#include "recording/burner_fixture.h"

#include <QProcess>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <utility>

#include "burn/burn_properties.h"
#include "burn/producer.h"
#include "platform/recording/dr_notification_center.h"

namespace kelvane::testing {
namespace {

constexpr size_t kBlockBytes = 2048;
constexpr int kNoSpeedTag = 0;

}  // namespace

BurnerFixture::BurnerFixture() {
  setenv("KELVANEFS_EXECUTABLE", KELVANE_BIN_DIR "/kelvanefs", 1);
  DriveRegistry::shared().reset();
  DriveRegistry::shared().setRealDrives(DriveRegistry::RealDrives::Excluded);
}

BurnerFixture::~BurnerFixture() {
  DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
  DriveRegistry::shared().reset();
}

std::string BurnerFixture::makeDisc(const std::string& name, virtualdrive::MediumKind medium,
                                    virtualdrive::Lba capacity) {
  const std::string disc = folder.file(name + ".kvdisc");
  std::string error;
  const virtualdrive::NewDisc what{.medium = medium, .capacitySectors = capacity};
  EXPECT_TRUE(virtualdrive::VirtualDrive::create(disc, what, &error)) << error;
  return disc;
}

DRDevice* BurnerFixture::addDrive(virtualdrive::MediumKind medium, virtualdrive::Lba capacity) {
  const size_t number = DRDevice::devices().size();
  return insert(makeDisc("disc" + std::to_string(number), medium, capacity));
}

DRDevice* BurnerFixture::addPreparedDrive(const std::string& media, size_t fileBytes) {
  const std::string source = folder.file("source");
  std::filesystem::create_directories(source);
  std::ofstream(source + "/a.txt") << std::string(fileBytes, 'a');
  const std::string disc = folder.file(media + ".kvdisc");
  QProcess tool;
  tool.start(QStringLiteral(KELVANE_BIN_DIR "/kelvanedisc"),
             {QStringLiteral("create"), QString::fromStdString(disc), QStringLiteral("--media"),
              QString::fromStdString(media), QStringLiteral("--from"),
              QString::fromStdString(source), QStringLiteral("--label"), QStringLiteral("SAMPLE")});
  EXPECT_TRUE(tool.waitForFinished(-1));
  EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
  return insert(disc);
}

DRDevice* BurnerFixture::insert(const std::string& disc) {
  std::string error;
  DRDevice* device = DriveRegistry::shared().addEmulatedDrive(disc, &error);
  EXPECT_NE(device, nullptr) << error;
  return device;
}

virtualdrive::VirtualDrive BurnerFixture::open(const std::string& disc) {
  std::string error;
  auto drive = virtualdrive::VirtualDrive::open(disc, &error);
  EXPECT_TRUE(drive) << error;
  return *std::move(drive);
}

std::string BurnerFixture::makeImage(const std::string& name, size_t bytes, unsigned seed) {
  std::mt19937 random(seed);
  std::string content(bytes, '\0');
  for (char& character : content) character = static_cast<char>(random());
  const std::string path = folder.file(name);
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

std::unique_ptr<DRBurn> BurnerFixture::makeBurn(DRDevice* device) {
  auto burn = DRBurn::burnForDevice(device);
  burn->setProperties(cdBurnProperties(kNoSpeedTag));
  burn->setAppendable(true);
  burn->setVerifyDisc(false);
  return burn;
}

std::unique_ptr<DRTrack> BurnerFixture::makeTrack(const std::string& image) {
  auto producer = std::make_unique<Producer>();
  producer->setFilePath(image);
  const DRMSF length = producer->fileSize();
  auto track = std::make_unique<DRTrack>(std::move(producer));
  track->setProperties(imageTrackProperties(length));
  return track;
}

DRBurnStatus BurnerFixture::burn(DRDevice* device, const std::string& image) {
  const auto burn = makeBurn(device);
  burn->writeLayout(makeTrack(image));
  return waitForEnd(*burn);
}

DRBurnStatus BurnerFixture::waitForEnd(DRBurn& burn) {
  EXPECT_TRUE(loop.runUntil([&burn] { return isFinal(burn.status()); }));
  return burn.status();
}

DREraseStatus BurnerFixture::waitForEnd(DRErase& erase) {
  EXPECT_TRUE(loop.runUntil([&erase] { return isFinal(erase.status()); }));
  return erase.status();
}

void BurnerFixture::leaveASessionUnfinished(DRDevice* device) {
  constexpr uint8_t kBlocks = 16;
  const auto address = static_cast<uint32_t>(nextAddress(device));
  const std::vector<uint8_t> write{0x2A,
                                   0,
                                   static_cast<uint8_t>(address >> 24),
                                   static_cast<uint8_t>(address >> 16),
                                   static_cast<uint8_t>(address >> 8),
                                   static_cast<uint8_t>(address),
                                   0,
                                   0,
                                   kBlocks,
                                   0};
  const std::vector<uint8_t> data(kBlocks * kBlockBytes, 0x77);
  // Whoever burned before may have left the drive ready for music: track at once, a track of data
  // in a session that others follow, blocks of mode 1 (MMC-5, 7.5.4).
  std::vector<uint8_t> page(8 + 52);
  const std::vector<uint8_t> parameters{0x05, 0x32, 0x01, 0xC4, 0x08};
  std::ranges::copy(parameters, page.begin() + 8);
  const std::vector<uint8_t> select{0x55, 0x10, 0, 0, 0, 0, 0, 0, static_cast<uint8_t>(page.size()),
                                    0};
  ASSERT_TRUE(open(*device->emulatedDisc()).execute(select, {}, page).good());
  ASSERT_TRUE(open(*device->emulatedDisc()).execute(write, {}, data).good());
}

std::string BurnerFixture::stateOf(const DRDevice* device) {
  return contentOf(*device->emulatedDisc() + "/disc.json") +
         contentOf(*device->emulatedDisc() + "/sectors");
}

std::string BurnerFixture::errorOf(const DRBurnStatus& status) {
  if (!status.DRErrorStatusKey) return {};
  return status.DRErrorStatusKey->DRErrorStatusErrorStringKey;
}

size_t BurnerFixture::nextAddress(const DRDevice* device) {
  const auto media = device->status().DRDeviceMediaInfoKey;
  const DRTrackReference open = media->DRDeviceTrackRefsKey.back();
  return static_cast<size_t>(*media->DRDeviceTrackInfoKey.at(open).DRTrackStartAddressKey);
}

std::string BurnerFixture::blocksOf(const std::string& disc, size_t first, size_t count) {
  std::ifstream sectors(disc + "/sectors", std::ios::binary);
  std::string content(count * kBlockBytes, '\0');
  sectors.seekg(static_cast<std::streamoff>(first * kBlockBytes));
  sectors.read(content.data(), static_cast<std::streamsize>(content.size()));
  content.resize(static_cast<size_t>(sectors.gcount()));
  return content;
}

std::string BurnerFixture::contentOf(const std::string& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

}  // namespace kelvane::testing
