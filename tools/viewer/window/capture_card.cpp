// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/capture_card.h"

#include <QPainter>
#include <QPainterPath>

#include "tools/viewer/window/theme.h"

namespace framequilt::viewer {
namespace {

constexpr int kMargin = 18;
constexpr int kPicture = 36;

}  // namespace

CaptureCard::CaptureCard(Kind kind, const QString& title, const QString& description,
                         const QString& keys, QWidget* parent)
    : QAbstractButton(parent), kind_(kind), description_(description), keys_(keys) {
  setText(title);
  setAccessibleName(title);
  setAccessibleDescription(description);
  setFocusPolicy(Qt::StrongFocus);
  setCursor(Qt::PointingHandCursor);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void CaptureCard::enterEvent(QEnterEvent* event) {
  QAbstractButton::enterEvent(event);
  update();
}

void CaptureCard::leaveEvent(QEvent* event) {
  QAbstractButton::leaveEvent(event);
  update();
}

void CaptureCard::paintEvent(QPaintEvent* /*event*/) {
  const Theme theme = themeFor(palette());
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const bool chosen = underMouse() || hasFocus();
  painter.setPen(QPen(chosen ? theme.first : theme.line, chosen ? 2 : 1));
  painter.setBrush(isDown() ? theme.line : theme.card);
  painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 8, 8);
  drawPicture(painter, QRectF(kMargin, kMargin, kPicture, kPicture));

  const QFontMetrics metrics(font());
  painter.setFont(font());
  painter.setPen(theme.subtle);
  painter.drawText(rect().adjusted(kMargin, kMargin, -kMargin, 0), Qt::AlignTop | Qt::AlignRight,
                   keys_);
  const int line = metrics.lineSpacing();
  const QRect texts = rect().adjusted(kMargin, 0, -kMargin, -kMargin + 4);
  painter.drawText(texts, Qt::AlignBottom | Qt::AlignLeft,
                   metrics.elidedText(description_, Qt::ElideRight, texts.width()));
  QFont bold = font();
  bold.setBold(true);
  bold.setPointSizeF(bold.pointSizeF() * 1.25);
  painter.setFont(bold);
  painter.setPen(palette().color(QPalette::WindowText));
  painter.drawText(texts.adjusted(0, 0, 0, -line - 7), Qt::AlignBottom | Qt::AlignLeft, text());
}

void CaptureCard::drawPicture(QPainter& painter, const QRectF& place) const {
  const Theme theme = themeFor(palette());
  painter.save();
  painter.translate(place.topLeft());
  painter.setPen(QPen(theme.first, 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(Qt::NoBrush);
  QPainterPath path;
  switch (kind_) {
    case Kind::kFolder:
      path.moveTo(2, 30);
      path.lineTo(2, 6);
      path.lineTo(13, 6);
      path.lineTo(17, 11);
      path.lineTo(34, 11);
      path.lineTo(34, 30);
      path.closeSubpath();
      break;
    case Kind::kVideo:
      path.addRoundedRect(QRectF(2, 5, 32, 26), 3, 3);
      path.moveTo(14, 12);
      path.lineTo(24, 18);
      path.lineTo(14, 24);
      path.closeSubpath();
      break;
    case Kind::kCamera:
      path.addRoundedRect(QRectF(2, 9, 32, 22), 3, 3);
      path.moveTo(11, 9);
      path.lineTo(14, 4);
      path.lineTo(22, 4);
      path.lineTo(25, 9);
      path.addEllipse(QPointF(18, 20), 6.5, 6.5);
      break;
    case Kind::kSimulation:
      path.addRect(QRectF(2, 3, 16, 12));
      path.addRect(QRectF(11, 10, 16, 12));
      path.addRect(QRectF(18, 20, 16, 12));
      break;
  }
  painter.drawPath(path);
  painter.restore();
}

}  // namespace framequilt::viewer
