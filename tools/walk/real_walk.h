#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "tools/walk/real_machine.h"
#include "tools/walk/walk.h"

namespace quillmar {

// The child's device is a computer with NetworkManager and the tunnel program; its own programs ask for
// names, and its wire is watched.
class RealWalk final : public Walk {
 public:
  // The child's window ends before the walk does.
  RealWalk(RealMachine& machine, ui::UiStage& parent, std::unique_ptr<ui::UiStage> child,
           const QDir& directory);

 private:
  bool begin() override;
  bool atParents(const std::function<bool()>& work) override;
  bool switchOn() override;
  bool ask(const std::string& name) override;
  bool askForBlocked(const std::string& name) override;
  bool end() override;

  bool examine();
  bool keptToItself();
  bool disconnect();
  bool isSilent();
  static void pass(std::chrono::seconds time);
  bool finds(const std::string& name, bool isThere, const QString& meaning);

  RealMachine& machine_;
  std::unique_ptr<ui::UiStage> childStage_;
};

}  // namespace quillmar
