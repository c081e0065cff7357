#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tunnel/resolver/connection.h"

namespace quillmar::tunnel::test {

// A connection that records its calls.
struct FakeConnection final : Connection {
  explicit FakeConnection(std::set<FakeConnection*>& all) : alive(all) { alive.insert(this); }
  ~FakeConnection() override { alive.erase(this); }
  void send(Ticket ticket, const std::string& /*question*/) override { sent.push_back(ticket); }
  void cancel(Ticket ticket) override { cancelled.push_back(ticket); }
  void ping() override { ++pings; }
  void flush() override { ++flushes; }

  std::set<FakeConnection*>& alive;
  ConnectionEvents* events = nullptr;
  std::vector<Ticket> sent;
  std::vector<Ticket> cancelled;
  int pings = 0;
  int flushes = 0;
};

// Creates connections and keeps all of them, the latest last.
struct FakeConnections {
  Connect connect() {
    return [this](ConnectionEvents& events) {
      auto connection = std::make_unique<FakeConnection>(alive);
      connection->events = &events;
      made.push_back(connection.get());
      return connection;
    };
  }

  std::set<FakeConnection*> alive;
  std::vector<FakeConnection*> made;
};

}  // namespace quillmar::tunnel::test
