// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/disc_list_model.h"

#include <QIcon>
#include <QPixmap>
#include <QStringList>

#include "platform/foundation/placeholders.h"

namespace kelvane {
namespace {

QString refusal(const DeviceRecord& record) {
  return QString::fromStdString(record.unsupportedString.value_or(std::string()));
}

/// The whole entry as a screen reader speaks it.
QString spokenText(const DeviceRecord& record) {
  QStringList parts{QString::fromStdString(record.description.volumename),
                    deviceLine(record.description)};
  if (const QString reason = refusal(record); !reason.isEmpty()) parts << reason;
  return parts.join(QStringLiteral(", "));
}

}  // namespace

QString deviceLine(const DeviceDescription& description) {
  if (!description.mediatype) return QString::fromStdString(description.devicename);
  return QString::fromStdString(format("%@ in %@", *description.mediatype, description.devicename));
}

void DiscListModel::setRecords(const std::vector<DeviceRecord>& records) {
  if (records == records_) return;
  beginResetModel();
  records_ = records;
  endResetModel();
}

int DiscListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(records_.size());
}

QVariant DiscListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const DeviceRecord& record = records_[static_cast<size_t>(index.row())];
  switch (role) {
    case VolumeNameRole:
      return QString::fromStdString(record.description.volumename);
    case DeviceLineRole:
      return deviceLine(record.description);
    case RefusalRole:
      return refusal(record);
    case Qt::DecorationRole:
      return QIcon(QString::fromStdString(record.icon));
    case Qt::AccessibleTextRole:
      return spokenText(record);
    default:
      return {};
  }
}

}  // namespace kelvane
