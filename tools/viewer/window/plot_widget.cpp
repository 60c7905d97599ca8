// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/plot_widget.h"

#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "tools/viewer/window/theme.h"

namespace framequilt::viewer {
namespace {

constexpr int kLeastHeight = 92;
constexpr double kLeft = 44;
constexpr double kRight = 56;
constexpr double kTop = 32;
constexpr double kHeading = 26;
constexpr double kBottom = 8;
constexpr double kNumberRoom = 16;
constexpr int kFewFrames = 60;  // Up to so many each value has a dot.
constexpr int kFewestAcross = 20;
constexpr double kRounding = 1e-6;  // Of a mark's number.

QString number(double value) { return QLocale::c().toString(value, 'g', 4); }

}  // namespace

PlotWidget::PlotWidget(const RunPlots& plots, std::size_t plot, QWidget* parent)
    : QWidget(parent), plots_(plots), plot_(plot), bottom_(kBottom) {
  setMouseTracking(true);
  setMinimumHeight(kLeastHeight);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  setAccessibleName(this->plot().title);
}

void PlotWidget::select(int frame) {
  selected_ = frame;
  update();
}

void PlotWidget::showFrameNumbers() {
  bottom_ = kBottom + kNumberRoom;
  setMinimumHeight(kLeastHeight + static_cast<int>(kNumberRoom));
  update();
}

QRectF PlotWidget::inner() const { return QRectF(rect()).adjusted(kLeft, kTop, -kRight, -bottom_); }

double PlotWidget::across(int frame) const {
  const auto count = static_cast<int>(plots_.verdicts().size());
  return inner().left() + inner().width() * (frame + 0.5) / std::max(count, kFewestAcross);
}

int PlotWidget::frameAt(double x) const {
  const auto count = static_cast<int>(plots_.verdicts().size());
  const double share = (x - inner().left()) / inner().width();
  const auto frame = static_cast<int>(std::floor(share * std::max(count, kFewestAcross)));
  return frame >= 0 && frame < count ? frame : -1;
}

double PlotWidget::up(const PlotAxis& axis, double value) const {
  return inner().bottom() - inner().height() * (value - axis.low) / (axis.high - axis.low);
}

void PlotWidget::paintEvent(QPaintEvent* /*event*/) {
  const Theme theme = themeFor(palette());
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(theme.line);
  painter.setBrush(theme.card);
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
  drawHeading(painter);
  const PlotAxis axis = axisOf(plot());
  drawAxis(painter, axis);
  if (selected_ >= 0 && selected_ < static_cast<int>(plots_.verdicts().size())) {
    painter.setPen(QPen(theme.selected, 1.5));
    painter.drawLine(QPointF(across(selected_), inner().top()),
                     QPointF(across(selected_), inner().bottom()));
  }
  for (std::size_t i = 0; i < plot().series.size(); ++i) drawSeries(painter, axis, i);
  drawLimits(painter, axis);
  if (bottom_ > kBottom) drawFrameNumbers(painter);
}

void PlotWidget::drawHeading(QPainter& painter) const {
  const Theme theme = themeFor(palette());
  QFont bold = font();
  bold.setBold(true);
  painter.setFont(bold);
  painter.setPen(palette().color(QPalette::WindowText));
  const QRectF line(10, 4, width() - 20, kHeading - 6);
  painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, plot().title);
  const double titleWidth = QFontMetricsF(bold).horizontalAdvance(plot().title);
  painter.setFont(font());
  painter.setPen(theme.subtle);
  painter.drawText(line.adjusted(titleWidth + 7, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                   plot().unit);
  // A legend where there is something to tell apart.
  double right = line.right();
  for (std::size_t i = plot().series.size(); plot().series.size() > 1 && i-- > 0;) {
    const QString name = plot().series[i].name;
    const double wide = QFontMetricsF(font()).horizontalAdvance(name);
    painter.setPen(theme.subtle);
    painter.drawText(QRectF(right - wide, line.top(), wide + 1, line.height()),
                     Qt::AlignLeft | Qt::AlignVCenter, name);
    painter.setPen(QPen(i == 0 ? theme.first : theme.second, 2));
    painter.drawLine(QPointF(right - wide - 16, line.center().y()),
                     QPointF(right - wide - 5, line.center().y()));
    right -= wide + 28;
  }
}

void PlotWidget::drawAxis(QPainter& painter, const PlotAxis& axis) const {
  const Theme theme = themeFor(palette());
  QFont small = font();
  small.setPointSizeF(std::max(6.0, small.pointSizeF() * 0.85));
  painter.setFont(small);
  // Every other mark where they would stand too close.
  const double gap = inner().height() * axis.step / (axis.high - axis.low);
  const double step = axis.step * std::ceil(QFontMetricsF(small).height() / gap);
  const bool measured = !plots_.verdicts().empty();
  const int first = qRound(std::ceil(axis.low / step - kRounding));
  const int last = qRound(std::floor(axis.high / step + kRounding));
  for (int i = first; i <= last; ++i) {
    const double value = i * step;
    const double y = up(axis, value);
    painter.setPen(QPen(theme.line, 1));
    painter.drawLine(QPointF(inner().left(), y), QPointF(inner().right(), y));
    if (!measured) continue;
    painter.setPen(theme.subtle);
    painter.drawText(QRectF(0, y - 8, kLeft - 6, 16), Qt::AlignRight | Qt::AlignVCenter,
                     number(value));
  }
}

/// The first, the newest, and those between whose text stands clear of its neighbours.
void PlotWidget::drawFrameNumbers(QPainter& painter) const {
  const auto count = static_cast<int>(plots_.numbers().size());
  if (count == 0) return;
  QFont small = font();
  small.setPointSizeF(std::max(6.0, small.pointSizeF() * 0.85));
  painter.setFont(small);
  painter.setPen(themeFor(palette()).subtle);
  const auto textAt = [&](int frame) {
    return tr("frame %1")
        .arg(static_cast<qulonglong>(plots_.numbers()[static_cast<std::size_t>(frame)]));
  };
  const auto draw = [&](int frame) {
    const double wide = QFontMetricsF(small).horizontalAdvance(textAt(frame)) + 2;
    painter.drawText(QRectF(across(frame) - wide / 2, inner().bottom() + 3, wide, kNumberRoom),
                     Qt::AlignHCenter | Qt::AlignVCenter, textAt(frame));
  };
  const double room = QFontMetricsF(small).horizontalAdvance(textAt(count - 1)) * 1.8;
  const int parts = std::max(1, static_cast<int>((across(count - 1) - across(0)) / room));
  draw(0);
  if (across(count - 1) - across(0) < room) return;
  for (int i = 1; i <= std::min(parts, 4); ++i) draw((count - 1) * i / std::min(parts, 4));
}

void PlotWidget::drawLimits(QPainter& painter, const PlotAxis& axis) const {
  const Theme theme = themeFor(palette());
  QFont small = font();
  small.setPointSizeF(std::max(6.0, small.pointSizeF() * 0.85));
  painter.setFont(small);
  for (const PlotLimit& limit : plot().limits) {
    const double y = up(axis, limit.value);
    painter.setPen(QPen(theme.refused, 1.2, Qt::DashLine));
    painter.drawLine(QPointF(inner().left(), y), QPointF(inner().right(), y));
    const QString text = (limit.atLeast ? tr("min %1") : tr("max %1")).arg(number(limit.value));
    const double middle = std::clamp(y, inner().top() + 4, inner().bottom() - 4);
    const QRectF plate(inner().right() + 5, middle - 8, kRight - 8, 16);
    painter.drawText(plate, Qt::AlignLeft | Qt::AlignVCenter, text);
  }
}

void PlotWidget::drawSeries(QPainter& painter, const PlotAxis& axis, std::size_t series) const {
  const Theme theme = themeFor(palette());
  const std::vector<double>& values = plot().series[series].values;
  const QColor colour = series == 0 ? theme.first : theme.second;
  const bool dots = values.size() <= kFewFrames;
  QPolygonF line;
  const auto flush = [&] {
    painter.setPen(QPen(colour, 1.6));
    painter.setBrush(Qt::NoBrush);
    if (line.size() > 1) painter.drawPolyline(line);
    if (line.size() == 1 && !dots) painter.drawPoint(line.front());
    line.clear();
  };
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (std::isnan(values[i])) {
      flush();
    } else {
      line << QPointF(across(static_cast<int>(i)), up(axis, values[i]));
    }
  }
  flush();
  painter.setPen(Qt::NoPen);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const bool refused = plots_.verdicts()[i] == Verdict::kRefused;
    if (std::isnan(values[i]) || !(dots || refused)) continue;
    painter.setBrush(refused ? theme.refused : colour);
    const double radius = refused ? 3.2 : 2;
    painter.drawEllipse(QPointF(across(static_cast<int>(i)), up(axis, values[i])), radius, radius);
  }
}

void PlotWidget::mouseMoveEvent(QMouseEvent* event) {
  const int frame = frameAt(event->position().x());
  if (frame < 0) return QToolTip::hideText();
  QStringList lines(
      tr("frame %1")
          .arg(static_cast<qulonglong>(plots_.numbers()[static_cast<std::size_t>(frame)])));
  for (const PlotSeries& series : plot().series) {
    const double value = series.values[static_cast<std::size_t>(frame)];
    const QString text = std::isnan(value) ? tr("not measured") : number(value);
    lines << series.name + ": " + text + (std::isnan(value) ? "" : " " + plot().unit);
  }
  QToolTip::showText(event->globalPosition().toPoint(), lines.join('\n'), this);
}

void PlotWidget::mousePressEvent(QMouseEvent* event) {
  const int frame = frameAt(event->position().x());
  if (frame >= 0) Q_EMIT framePicked(frame);
}

}  // namespace framequilt::viewer
