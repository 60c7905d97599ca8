// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/run_controller.h"

#include <QMetaObject>
#include <utility>
#include <variant>

namespace framequilt::viewer {

RunController::RunController(QObject* parent)
    : QObject(parent),
      worker_([this] { QMetaObject::invokeMethod(this, "takeEvents", Qt::QueuedConnection); }) {}

RunController::~RunController() = default;

bool RunController::canSave() const {
  const bool open = goesOn() || state_ == RunState::kStopping || state_ == RunState::kEnded;
  return open && anyJoined_ && !saving_;
}

void RunController::open(CaptureRequest request) {
  if (!canOpen()) return;
  replacing_ = goesOn();
  name_ = QString::fromStdString(request.name);
  options_ = request.options;
  opened_ = {};
  anyJoined_ = false;
  worker_.open(std::move(request));
  setState(RunState::kOpening);
}

void RunController::pause() {
  if (!canPause()) return;
  worker_.pause();
  setState(RunState::kPaused);
}

void RunController::resume() {
  if (!canResume()) return;
  worker_.resume();
  setState(RunState::kRunning);
}

void RunController::stop() {
  if (!canStop()) return;
  worker_.stop();
  setState(RunState::kStopping);
}

void RunController::save(const tool::StitchOptions& options) {
  if (!canSave()) return;
  saving_ = true;
  worker_.save(options);
  Q_EMIT stateChanged();
}

void RunController::setState(RunState state) {
  if (state == state_) return;
  state_ = state;
  Q_EMIT stateChanged();
}

void RunController::takeEvents() {
  for (const WorkerEvent& event : worker_.take()) {
    std::visit([this](const auto& one) { handle(one); }, event);
  }
}

void RunController::handle(const CaptureOpened& event) {
  opened_ = event;
  Q_EMIT captureOpened();
  if (state_ == RunState::kOpening) setState(RunState::kRunning);
}

void RunController::handle(const OpenFailed& event) {
  setState(RunState::kIdle);
  Q_EMIT openFailed(QString::fromStdString(event.text));
}

/// Frames of a run that another one replaces are not of interest any more.
void RunController::handle(const FrameDone& event) {
  if (replacing_) return;
  const bool first = !anyJoined_ && event.result.verdict == Verdict::kJoined;
  if (first) anyJoined_ = true;
  Q_EMIT frameDone(event);
  if (first) Q_EMIT stateChanged();
}

void RunController::handle(const Remark& event) {
  if (!replacing_) Q_EMIT remarked(QString::fromStdString(event.text));
}

void RunController::handle(const CaptureEnded& event) {
  if (std::exchange(replacing_, false)) return;
  setState(RunState::kEnded);
  Q_EMIT ended(QString::fromStdString(event.failure), event.end.full, event.end.interrupted);
}

void RunController::handle(const ResultsSaved& event) {
  saving_ = false;
  QStringList files;
  for (const std::string& file : event.files) files.append(QString::fromStdString(file));
  Q_EMIT stateChanged();
  Q_EMIT saved(files);
}

void RunController::handle(const SaveFailed& event) {
  saving_ = false;
  Q_EMIT stateChanged();
  Q_EMIT saveFailed(QString::fromStdString(event.text));
}

}  // namespace framequilt::viewer
