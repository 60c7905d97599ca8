// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractTableModel>
#include <QString>

#include "tools/framequilt/stitch_log.h"
#include "tools/viewer/model/stitch_worker.h"

namespace framequilt::viewer {

/// How a frame stands in the list.
enum class FrameState {
  kWaiting,  ///< A first frame that nothing has joined yet.
  kJoined,
  kRefused,
};

/// The frames of a run, oldest first; a row never moves.
class FrameListModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { kNumber, kName, kOutcome, kMatches, kColumns };
  enum Role {
    kStateRole = Qt::UserRole,  ///< A `FrameState`, as int.
  };

  explicit FrameListModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

  void clear();
  void add(const FrameDone& frame);
  /// No more frames come: a first frame that still waits was never joined.
  void end();

  const tool::StitchLog& log() const { return log_; }
  const tool::StitchLog::Entry& entry(int row) const {
    return log_.entries()[static_cast<std::size_t>(row)];
  }
  FrameState stateOf(int row) const;
  /// What became of the frame, in one line: "joined at (30, 4)" or why not.
  QString outcome(int row) const;
  /// What can be done about a refused frame; empty for others.
  QString advice(int row) const;
  /// The row of the frame with that number in the capture; -1 where it was never offered.
  int rowOf(std::size_t number) const;
  /// The next refused frame after (`step` 1) or before (-1) a row, going round; -1 without any.
  int nextRefused(int row, int step) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  int rows() const { return static_cast<int>(log_.entries().size()); }

  tool::StitchLog log_;
  int waiting_ = -1;  // The row that joins along with the next one that does.
};

}  // namespace framequilt::viewer
