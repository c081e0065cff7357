#include "ui/items/match_marks_item.h"

#include <QFontMetricsF>
#include <QQuickWindow>
#include <QSGNode>
#include <QSGRectangleNode>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>

#include "foundation/search.h"
#include "presentation/list_filter.h"

namespace quillmar::ui {
namespace {

struct Span {
  int start;
  int end;
};

// The places of the part, in UTF-16 units.
QList<Span> spansOf(const QString& part, const QString& text) {
  const QByteArray utf8 = text.toUtf8();
  const auto unitsBefore = [&utf8](std::size_t byte) {
    return static_cast<int>(QString::fromUtf8(utf8.first(static_cast<qsizetype>(byte))).size());
  };
  QList<Span> spans;
  for (const auto& [start, size] : occurrences(typedPart(part.toStdString()), utf8.toStdString())) {
    spans.append({unitsBefore(start), unitsBefore(start + size)});
  }
  return spans;
}

// The rectangle of a part of a line. A text of two directions may split the part; the rectangle then spans
// the pieces.
QRectF rectOf(const QTextLine& line, const Span& span) {
  const int start = std::max(span.start, line.textStart());
  const int end = std::min(span.end, line.textStart() + line.textLength());
  if (start >= end) {
    return {};
  }
  QRectF rect;
  for (const QGlyphRun& run : line.glyphRuns(start, end - start)) {
    rect = rect.united(run.boundingRect());
  }
  const qreal one = line.cursorToX(start);
  const qreal other = line.cursorToX(end);
  const bool isOneRun = line.glyphRuns(start, end - start).size() == 1;
  return isOneRun ? QRectF(std::min(one, other), 0, std::abs(other - one), line.height())
                  : QRectF(rect.x(), 0, rect.width(), line.height());
}

}  // namespace

MatchMarksItem::MatchMarksItem(QQuickItem* parent) : QQuickItem(parent) {
  connect(this, &MatchMarksItem::changed, this, &MatchMarksItem::redraw);
}

void MatchMarksItem::redraw() {
  // Without a part the item has no content to paint.
  if (!part_.isEmpty() || flags().testFlag(ItemHasContents)) {
    setFlag(ItemHasContents, true);
    update();
  }
}

void MatchMarksItem::geometryChange(const QRectF& now, const QRectF& before) {
  QQuickItem::geometryChange(now, before);
  redraw();
}

// The text as the Text item elides it on one line.
QString MatchMarksItem::drawnText() const {
  return lines_ == 1 ? QFontMetricsF(font_).elidedText(text_, static_cast<Qt::TextElideMode>(elide_), width())
                     : text_;
}

QList<QRectF> MatchMarksItem::marks() const {
  QList<QRectF> marks;
  const QString drawn = drawnText();
  const auto spans = part_.isEmpty() ? QList<Span>() : spansOf(part_, drawn);
  if (spans.isEmpty()) {
    return marks;
  }
  QTextLayout layout(drawn, font_);
  QTextOption option(isMirrored_ ? Qt::AlignRight : Qt::AlignLeft);
  option.setWrapMode(lines_ == 1 ? QTextOption::NoWrap : QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  layout.beginLayout();
  qreal top = 0;
  for (int i = 0; i < lines_; ++i) {
    QTextLine line = layout.createLine();
    if (!line.isValid()) {
      break;
    }
    line.setLineWidth(width());
    for (const Span& span : spans) {
      if (const QRectF rect = rectOf(line, span); !rect.isEmpty()) {
        marks.append(rect.translated(0, top));
      }
    }
    top += line.height() * lineHeight_;
  }
  layout.endLayout();
  return marks;
}

QSGNode* MatchMarksItem::updatePaintNode(QSGNode* former, UpdatePaintNodeData* /*data*/) {
  delete former;
  const auto rects = marks();
  if (rects.isEmpty()) {
    return nullptr;
  }
  auto* const drawn = new QSGNode;
  for (const QRectF& rect : rects) {
    auto* const node = window()->createRectangleNode();
    node->setRect(rect);
    node->setColor(color_);
    drawn->appendChildNode(node);
  }
  return drawn;
}

}  // namespace quillmar::ui
