#pragma once

#include <QtQml/qqmlregistration.h>

#include <QColor>
#include <QFont>
#include <QList>
#include <QQuickItem>
#include <QRectF>
#include <QString>

namespace quillmar::ui {

// Rectangles behind the matches of a part in a text. The item covers the Text that draws the text, and lays
// it out in the same way. Matches in an elided piece are not marked.
class MatchMarksItem : public QQuickItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(MatchMarks)
  Q_PROPERTY(QString part MEMBER part_ NOTIFY changed)
  Q_PROPERTY(QString text MEMBER text_ NOTIFY changed)
  Q_PROPERTY(QFont font MEMBER font_ NOTIFY changed)
  Q_PROPERTY(int elide MEMBER elide_ NOTIFY changed)
  Q_PROPERTY(int lines MEMBER lines_ NOTIFY changed)
  Q_PROPERTY(double lineHeight MEMBER lineHeight_ NOTIFY changed)
  Q_PROPERTY(bool mirrored MEMBER isMirrored_ NOTIFY changed)
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)

 public:
  explicit MatchMarksItem(QQuickItem* parent = nullptr);

  // In the item's coordinates.
  QList<QRectF> marks() const;

 Q_SIGNALS:
  void changed();

 protected:
  void geometryChange(const QRectF& now, const QRectF& before) override;
  QSGNode* updatePaintNode(QSGNode* former, UpdatePaintNodeData* data) override;

 private:
  void redraw();
  QString drawnText() const;

  QString part_;
  QString text_;
  QFont font_;
  int elide_ = Qt::ElideNone;
  int lines_ = 1;
  double lineHeight_ = 1;
  bool isMirrored_ = false;
  QColor color_;
};

}  // namespace quillmar::ui
