#include "ui/bridge/shown_text.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <memory>
#include <string>

#include "presentation/screen_model.h"
#include "tests/ui/support/bridged_model.h"

namespace quillmar::ui {
namespace {

QString shown(const QString& text) { return shownText(text.toStdString()); }

const QString marks = QString::fromUtf16(
    u"\u061C\u200E\u200F\u202A\u202B\u202C\u202D\u202E\u2066\u2067\u2068\u2069\u206A\u206B\u206C\u206D\u206E"
    u"\u206F");

TEST(ShownText, has_no_bidi_marks) {
  EXPECT_EQ(shown(marks), "");
  for (const QChar mark : marks) {
    EXPECT_EQ(shown(QString("a") + mark + "b"), "ab");
    EXPECT_EQ(editedText((QString("a") + mark + "b").toStdString()), "ab");
  }
}

TEST(ShownText, keeps_everything_else_unchanged) {
  // Names written from right to left, one with a zero-width non-joiner; then people of several code points,
  // and flags of tags and of letters.
  const QStringList ordinary{"",
                             "O'Neill & <b>Söhne</b>\n\tend",
                             "שרה בת־אל (8)",
                             "مُحَمَّد، ٣ أجهزة",
                             "می‌خواهم",
                             "👨‍👩‍👧‍👦 👩🏽‍🚀",
                             "🏴󠁧󠁢󠁥󠁮󠁧󠁿 🇳🇿"};
  for (const QString& text : ordinary) {
    EXPECT_EQ(shown(text), text);
    EXPECT_EQ(editedText(text.toStdString()), text);
  }
}

TEST(ShownText, keeps_the_neighbours_of_removed_marks) {
  const QString neighbours =
      QString::fromUtf16(u"\u2027\u2028\u2029\u202F\u2065\u2070\u200D\u200C\u200B\u2010\u061B\u061D");
  EXPECT_EQ(shown(neighbours), neighbours);
}

TEST(ShownText, loses_its_middle_if_it_is_too_long) {
  const QString longest(longestShownText, u'w');
  EXPECT_EQ(shown(longest), longest);
  const QString text = "Delete " + QString(65000, u'w') + "? This cannot be undone.";
  const QString short_ = shown(text);
  EXPECT_EQ(short_.size(), longestShownText);
  EXPECT_TRUE(short_.startsWith("Delete www"));
  EXPECT_TRUE(short_.contains(u"w…w"));
  EXPECT_TRUE(short_.endsWith("www? This cannot be undone."));
  EXPECT_EQ(editedText(text.toStdString()), text);
}

TEST(ShownText, marks_the_part_that_it_does_not_decode) {
  const QString text = "begin" + QString(100000, QChar(0x202E)) + "end";
  EXPECT_EQ(shown(text), QStringLiteral("begin…end"));
  for (int before = 0; before < 4; ++before) {
    const QString wide = QString(before, u'a') + QStringLiteral("é€😀").repeated(20000);
    EXPECT_FALSE(shown(wide).contains(QChar(QChar::ReplacementCharacter)));
  }
}

TEST(ShownText, cuts_no_character_in_two) {
  const QString family = QStringLiteral("👨‍👩‍👧‍👦");
  for (int before = 0; before < family.size(); ++before) {
    const QString text = QString(before, u'a') + family.repeated(400) + QString(before, u'z');
    QString rest = shown(text);
    EXPECT_LE(rest.size(), longestShownText);
    rest.remove(family);
    EXPECT_EQ(rest, QString(before, u'a') + u'…' + QString(before, u'z'));
  }
}

TEST(ShownText, cuts_a_grapheme_that_belongs_to_no_script) {
  const QString endless = QStringLiteral("👩\u200D").repeated(3000);
  for (const QString& text : {endless, u'a' + endless, QStringLiteral("ab") + endless}) {
    const QString rest = shown(text);
    EXPECT_LE(rest.size(), longestShownText);
    EXPECT_TRUE(rest.isValidUtf16());
  }
}

TEST(ShownText, keeps_no_more_combining_marks_on_a_letter_than_a_script_uses) {
  const QString most = u'Z' + QString(12, QChar(0x0335)) + u'Z';
  EXPECT_EQ(shown(most), most);
  EXPECT_EQ(shown(u'Z' + QString(500, QChar(0x0335)) + u'Z'), most);
  const QString astral = QStringLiteral("\U000E0100");
  EXPECT_EQ(shown(u'Z' + astral.repeated(500) + u'Z'), u'Z' + astral.repeated(12) + u'Z');
}

TEST(ShownText, loses_lines_in_the_middle_if_it_has_too_many) {
  for (const QString& lineBreak : {QStringLiteral("\n"), QStringLiteral("\r\n"), QStringLiteral("\r"),
                                   QString(QChar(0x2028)), QString(QChar(0x2029)), QString(QChar(0x0085))}) {
    const auto lines = [&](int count) {
      QStringList all;
      for (int i = 1; i <= count; ++i) {
        all.append(QString::number(i));
      }
      return all.join(lineBreak);
    };
    EXPECT_EQ(shown(lines(mostShownLines)), lines(mostShownLines));
    const QString few = shown(lines(200));
    EXPECT_EQ(few.count(lineBreak), mostShownLines - 1);
    EXPECT_TRUE(few.startsWith("1" + lineBreak + "2" + lineBreak));
    EXPECT_TRUE(few.contains("11" + QString(QChar(0x2026)) + lineBreak + "196"));
    EXPECT_TRUE(few.endsWith(lineBreak + "200"));
  }
}

TEST(ShownText, accepts_invalid_utf8) {
  EXPECT_EQ(shownText("a\xFF"), QStringLiteral("a�"));
  EXPECT_EQ(shownText(std::string_view("\0", 1)).size(), 1);
}

const std::string hostile =
    "a\xE2\x80\xAE"
    "b" +
    std::string(65000, 'w');

class Row final : public ObservableObject {
 public:
  Row() : ObservableObject("Row") {}
  Published<std::string> name{*this, "name", hostile};
};

class Screen final : public ScreenModel {
 public:
  Screen() : ScreenModel("Screen") {
    std::vector<std::pair<std::string, std::shared_ptr<Row>>> one;
    one.emplace_back("one", std::make_shared<Row>());
    rows.assign(std::move(one));
  }
  Input<std::string> typed{*this, "typed", hostile};
  Published<std::string> name{*this, "name", hostile};
  Published<std::optional<std::string>> note{*this, "note", hostile};
  Published<std::vector<std::string>> lines{*this, "lines", {hostile}};
  Published<Entry> entry{*this, "entry", {hostile, 1, {hostile}}};
  Published<std::vector<Entry>> entries{*this, "entries", {{hostile, 1, {hostile}}}};
  Derived<std::string> sentence{*this, "sentence", [this] { return name() + "!"; }};
  Rows<Row> rows{*this, "rows"};
  Published<Entry> qrCode{*this, "qrCode", {hostile}};
};

// A screen with texts in every kind of member, at every depth.
struct ShownByBridge : BridgedModel<Screen> {
  QVariant firstOf(const char* name) const { return list(name)->at(0); }
  const QString fit = shownText(hostile);
};

TEST_F(ShownByBridge, every_text_of_a_model_is_safe_to_draw) {
  ASSERT_EQ(fit.size(), longestShownText);
  for (const bool afterAChange : {false, true}) {
    EXPECT_EQ(shown("name"), fit);
    EXPECT_EQ(shown("note"), fit);
    EXPECT_EQ(firstOf("lines"), fit);
    EXPECT_EQ(shown("entry").toMap().value("id"), fit);
    EXPECT_EQ(shown("entry").toMap().value("sites").toList().value(0), fit);
    EXPECT_EQ(firstOf("entries").toMap().value("id"), fit);
    EXPECT_EQ(shown("sentence").toString(), fit.chopped(1) + u'!') << afterAChange;
    EXPECT_EQ(asBridge(firstOf("rows"))->value("name"), fit);
    model->name = "";
    model->note = std::nullopt;
    model->lines = {};
    model->entry = {};
    model->entries = {};
    turn();
    model->name = hostile;
    model->note = hostile;
    model->lines = {hostile};
    model->entry = {hostile, 1, {hostile}};
    model->entries = {{hostile, 1, {hostile}}};
    turn();
  }
}

TEST_F(ShownByBridge, the_models_own_values_are_unchanged) {
  EXPECT_EQ(model->name(), hostile);
  EXPECT_EQ(model->entry().id, hostile);
}

TEST_F(ShownByBridge, the_text_of_an_input_is_complete_and_sent_as_typed) {
  EXPECT_EQ(shown("typed"), editedText(hostile));
  EXPECT_EQ(model->typed(), hostile) << "showing is not typing";
  const QString own = QStringLiteral("\u200Fשרה\u200F");
  assign("typed", own);
  turn();
  EXPECT_EQ(model->typed(), own.toStdString());
  EXPECT_EQ(shown("typed"), own) << "the box changed under the hands of who types";
}

TEST_F(ShownByBridge, a_text_for_machines_is_exact) {
  EXPECT_EQ(shown("qrCode").toMap().value("id"), QString::fromStdString(hostile));
}

}  // namespace
}  // namespace quillmar::ui
