#pragma once

#include <QDir>
#include <QString>
#include <chrono>
#include <functional>
#include <string>

#include "testing/ui/ui_stage.h"

namespace quillmar {

// Performs the program's main job without a display. A parent creates an account and a child profile. The
// child's device enrols, from its first tap to a protected screen, and asks for names. The parent's screen
// then shows them, and blocks one. Two real windows use a running service; the applications' time is virtual,
// the requests are real.
class Walk {
 public:
  Walk(ui::UiStage& parent, ui::UiStage& child, const QDir& directory);
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;
  virtual ~Walk() = default;

  bool run();

 protected:
  struct Side {
    ui::UiStage& stage;
    const char* name;
  };

  // Steps that depend on the kind of the child's computer.
  virtual bool begin() = 0;
  // Runs the parent's first request.
  virtual bool atParents(const std::function<bool()>& work) = 0;
  // The steps from a completed enrollment to a protected device.
  virtual bool switchOn() = 0;
  virtual bool ask(const std::string& name) = 0;
  // Asks again for the name, which the parent has blocked meanwhile.
  virtual bool askForBlocked(const std::string& name) = 0;
  virtual bool end() = 0;

  Side& parent() { return parent_; }
  Side& child() { return child_; }

  bool tap(const Side& side, const QString& control, const QString& expected, const char* meaning);
  bool wait(const Side& side, std::chrono::seconds time, const QString& expected, const char* meaning);
  bool see(const Side& side, const QString& expected, const char* meaning);
  // Reports a step that no screen shows.
  bool tell(bool isSo, const QString& deed, const QString& meaning);

 private:
  bool signUp();
  bool fillIn();
  bool addChild();
  bool startEnrollment();
  bool scan();
  bool finishEnrollment();
  bool watch();
  bool block();
  bool show(const Side& side, const QString& deed, const QString& expected, const char* meaning);

  Side parent_;
  Side child_;
  const QDir directory_;
  int step_ = 0;
};

}  // namespace quillmar
