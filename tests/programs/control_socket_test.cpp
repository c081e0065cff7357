#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <optional>
#include <string>

#include "platform/common/asio_dispatch.h"
#include "programs/control/control_client.h"
#include "programs/control/control_server.h"
#include "testing/scoped_environment.h"
#include "testing/temporary_directory.h"

namespace quillmar::control {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// Much longer than any answer takes.
constexpr auto timeout = 60s;

// A server, its files, and a thread that acts as its main thread.
class ControlSocket : public testing::Test {
 protected:
  ControlSocket() { fs::permissions(runtime.path(), fs::perms::owner_all); }
  ~ControlSocket() override { stop(); }

  void serve(ControlServer::Handler handler = answerWithLine) {
    std::promise<void> ready;
    loop = std::thread([this, &ready, handler = std::move(handler)] {
      AsioDispatch dispatch;
      std::optional<ControlServer> own(std::in_place, data, dispatch, handler);
      end = [&dispatch] { dispatch.stop(); };
      onMain = [&dispatch, &own](const std::function<void(ControlServer&)>& task) {
        std::promise<void> done;
        dispatch.main().async([&] {
          task(*own);
          done.set_value();
        });
        done.get_future().wait();
      };
      dispatch.main().async([&ready] { ready.set_value(); });
      dispatch.run();
      own.reset();
    });
    ready.get_future().wait();
  }

  void stop() {
    if (loop.joinable()) {
      end();
      loop.join();
    }
  }

  static void answerWithLine(const std::string& line, const ControlServer::Reply& reply) {
    reply({"heard " + line});
  }

  static FileDescriptor connectTo(const fs::path& path) {
    const auto address = LocalSocketAddress::of(path);
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const bool isConnected =
        address && ::connect(socket.get(), address->address(), LocalSocketAddress::size()) == 0;
    return isConnected ? std::move(socket) : FileDescriptor();
  }
  fs::path place() const { return localSocketPaths(data).front(); }

  std::string say(const std::string& line) const {
    const auto socket = connectTo(place());
    EXPECT_TRUE(socket);
    sendMessage(socket.get(), {line});
    const auto answer = receiveMessage(socket.get(), timeout);
    return answer ? answer->line : "(nothing)";
  }

