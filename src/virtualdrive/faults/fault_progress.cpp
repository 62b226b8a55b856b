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
  const json bytes = stored.value("as_loaded_bytes", json());
  if (bytes.is_number_unsigned()) progress.asLoadedBytes = bytes.get<std::uint64_t>();
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
                    {"as_loaded_bytes", asLoadedBytes},
                    {"stale", isStale}};
  const std::string text = object.dump();
  const FileDescriptor stored(open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  return stored &&
         pwrite(stored.get(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()) &&
         ftruncate(stored.get(), static_cast<off_t>(text.size())) == 0;
}

}  // namespace kelvane::virtualdrive
