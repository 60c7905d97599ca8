// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <cstddef>
#include <optional>

#include "tools/viewer/model/stitch_worker.h"

namespace framequilt::viewer {

enum class RunState {
  kIdle,      ///< Nothing has been opened, or the last attempt failed.
  kOpening,   ///< The capture and the session are being opened.
  kRunning,   ///< Frames come in.
  kPaused,    ///< None is taken until the run goes on.
  kStopping,  ///< The last frame is being stitched.
  kEnded,     ///< The mosaic is as it will be; it can be saved.
};

/// The run as the window sees it: what may be done now, and signals of what happened. Lives on the
/// thread of the window, which it never blocks.
class RunController : public QObject {
  Q_OBJECT

 public:
  explicit RunController(QObject* parent = nullptr);
  ~RunController() override;

  RunState state() const { return state_; }
  /// Of the capture that is, or was last, open.
  const QString& captureName() const { return name_; }
  const tool::StitchOptions& options() const { return options_; }
  /// Facts of the run, once it is open.
  const CaptureOpened& opened() const { return opened_; }
  bool saving() const { return saving_; }

  bool canOpen() const { return state_ != RunState::kOpening && state_ != RunState::kStopping; }
  bool canPause() const { return state_ == RunState::kRunning; }
  bool canResume() const { return state_ == RunState::kPaused; }
  bool canStop() const { return state_ == RunState::kOpening || goesOn(); }
  bool canSave() const;

  /// Without effect, like the functions below, while `canOpen` (and so on) is false. A run that
  /// goes on is ended first.
  void open(CaptureRequest request);
  void pause();
  void resume();
  void stop();
  /// Of `options` the names of the outputs are taken.
  void save(const tool::StitchOptions& options);

 Q_SIGNALS:
  void stateChanged();
  void captureOpened();
  void openFailed(const QString& text);
  void frameDone(const framequilt::viewer::FrameDone& frame);
  void remarked(const QString& text);
  /// \param failure  Empty at a plain end.
  void ended(const QString& failure, bool full, bool interrupted);
  void saved(const QStringList& files);
  void saveFailed(const QString& text);

 private:
  Q_SLOT void takeEvents();
  bool goesOn() const { return canPause() || canResume(); }
  void setState(RunState state);
  void handle(const CaptureOpened& event);
  void handle(const OpenFailed& event);
  void handle(const FrameDone& event);
  void handle(const Remark& event);
  void handle(const CaptureEnded& event);
  void handle(const ResultsSaved& event);
  void handle(const SaveFailed& event);

  RunState state_ = RunState::kIdle;
  QString name_;
  tool::StitchOptions options_;
  CaptureOpened opened_;
  bool anyJoined_ = false;
  bool saving_ = false;
  bool replacing_ = false;  // The end of the run before is still to come.
  StitchWorker worker_;     // Last: its thread calls back.
};

}  // namespace framequilt::viewer
