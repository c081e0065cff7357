#pragma once

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "platform/tunnel.h"

namespace quillmar {

// Implements `TunnelConfiguration::save`: one save at a time for each configuration; those that come
// meanwhile share the next one. Used on one thread.
template <class Key, class Properties>
class JoinedSaves {
 public:
  using Completion = TunnelConfiguration::Completion;
  // Sends one save; `answered` completes it.
  using Send = std::function<void(const Key&, const Properties&)>;

  explicit JoinedSaves(Send send) : send_(std::move(send)) {}

  void save(const Key& key, Properties properties, Completion completion) {
    const auto [known, isNew] = rounds_.try_emplace(key);
    if (isNew) {
      known->second.underWay.add(std::move(properties), std::move(completion));
      send_(key, known->second.underWay.properties);
    } else {
      known->second.waiting.add(std::move(properties), std::move(completion));
    }
  }

  void answered(const Key& key, const std::optional<Error>& error) {
    auto [done, waiting] = std::move(rounds_.extract(key).mapped());
    if (error || waiting.completions.empty() || waiting.properties == done.properties) {
      std::ranges::move(waiting.completions, std::back_inserter(done.completions));
    } else {
      const auto& next = rounds_[key].underWay = std::move(waiting);
      send_(key, next.properties);
    }
    for (const Completion& completion : done.completions) {
      completion(error);
    }
  }

 private:
  // Saves that share one answer.
  struct Round {
    Properties properties;  // of the last save
    std::vector<Completion> completions;

    void add(Properties newest, Completion completion) {
      properties = std::move(newest);
      completions.push_back(std::move(completion));
    }
  };
  struct Rounds {
    Round underWay;
    Round waiting;
  };

  const Send send_;
  std::map<Key, Rounds> rounds_;
};

}  // namespace quillmar
