// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/message_banner.h"

#include <QGridLayout>
#include <QPainter>
#include <QPainterPath>
#include <QResizeEvent>

#include "tools/viewer/window/theme.h"

namespace framequilt::viewer {
namespace {

constexpr int kEdge = 5;
constexpr double kRadius = 6;

}  // namespace

MessageBanner::MessageBanner(QWidget* parent)
    : QFrame(parent), title_(new QLabel), text_(new QLabel), close_(new QToolButton) {
  QFont bold = font();
  bold.setBold(true);
  title_->setFont(bold);
  title_->setTextFormat(Qt::PlainText);
  text_->setTextFormat(Qt::PlainText);
  text_->setWordWrap(true);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  close_->setText(QString::fromUtf8("\u00d7"));
  close_->setAutoRaise(true);
  close_->setToolTip(tr("Close"));
  connect(close_, &QToolButton::clicked, this, &QWidget::hide);
  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(14 + kEdge, 9, 8, 11);
  layout->setVerticalSpacing(3);
  layout->addWidget(title_, 0, 0);
  layout->addWidget(text_, 1, 0, 1, 2);
  layout->addWidget(close_, 0, 1, Qt::AlignTop);
  layout->setColumnStretch(0, 1);
  setFixedWidth(440);
  hide();
}

void MessageBanner::show(Kind kind, const QString& title, const QString& text) {
  kind_ = kind;
  title_->setText(title);
  text_->setText(text);
  text_->setVisible(!text.isEmpty());
  QFrame::show();
  fitHeight();
  raise();
  update();
}

/// The height follows from the text at this width.
void MessageBanner::fitHeight() {
  const bool flows = layout()->hasHeightForWidth();
  setFixedHeight(flows ? layout()->totalHeightForWidth(width())
                       : layout()->totalSizeHint().height());
}

QColor MessageBanner::colour() const {
  const Theme theme = themeFor(palette());
  switch (kind_) {
    case Kind::kDone:
      return theme.joined;
    case Kind::kRefusal:
    case Kind::kError:
      return theme.refused;
    case Kind::kInfo:
      break;
  }
  return theme.first;
}

void MessageBanner::paintEvent(QPaintEvent* /*event*/) {
  const Theme theme = themeFor(palette());
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  QPainterPath shape;
  shape.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
  painter.fillPath(shape, theme.card);
  painter.save();
  painter.setClipPath(shape);
  painter.fillRect(0, 0, kEdge, height(), colour());
  painter.restore();
  painter.setPen(theme.line);
  painter.drawPath(shape);
}

void MessageBanner::resizeEvent(QResizeEvent* event) {
  QFrame::resizeEvent(event);
  if (event->oldSize().width() != width()) fitHeight();
  Q_EMIT resized();
}

}  // namespace framequilt::viewer
