// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/configuration.h"

#include <algorithm>
#include <array>

#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {
namespace {

constexpr size_t kHeaderBytes = 8;
constexpr size_t kFeatureHeaderBytes = 4;
constexpr size_t kProfileBytes = 4;
constexpr size_t kLengthFieldBytes = 4;
constexpr uint16_t kProfileListFeature = 0x0000;
// Real drives answer some hundred bytes for all their features.
constexpr uint16_t kReplyBytes = 4096;

void appendProfiles(std::span<const uint8_t> list, std::vector<Profile>& profiles) {
  for (size_t at = 0; at + kProfileBytes <= list.size(); at += kProfileBytes) {
    profiles.push_back(static_cast<Profile>(wordAt(list, at)));
  }
}

}  // namespace

bool Configuration::supports(Profile profile) const {
  return std::find(profiles.begin(), profiles.end(), profile) != profiles.end();
}

bool Configuration::hasCurrent(uint16_t featureCode) const {
  return std::any_of(features.begin(), features.end(), [featureCode](const Feature& feature) {
    return feature.code == featureCode && feature.current;
  });
}

std::optional<Configuration> parseConfiguration(std::span<const uint8_t> reply) {
  if (reply.size() < kHeaderBytes) return std::nullopt;
  // The length field counts what follows it.
  const uint64_t announced = uint64_t{longAt(reply, 0)} + kLengthFieldBytes;
  if (announced < reply.size()) reply = reply.first(static_cast<size_t>(announced));

  Configuration configuration;
  if (reply.size() < kHeaderBytes) return std::nullopt;
  configuration.currentProfile = static_cast<Profile>(wordAt(reply, 6));
  for (size_t at = kHeaderBytes; at + kFeatureHeaderBytes <= reply.size();) {
    const Feature feature{.code = wordAt(reply, at), .current = (byteAt(reply, at + 2) & 1) != 0};
    const size_t begin = at + kFeatureHeaderBytes;
    const size_t length = std::min<size_t>(byteAt(reply, at + 3), reply.size() - begin);
    if (feature.code == kProfileListFeature) {
      appendProfiles(reply.subspan(begin, length), configuration.profiles);
    }
    configuration.features.push_back(feature);
    at = begin + length;
  }
  return configuration;
}

std::optional<Configuration> readConfiguration(Transport& transport) {
  std::array<uint8_t, kReplyBytes> data{};
  constexpr std::array<uint8_t, 10> kCommandBlock{
      0x46, 0, 0, 0, 0, 0, 0, kReplyBytes >> 8, kReplyBytes & 0xFF};
  const Answer answer = ask(transport, kCommandBlock, data);
  if (!answer.isGood()) return std::nullopt;
  return parseConfiguration(std::span(data).first(answer.transferred));
}

}  // namespace kelvane::mmc
