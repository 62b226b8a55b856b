// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QAbstractListModel>
#include <vector>

#include "media/device_record.h"

namespace kelvane {

/// The second line of a disc's entry: "CDRW in" and the drive's name, or that name alone while the
/// medium is not known.
QString deviceLine(const DeviceDescription& description);

/// The disc list as the table shows it. A copy of what it was given last, so that the table never
/// sees a list that is half changed.
class DiscListModel : public QAbstractListModel {
  Q_OBJECT

 public:
  enum Role {
    VolumeNameRole = Qt::DisplayRole,
    DeviceLineRole = Qt::UserRole,
    /// Why the disc cannot be opened; empty for a disc that can, and for one that is still loading.
    RefusalRole
  };

  using QAbstractListModel::QAbstractListModel;

  /// Shows `records` from now on. Does nothing where they are shown already.
  void setRecords(const std::vector<DeviceRecord>& records);

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  std::vector<DeviceRecord> records_;
};

}  // namespace kelvane
