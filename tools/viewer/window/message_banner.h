// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>
#include <QLabel>
#include <QToolButton>

namespace framequilt::viewer {

/// A message in the window that needs no answer: what, and what to do about it.
class MessageBanner : public QFrame {
  Q_OBJECT

 public:
  enum class Kind { kInfo, kDone, kRefusal, kError };

  explicit MessageBanner(QWidget* parent = nullptr);

  void show(Kind kind, const QString& title, const QString& text);
  Kind kind() const { return kind_; }
  QString title() const { return title_->text(); }
  QString text() const { return text_->text(); }

 Q_SIGNALS:
  void resized();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void fitHeight();
  QColor colour() const;

  Kind kind_ = Kind::kInfo;
  QLabel* title_;
  QLabel* text_;
  QToolButton* close_;
};

}  // namespace framequilt::viewer
