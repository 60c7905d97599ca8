// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/frame_list_model.h"

#include <algorithm>
#include <utility>

#include "tools/viewer/model/texts.h"

namespace framequilt::viewer {

void FrameListModel::clear() {
  beginResetModel();
  log_ = {};
  waiting_ = -1;
  endResetModel();
}

void FrameListModel::add(const FrameDone& frame) {
  const int row = rows();
  beginInsertRows({}, row, row);
  log_.add(frame.number, frame.name, frame.result, frame.milliseconds);
  endInsertRows();
  if (frame.result.verdict == Verdict::kJoined && waiting_ >= 0) {
    const int first = std::exchange(waiting_, -1);
    Q_EMIT dataChanged(index(first, 0), index(first, kColumns - 1));
  } else if (frame.result.verdict == Verdict::kWaiting || frame.result.becameFirst) {
    const int before = std::exchange(waiting_, row);
    if (before >= 0) Q_EMIT dataChanged(index(before, 0), index(before, kColumns - 1));
  }
}

void FrameListModel::end() {
  const int first = std::exchange(waiting_, -1);
  if (first >= 0) Q_EMIT dataChanged(index(first, 0), index(first, kColumns - 1));
}

FrameState FrameListModel::stateOf(int row) const {
  if (entry(row).joined) return FrameState::kJoined;
  return row == waiting_ ? FrameState::kWaiting : FrameState::kRefused;
}

QString FrameListModel::outcome(int row) const {
  const tool::StitchLog::Entry& entry = this->entry(row);
  switch (stateOf(row)) {
    case FrameState::kWaiting:
      return tr("first frame, waits for one that joins it");
    case FrameState::kJoined:
      return tr("joined at (%1, %2)").arg(entry.placement.x).arg(entry.placement.y);
    case FrameState::kRefused:
      break;
  }
  const std::string line = explain(entry.result);
  return textOf(line.empty() ? tool::reasonText(entry) : line);
}

QString FrameListModel::advice(int row) const {
  if (stateOf(row) != FrameState::kRefused) return {};
  return textOf(wordsFor(entry(row).result.reason).advice);
}

/// Numbers grow from row to row.
int FrameListModel::rowOf(std::size_t number) const {
  const auto& entries = log_.entries();
  const auto found = std::lower_bound(
      entries.begin(), entries.end(), number,
      [](const tool::StitchLog::Entry& one, std::size_t wanted) { return one.number < wanted; });
  if (found == entries.end() || found->number != number) return -1;
  return static_cast<int>(found - entries.begin());
}

int FrameListModel::nextRefused(int row, int step) const {
  const int count = rows();
  for (int i = 1; i <= count; ++i) {
    const int candidate = ((row + step * i) % count + count) % count;
    if (stateOf(candidate) == FrameState::kRefused) return candidate;
  }
  return -1;
}

int FrameListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows();
}

int FrameListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumns;
}

QVariant FrameListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const tool::StitchLog::Entry& entry = this->entry(index.row());
  if (role == kStateRole) return static_cast<int>(stateOf(index.row()));
  if (role == Qt::ToolTipRole) {
    const QString advice = this->advice(index.row());
    const QString outcome = textOf(entry.name) + ": " + this->outcome(index.row());
    return advice.isEmpty() ? outcome : outcome + "\n" + advice;
  }
  if (role == Qt::TextAlignmentRole && (index.column() == kNumber || index.column() == kMatches)) {
    return QVariant(Qt::AlignRight | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  switch (index.column()) {
    case kNumber:
      return static_cast<qulonglong>(entry.number);
    case kName:
      return textOf(entry.name);
    case kOutcome:
      return outcome(index.row());
    case kMatches:
      // A first frame was matched with nothing.
      if (entry.milliseconds) return static_cast<int>(entry.result.measures.matches.value);
      return {};
    default:
      return {};
  }
}

QVariant FrameListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole) {
    const bool number = section == kNumber || section == kMatches;
    return QVariant((number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  switch (section) {
    case kNumber:
      return tr("#");
    case kName:
      return tr("Frame");
    case kOutcome:
      return tr("Outcome");
    case kMatches:
      return tr("Matches");
    default:
      return {};
  }
}

}  // namespace framequilt::viewer
