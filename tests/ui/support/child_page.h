#pragma once

#include <string>
#include <vector>

#include "testing/ui/parent_stage.h"

namespace quillmar::ui {

// A window with the page of a child. The service answers each change of the child's lists with the same
// policy.
struct ChildPage {
  ChildPage(const UiStage::Options& options, const char* policy) : stage(options) {
    openChild(stage);
    http().forgetRequests();
    for (const auto* const list : {"/allow", "/block"}) {
      http().answerAlways("POST", std::string("/children/c1/policy") + list, 200, policy);
    }
    http().answerAlways("DELETE", "/children/c1/policy/allow/Library.example.org", 200, policy);
  }

  UiStage stage;

  ChildDetailView& screen() { return stage.application.screen<ChildDetailView>(); }
  ScriptedHttpSession& http() { return stage.application.machine.http; }
  std::vector<std::string> changes() { return http().changes(); }
  void choose(ChildDetailTab tab) {
    screen().selectedTab = tab;
    stage.settle();
    http().forgetRequests();
  }
};

}  // namespace quillmar::ui
