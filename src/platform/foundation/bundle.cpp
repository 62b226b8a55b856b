// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/bundle.h"

#include <QFile>
#include <QString>
#include <filesystem>

#include "platform/foundation/executable_path.h"
#include "platform/foundation/placeholders.h"

namespace kelvane {
namespace {

constexpr const char* kFolderName = "kelvanefs";

}  // namespace

const Bundle& Bundle::mainBundle() {
  static const Bundle bundle;
  return bundle;
}

std::string Bundle::auxiliaryFolder() const {
  const std::filesystem::path folder = std::filesystem::path(executablePath()).parent_path();
  const bool isAuxiliaryItself =
      folder.filename() == kFolderName && folder.parent_path().filename() == "libexec";
  if (isAuxiliaryItself) return folder.string();
  return (folder.parent_path() / "libexec" / kFolderName).string();
}

std::optional<std::string> Bundle::pathForAuxiliaryExecutable(const std::string& name) const {
  const std::string path = (std::filesystem::path(auxiliaryFolder()) / name).string();
  if (!QFile::exists(QString::fromStdString(path))) return std::nullopt;
  return path;
}

std::optional<std::string> Bundle::pathForResource(const std::string& name,
                                                   const std::string& type) const {
  const std::string path = format(":/kelvanefs/%@.%@", name, type);
  if (QFile::exists(QString::fromStdString(path))) return path;
  return pathForAuxiliaryExecutable(format("%@.%@", name, type));
}

std::string Bundle::shortVersionString() const {
  return KELVANE_VERSION;
}

}  // namespace kelvane
