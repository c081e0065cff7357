#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include "tests/tunnel/support/messages.h"
#include "tests/tunnel/support/running_server.h"
#include "tests/tunnel/support/test_endpoint.h"

namespace quillmar::tunnel::test {

// A correct answer to a question, with `records` copies of the record.
std::string answerTo(const std::string& question, const RecordText& record = {}, std::size_t records = 1);

// The server and its endpoint.
struct TunnelServer : testing::Test {
  void start(TestEndpoint::Answering answering, TestEndpoint::Speaks speaks = TestEndpoint::Speaks::http2) {
    endpoint = std::make_unique<TestEndpoint>(std::move(answering), speaks);
    server = std::make_unique<RunningServer>(endpoint->url(), endpoint->caFile());
  }
  void startWell() {
    start([](TestPeer& peer, std::int32_t stream, const std::string& question) {
      peer.answer(stream, answerTo(question));
    });
  }
  // Handles the first question with `first` and answers all others correctly.
  void startBadly(TestEndpoint::Answering first) {
    start([first = std::move(first), count = std::make_shared<std::atomic<int>>(0)](
              TestPeer& peer, std::int32_t stream, const std::string& question) {
      if ((*count)++ == 0) {
        return first(peer, stream, question);
      }
      peer.answer(stream, answerTo(question));
    });
  }
  std::string ask(const std::string& name, Channel channel = Channel::udp) const {
    return askServer(server->port(), queryText({.name = name, .payload = 1232}), channel);
  }
  bool resolves(const std::string& name) const {
    const auto reply = ask(name);
    return readHeader(reply)->rcode() == rcode::noError && readHeader(reply)->answers == 1;
  }
  void expectFailure(const std::string& name, const std::string& text) const {
    const auto reply = ask(name);
    EXPECT_EQ(readHeader(reply)->rcode(), rcode::servFail);
    EXPECT_THAT(reply, testing::HasSubstr(text));
  }

  std::unique_ptr<TestEndpoint> endpoint;
  std::unique_ptr<RunningServer> server;
};

}  // namespace quillmar::tunnel::test
