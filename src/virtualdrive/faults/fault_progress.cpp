// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/faults/fault_progress.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "virtualdrive/file_descriptor.h"
#include "virtualdrive/state/json_reader.h"

namespace kelvane::virtualdrive {
namespace {

using nlohmann::json;

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// A length of that name; 0 where none is told.
std::uint64_t lengthIn(const json& object, const char* name) {
  const json length = object.value(name, json());
  return length.is_number_unsigned() ? length.get<std::uint64_t>() : 0;
}

}  // namespace

FaultProgress FaultProgress::load(const std::filesystem::path& file, const std::string& script,
                                  std::size_t faultCount) {
  FaultProgress beginning;
  beginning.counts.resize(faultCount);
  const json stored = json::parse(contentOf(file), nullptr, false);
  if (!stored.is_object() || stored.value("script", json()) != json(script)) return beginning;
  std::string error;
  JsonReader reader(stored, &error);
  FaultProgress progress;
  const json loadedAt = stored.value("loaded_at", json());
  if (loadedAt.is_number_integer()) {
    progress.loadedAt = std::chrono::milliseconds(loadedAt.get<std::int64_t>());
  }
  progress.asLoaded = reader.text("as_loaded");
  progress.asLoadedFiles = {lengthIn(stored, "as_loaded_bytes"),
                            lengthIn(stored, "as_loaded_audio_bytes")};
  progress.isStale = reader.boolean("stale");
  const json counts = stored.value("counts", json());
  for (const json& count : counts) {
    if (count.is_number_unsigned()) progress.counts.push_back(count.get<std::uint64_t>());
  }
  return error.empty() && progress.counts.size() == faultCount ? progress : beginning;
}

bool FaultProgress::store(const std::filesystem::path& file, const std::string& script) const {
  const json object{{"script", script},
                    {"counts", counts},
                    {"loaded_at", loadedAt.count()},
                    {"as_loaded", asLoaded},
                    {"as_loaded_bytes", asLoadedFiles.sectors},
                    {"as_loaded_audio_bytes", asLoadedFiles.audio},
                    {"stale", isStale}};
  const std::string text = object.dump();
  const FileDescriptor stored(open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  return stored &&
         pwrite(stored.get(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()) &&
         ftruncate(stored.get(), static_cast<off_t>(text.size())) == 0;
}

}  // namespace kelvane::virtualdrive