  const TemporaryDirectory runtime;
  const TemporaryDirectory home;
  const fs::path data = home.path() / "data";
  const ScopedEnvironment session{"XDG_RUNTIME_DIR", runtime.path().c_str()};
  std::thread loop;
  std::function<void()> end;
  std::function<void(const std::function<void(ControlServer&)>&)> onMain;
};

TEST_F(ControlSocket, carries_a_line_each_way) {
  serve();
  EXPECT_EQ(say("hello"), "heard hello");
  EXPECT_EQ(say(""), "heard ");
}

TEST_F(ControlSocket, is_accessible_to_its_owner_only) {
  serve();
  struct stat socket {};
  ASSERT_EQ(::stat(place().c_str(), &socket), 0);
  EXPECT_EQ(socket.st_mode & 0777U, 0600U);
  struct stat directory {};
  ASSERT_EQ(::stat(place().parent_path().c_str(), &directory), 0);
  EXPECT_EQ(directory.st_mode & 0777U, 0700U);
}

TEST_F(ControlSocket, refuses_processes_of_other_users) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can be somebody else";
  }
  serve();
  // With all file permissions open, only the server itself can refuse.
  const auto path = place();
  fs::permissions(runtime.path(), fs::perms::all);
  fs::permissions(path.parent_path(), fs::perms::all);
  fs::permissions(path, fs::perms::all);
  const pid_t stranger = fork();
  if (stranger == 0) {
    constexpr uid_t nobody = 65534;
    const bool isStranger = ::setuid(nobody) == 0;
    const auto socket = connectTo(path);
    const bool isHeard =
        socket && sendMessage(socket.get(), {"hello"}) && receiveMessage(socket.get(), timeout);
    _exit(!isStranger || !socket ? 2 : isHeard ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(stranger, &status, 0), stranger);
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(ControlSocket, drops_a_client_that_sends_too_much) {
  serve();
  const auto socket = connectTo(place());
  const std::string flood(3 * localLineLimit, 'x');
  ASSERT_TRUE(socket);
  ::send(socket.get(), flood.data(), flood.size(), MSG_NOSIGNAL);
  EXPECT_FALSE(receiveMessage(socket.get(), timeout));
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(ControlSocket, serves_others_while_a_client_is_silent) {
  serve();
  const auto silent = connectTo(place());
  const auto half = connectTo(place());
  ASSERT_EQ(::send(half.get(), "he", 2, MSG_NOSIGNAL), 2);
  EXPECT_EQ(say("hello"), "heard hello");
  ASSERT_TRUE(sendMessage(half.get(), {"llo"}));
  EXPECT_EQ(receiveMessage(half.get(), timeout)->line, "heard hello");
  EXPECT_TRUE(silent);
}

// A main thread that does not answer, so that clients wait.
struct FullControlSocket : ControlSocket {
  FullControlSocket() {
    serve([this](const std::string& line, const ControlServer::Reply& reply) {
      if (line == "wait") {
        waiting.push_back(reply);
        ++asked;
        asked.notify_all();
      } else {
        answerWithLine(line, reply);
      }
    });
  }
  ~FullControlSocket() override { stop(); }

  std::vector<FileDescriptor> connectMany(std::size_t count) const {
    std::vector<FileDescriptor> crowd(count);
    std::ranges::generate(crowd, [this] { return connectTo(place()); });
    return crowd;
  }
  // Returns when the server has read each request.
  std::vector<FileDescriptor> askMany(std::size_t count) {
    const std::size_t before = asked;
    auto crowd = connectMany(count);
    for (const FileDescriptor& guest : crowd) {
      EXPECT_TRUE(sendMessage(guest.get(), {"wait"}));
    }
    for (std::size_t now = asked; now < before + count; now = asked) {
      asked.wait(now);
    }
    return crowd;
  }

  static constexpr std::size_t room = 16;
  std::vector<ControlServer::Reply> waiting;
  std::atomic<std::size_t> asked = 0;
};

TEST_F(FullControlSocket, drops_the_client_that_has_been_silent_longest) {
  const auto silent = connectMany(room + 1);
  EXPECT_EQ(say("hello"), "heard hello");
  EXPECT_FALSE(receiveMessage(silent.front().get(), timeout)) << "it was let go";
  ASSERT_TRUE(sendMessage(silent.back().get(), {"late"}));
  EXPECT_EQ(receiveMessage(silent.back().get(), timeout)->line, "heard late");
}

TEST_F(FullControlSocket, has_room_again_when_clients_have_gone) {
  askMany(room).clear();
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(FullControlSocket, keeps_clients_that_wait_for_answers) {
  auto crowd = askMany(room - 1);
  // This client has shut down its writing side but still reads.
  ::shutdown(crowd.front().get(), SHUT_WR);
  const auto silent = connectMany(1);
  EXPECT_EQ(say("hello"), "heard hello");
  crowd.push_back(std::move(askMany(1).front()));
  EXPECT_EQ(say("hello"), "(nothing)") << "there is no room among those who wait";
  onMain([this](ControlServer& /*its replies*/) {
    for (const auto& reply : waiting) {
      reply({"at last"});
    }
  });
  for (const FileDescriptor& guest : crowd) {
    EXPECT_EQ(receiveMessage(guest.get(), timeout)->line, "at last");
  }
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(ControlSocket, survives_a_client_that_leaves_before_the_answer) {
  std::promise<ControlServer::Reply> asked;
  serve([&](const std::string& line, ControlServer::Reply reply) {
    if (line == "first") {
      asked.set_value(std::move(reply));
    } else {
      reply({"heard " + line});
    }
  });
  auto socket = connectTo(place());
  ASSERT_TRUE(sendMessage(socket.get(), {"first"}));
  const auto reply = asked.get_future().get();
  socket = FileDescriptor();
  reply({"too late"});
  EXPECT_EQ(say("second"), "heard second");
}

TEST_F(ControlSocket, ignores_an_answer_after_the_server_has_ended) {
  std::promise<ControlServer::Reply> asked;
  serve([&](const std::string& /*line*/, ControlServer::Reply reply) { asked.set_value(std::move(reply)); });
  const auto socket = connectTo(place());
  ASSERT_TRUE(sendMessage(socket.get(), {"hello"}));
  const auto reply = asked.get_future().get();
  stop();
  reply({"too late"});
  EXPECT_FALSE(receiveMessage(socket.get(), timeout));
}

TEST_F(ControlSocket, sends_pending_answers_before_it_ends) {
  serve([this](const std::string& line, const ControlServer::Reply& reply) {
    reply({"heard " + line});
    end();
  });
  EXPECT_EQ(say("hello"), "heard hello");
  loop.join();
}

TEST_F(ControlSocket, passes_an_open_file) {
  std::ofstream(home.path() / "file") << "text";
  serve([this](const std::string& /*line*/, const ControlServer::Reply& reply) {
    reply({"here", FileDescriptor(::open((home.path() / "file").c_str(), O_RDONLY | O_CLOEXEC))});
  });
  const auto socket = connectTo(place());
  ASSERT_TRUE(sendMessage(socket.get(), {"give"}));
  const auto answer = receiveMessage(socket.get(), timeout);
  ASSERT_TRUE(answer);
  ASSERT_TRUE(answer->file);
  std::array<char, 8> text{};
  EXPECT_EQ(::read(answer->file.get(), text.data(), text.size()), 4);
  EXPECT_STREQ(text.data(), "text");
}

TEST_F(ControlSocket, is_removed_with_its_server) {
  serve();
  stop();
  EXPECT_FALSE(fs::exists(place()));
  EXPECT_FALSE(ask(data, {.operation = "status"}, timeout));
}

TEST_F(ControlSocket, removes_its_folder_unless_another_socket_is_in_it) {
  serve();
  {
    AsioDispatch dispatch;
    const ControlServer neighbour(home.path() / "other", dispatch, answerWithLine);
  }
  EXPECT_EQ(say("hello"), "heard hello");
  stop();
  EXPECT_TRUE(fs::is_empty(runtime.path()));
}

TEST_F(ControlSocket, replaces_the_socket_of_a_killed_process) {
  fs::create_directories(place().parent_path());
  std::ofstream(place()) << "left";
  serve();
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(ControlSocket, is_created_again_when_its_directory_was_removed) {
  serve();
  fs::remove_all(place().parent_path());
  onMain([](ControlServer& server) { server.keepReachable(); });
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(ControlSocket, is_kept_while_it_exists) {
  serve();
  struct stat before {};
  ASSERT_EQ(::stat(place().c_str(), &before), 0);
  onMain([](ControlServer& server) { server.keepReachable(); });
  struct stat after {};
  ASSERT_EQ(::stat(place().c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(ControlSocket, leaves_a_path_that_another_process_has_taken) {
  serve();
  fs::remove(place());
  std::ofstream(place()) << "theirs";
  stop();
  EXPECT_TRUE(fs::exists(place()));
}

TEST_F(ControlSocket, is_in_the_data_directory_without_a_session_directory) {
  const ScopedEnvironment nowhere("XDG_RUNTIME_DIR", nullptr);
  EXPECT_THAT(localSocketPaths(data), testing::ElementsAre(data / "control.socket"));
  serve();
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(ControlSocket, is_found_in_either_place) {
  {
    const ScopedEnvironment nowhere("XDG_RUNTIME_DIR", nullptr);
    serve([](const std::string& /*line*/, const ControlServer::Reply& reply) {
      reply({R"({"worker":"agent"})"});
    });
  }
  const auto answer = ask(data, {.operation = "status"}, timeout);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->reply.worker, "agent");
}

TEST_F(ControlSocket, may_have_a_long_path) {
  const ScopedEnvironment nowhere("XDG_RUNTIME_DIR", nullptr);
  const fs::path deep = home.path() / std::string(150, 'd') / std::string(150, 'e');
  AsioDispatch dispatch;
  const ControlServer server(deep, dispatch, answerWithLine);
  EXPECT_TRUE(connectTo(deep / "control.socket"));
}

TEST_F(ControlSocket, is_separate_for_each_installation_of_a_user) {
  EXPECT_NE(localSocketPaths(data).front(), localSocketPaths(home.path() / "other").front());
  fs::create_directories(data);
  fs::create_directory_symlink(data, home.path() / "link");
  EXPECT_EQ(localSocketPaths(data).front(), localSocketPaths(home.path() / "link").front());
}

TEST_F(ControlSocket, an_invalid_answer_counts_as_none) {
  for (const std::string answer : {"", "garbage", "[]", R"({"worker":7})"}) {
    serve([answer](const std::string& /*line*/, const ControlServer::Reply& reply) { reply({answer}); });
    EXPECT_FALSE(ask(data, {.operation = "status"}, timeout)) << answer;
    stop();
  }
}

}  // namespace
}  // namespace quillmar::control
