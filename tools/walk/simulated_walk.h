#pragma once

#include "tools/walk/walk.h"

namespace quillmar {

// The child's tunnel is simulated: the walk asks its endpoint in its place.
class SimulatedWalk final : public Walk {
 public:
  SimulatedWalk(ui::UiStage& parent, ui::UiStage& child, const QDir& directory, std::string caFile);

 private:
  bool begin() override;
  bool atParents(const std::function<bool()>& work) override { return work(); }
  bool switchOn() override;
  bool ask(const std::string& name) override;
  bool askForBlocked(const std::string& name) override { return ask(name); }
  bool end() override { return true; }

  const std::string caFile_;
};

}  // namespace quillmar
