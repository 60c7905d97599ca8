// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/side_panel.h"

#include <QHeaderView>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QStyledItemDelegate>

#include "tools/viewer/model/texts.h"
#include "tools/viewer/window/theme.h"

namespace framequilt::viewer {
namespace {

/// The outcome of a frame with a dot in its colour.
class OutcomeDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

 protected:
  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    QStyleOptionViewItem shifted = option;
    shifted.rect.adjust(kDotRoom, 0, 0, 0);
    if (option.state.testFlag(QStyle::State_Selected)) {
      painter->fillRect(option.rect, option.palette.brush(QPalette::Highlight));
    }
    QStyledItemDelegate::paint(painter, shifted, index);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(colourOf(index, themeFor(option.palette)));
    painter->drawEllipse(
        QPointF(option.rect.left() + kDotRoom / 2.0 + 1, option.rect.center().y() + 1), 4, 4);
    painter->restore();
  }

 private:
  static constexpr int kDotRoom = 16;

  static QColor colourOf(const QModelIndex& index, const Theme& theme) {
    switch (static_cast<FrameState>(index.data(FrameListModel::kStateRole).toInt())) {
      case FrameState::kJoined:
        return theme.joined;
      case FrameState::kRefused:
        return theme.refused;
      case FrameState::kWaiting:
        break;
    }
    return theme.waiting;
  }
};

}  // namespace

SidePanel::SidePanel(QWidget* parent)
    : QWidget(parent),
      plotArea_(new QWidget),
      plotLayout_(new QVBoxLayout(plotArea_)),
      list_(new QTableView),
      description_(new QLabel) {
  plotLayout_->setContentsMargins(0, 0, 0, 0);
  plotLayout_->setSpacing(8);
  auto* plots = new QScrollArea;
  plots->setWidget(plotArea_);
  plots->setWidgetResizable(true);
  plots->setFrameShape(QFrame::NoFrame);
  plots->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

  list_->setObjectName("frames");
  list_->setModel(&frames_);
  list_->setItemDelegateForColumn(FrameListModel::kOutcome, new OutcomeDelegate(list_));
  list_->setSelectionBehavior(QAbstractItemView::SelectRows);
  list_->setSelectionMode(QAbstractItemView::SingleSelection);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list_->setShowGrid(false);
  list_->setAlternatingRowColors(true);
  list_->setWordWrap(false);
  list_->setTabKeyNavigation(false);
  list_->verticalHeader()->hide();
  const int rowHeight = fontMetrics().height() + 8;
  list_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  list_->verticalHeader()->setDefaultSectionSize(rowHeight);
  list_->verticalHeader()->setMinimumSectionSize(rowHeight);
  QHeaderView* header = list_->horizontalHeader();
  header->setHighlightSections(false);
  header->setSectionResizeMode(FrameListModel::kOutcome, QHeaderView::Stretch);
  list_->setColumnWidth(FrameListModel::kNumber, fontMetrics().horizontalAdvance("00000"));
  list_->setColumnWidth(FrameListModel::kName,
                        fontMetrics().horizontalAdvance("frame_0000.jpeg__"));
  list_->setColumnWidth(FrameListModel::kMatches, fontMetrics().horizontalAdvance("Matches__"));
  connect(list_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this](const QModelIndex& current) {
            describe();
            for (PlotWidget* plot : plotWidgets_)
              plot->select(current.isValid() ? current.row() : -1);
            if (current.isValid()) Q_EMIT framePicked(current.row());
          });

  description_->setObjectName("description");
  description_->setWordWrap(true);
  description_->setTextFormat(Qt::PlainText);
  description_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  description_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  description_->setMinimumHeight(3 * fontMetrics().lineSpacing() + 4);

  auto* lower = new QWidget;
  auto* lowerLayout = new QVBoxLayout(lower);
  lowerLayout->setContentsMargins(0, 2, 0, 0);
  lowerLayout->addWidget(list_, 1);
  lowerLayout->addWidget(description_);
  auto* splitter = new QSplitter(Qt::Vertical);
  splitter->addWidget(plots);
  splitter->addWidget(lower);
  splitter->setChildrenCollapsible(false);
  splitter->setStretchFactor(0, 11);
  splitter->setStretchFactor(1, 9);
  splitter->setSizes({550, 450});
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(10, 10, 10, 6);
  layout->addWidget(splitter);
  begin(Criterion::kMotion, false);
}

void SidePanel::begin(Criterion criterion, bool dynamicScene) {
  for (PlotWidget* plot : plotWidgets_) delete plot;
  plotWidgets_.clear();
  plots_.begin(criterion, dynamicScene);
  frames_.clear();
  for (std::size_t i = 0; i < plots_.plots().size(); ++i) {
    auto* plot = new PlotWidget(plots_, i);
    plotLayout_->addWidget(plot);
    connect(plot, &PlotWidget::framePicked, this, &SidePanel::select);
    plotWidgets_.push_back(plot);
  }
  plotWidgets_.back()->showFrameNumbers();
  describe();
}

/// The list goes on to the newest frame unless another part of it is being read.
void SidePanel::add(const FrameDone& frame) {
  const QScrollBar* bar = list_->verticalScrollBar();
  const bool atEnd = bar->value() == bar->maximum();
  plots_.add(frame.number, frame.result);
  frames_.add(frame);
  if (atEnd) list_->scrollToBottom();
  for (PlotWidget* plot : plotWidgets_) plot->update();
  describe();
}

void SidePanel::end() {
  frames_.end();
  describe();
}

int SidePanel::selected() const {
  const QModelIndex current = list_->selectionModel()->currentIndex();
  return current.isValid() ? current.row() : -1;
}

void SidePanel::select(int frame) {
  if (frame < 0) return list_->setCurrentIndex({});
  if (frame < frames_.rowCount()) list_->setCurrentIndex(frames_.index(frame, 0));
}

/// Of the chosen frame, else of the newest.
void SidePanel::describe() {
  const int chosen = selected();
  const int row = chosen >= 0 ? chosen : frames_.rowCount() - 1;
  if (row < 0) return description_->setText(tr("No frame yet."));
  const tool::StitchLog::Entry& entry = frames_.entry(row);
  QString text = tr("Frame %1").arg(static_cast<qulonglong>(entry.number)) + " (" +
                 textOf(entry.name) + "): " + frames_.outcome(row);
  if (entry.milliseconds) text += tr(", %1 ms").arg(*entry.milliseconds, 0, 'f', 1);
  const QString advice = sentence(frames_.advice(row));
  description_->setText(advice.isEmpty() ? text + "." : text + ".\n" + advice);
}

}  // namespace framequilt::viewer
