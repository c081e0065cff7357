#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTextStream>
#include <memory>
#include <string>

#include "bench/measure.h"
#include "testing/ui/offscreen.h"
#include "ui/bridge/shown_text.h"

// The window's time for the longest text from outside, a name of 65,000 letters: sanitising it and laying it
// out in a phone-wide column. Against an ordinary name in the same Text element, not sanitised.
namespace {

using namespace quillmar;

constexpr int rounds = 41;
constexpr int repetitions = 20;

class Column {
 public:
  Column() {
    QQmlComponent component(&engine_);
    component.setData("import QtQuick\nText { width: 358; wrapMode: Text.Wrap; textFormat: Text.PlainText }",
                      QUrl());
    text_.reset(component.create());
  }
  // Reading the height forces the layout of all lines.
  double layOut(const QString& words) const {
    text_->setProperty("text", QString());
    text_->setProperty("text", words);
    return text_->property("contentHeight").toDouble();
  }

 private:
  QQmlEngine engine_;
  std::unique_ptr<QObject> text_;
};

}  // namespace

int main(int count, char** arguments) {
  quillmar::ui::drawOffscreen();
  const QGuiApplication application(count, arguments);
  const Column column;
  const std::string ordinary = "Grandmother Wilhelmina's phone";
  const std::string longest(65000, 'w');
  double height = 0;
  const auto repeat = [&](const auto& draw) {
    return [&height, draw] {
      for (int i = 0; i < repetitions; ++i) {
        height += draw();
      }
    };
  };
  const auto drawOrdinary = repeat([&] { return column.layOut(QString::fromStdString(ordinary)); });
  const auto drawLongest = repeat([&] { return column.layOut(ui::shownText(longest)); });
  const auto times = bench::race(rounds, {drawOrdinary, drawLongest});
  QTextStream(stdout) << "a name of 65,000 letters, shown: " << times[1] / times[0]
                      << " times a plain Text with an ordinary name (" << times[1].count() / repetitions * 1e6
                      << " us to " << times[0].count() / repetitions * 1e6 << " us)\n";
  return height > 0 ? 0 : 1;
}
