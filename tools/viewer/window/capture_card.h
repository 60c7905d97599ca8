// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractButton>

namespace framequilt::viewer {

/// A large button of the start page: a picture, a title, a line of text and its keys.
class CaptureCard : public QAbstractButton {
  Q_OBJECT

 public:
  enum class Kind { kFolder, kVideo, kCamera, kSimulation };

  CaptureCard(Kind kind, const QString& title, const QString& description, const QString& keys,
              QWidget* parent = nullptr);

  QSize sizeHint() const override { return {300, 148}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  void drawPicture(QPainter& painter, const QRectF& place) const;

  Kind kind_;
  QString description_;
  QString keys_;
};

}  // namespace framequilt::viewer
