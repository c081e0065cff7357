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

// Far more than any answer takes.
constexpr auto patience = 60s;

// A server whose main thread goes round beside the test, and its files.
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
    const auto answer = receiveMessage(socket.get(), patience);
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

TEST_F(ControlSocket, is_its_owners_alone) {
  serve();
  struct stat socket {};
  ASSERT_EQ(::stat(place().c_str(), &socket), 0);
  EXPECT_EQ(socket.st_mode & 0777U, 0600U);
  struct stat directory {};
  ASSERT_EQ(::stat(place().parent_path().c_str(), &directory), 0);
  EXPECT_EQ(directory.st_mode & 0777U, 0700U);
}

TEST_F(ControlSocket, hears_nobody_elses_process) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can be somebody else";
  }
  serve();
  // However the files are set.
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
        socket && sendMessage(socket.get(), {"hello"}) && receiveMessage(socket.get(), patience);
    _exit(!isStranger || !socket ? 2 : isHeard ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(stranger, &status, 0), stranger);
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(ControlSocket, lets_go_of_who_says_too_much) {
  serve();
  const auto socket = connectTo(place());
  const std::string flood(3 * localLineLimit, 'x');
  ASSERT_TRUE(socket);
  ::send(socket.get(), flood.data(), flood.size(), MSG_NOSIGNAL);
  EXPECT_FALSE(receiveMessage(socket.get(), patience));
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(ControlSocket, serves_others_beside_those_who_say_nothing) {
  serve();
  const auto silent = connectTo(place());
  const auto half = connectTo(place());
  ASSERT_EQ(::send(half.get(), "he", 2, MSG_NOSIGNAL), 2);
  EXPECT_EQ(say("hello"), "heard hello");
  ASSERT_TRUE(sendMessage(half.get(), {"llo"}));
  EXPECT_EQ(receiveMessage(half.get(), patience)->line, "heard hello");
  EXPECT_TRUE(silent);
}

// The main thread is kept from answering, so that those who have asked wait.
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
  // Each has been heard when this returns.
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

TEST_F(FullControlSocket, lets_those_go_who_have_said_nothing_for_the_longest_time) {
  const auto silent = connectMany(room + 1);
  EXPECT_EQ(say("hello"), "heard hello");
  EXPECT_FALSE(receiveMessage(silent.front().get(), patience)) << "it was let go";
  ASSERT_TRUE(sendMessage(silent.back().get(), {"late"}));
  EXPECT_EQ(receiveMessage(silent.back().get(), patience)->line, "heard late");
}

TEST_F(FullControlSocket, has_room_again_when_those_who_asked_have_gone) {
  askMany(room).clear();
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(FullControlSocket, keeps_those_who_wait_for_their_answers) {
  auto crowd = askMany(room - 1);
  // One has said all that it will say, and listens still.
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
    EXPECT_EQ(receiveMessage(guest.get(), patience)->line, "at last");
  }
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(ControlSocket, survives_who_goes_before_the_answer) {
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

TEST_F(ControlSocket, an_answer_after_the_end_of_the_server_goes_nowhere) {
  std::promise<ControlServer::Reply> asked;
  serve([&](const std::string& /*line*/, ControlServer::Reply reply) { asked.set_value(std::move(reply)); });
  const auto socket = connectTo(place());
  ASSERT_TRUE(sendMessage(socket.get(), {"hello"}));
  const auto reply = asked.get_future().get();
  stop();
  reply({"too late"});
  EXPECT_FALSE(receiveMessage(socket.get(), patience));
}

TEST_F(ControlSocket, what_was_answered_is_still_sent_when_the_server_ends) {
  serve([this](const std::string& line, const ControlServer::Reply& reply) {
    reply({"heard " + line});
    end();
  });
  EXPECT_EQ(say("hello"), "heard hello");
  loop.join();
}

TEST_F(ControlSocket, hands_an_open_file_over) {
  std::ofstream(home.path() / "file") << "text";
  serve([this](const std::string& /*line*/, const ControlServer::Reply& reply) {
    reply({"here", FileDescriptor(::open((home.path() / "file").c_str(), O_RDONLY | O_CLOEXEC))});
  });
  const auto socket = connectTo(place());
  ASSERT_TRUE(sendMessage(socket.get(), {"give"}));
  const auto answer = receiveMessage(socket.get(), patience);
  ASSERT_TRUE(answer);
  ASSERT_TRUE(answer->file);
  std::array<char, 8> text{};
  EXPECT_EQ(::read(answer->file.get(), text.data(), text.size()), 4);
  EXPECT_STREQ(text.data(), "text");
}

TEST_F(ControlSocket, is_gone_with_its_server) {
  serve();
  stop();
  EXPECT_FALSE(fs::exists(place()));
  EXPECT_FALSE(ask(data, {.operation = "status"}, patience));
}

TEST_F(ControlSocket, takes_its_folder_with_it_unless_another_stands_there) {
  serve();
  {
    AsioDispatch dispatch;
    const ControlServer neighbour(home.path() / "other", dispatch, answerWithLine);
  }
  EXPECT_EQ(say("hello"), "heard hello");
  stop();
  EXPECT_TRUE(fs::is_empty(runtime.path()));
}

TEST_F(ControlSocket, takes_the_place_that_a_killed_process_left) {
  fs::create_directories(place().parent_path());
  std::ofstream(place()) << "left";
  serve();
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(ControlSocket, comes_up_again_when_its_directory_was_taken_away) {
  serve();
  fs::remove_all(place().parent_path());
  onMain([](ControlServer& server) { server.keepReachable(); });
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(ControlSocket, stays_as_it_is_while_it_is_there) {
  serve();
  struct stat before {};
  ASSERT_EQ(::stat(place().c_str(), &before), 0);
  onMain([](ControlServer& server) { server.keepReachable(); });
  struct stat after {};
  ASSERT_EQ(::stat(place().c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(ControlSocket, leaves_a_place_that_is_somebody_elses_by_now) {
  serve();
  fs::remove(place());
  std::ofstream(place()) << "theirs";
  stop();
  EXPECT_TRUE(fs::exists(place()));
}

TEST_F(ControlSocket, stands_in_the_data_directory_where_no_session_has_one) {
  const ScopedEnvironment nowhere("XDG_RUNTIME_DIR", nullptr);
  EXPECT_THAT(localSocketPaths(data), testing::ElementsAre(data / "control.socket"));
  serve();
  EXPECT_EQ(say("hello"), "heard hello");
}

TEST_F(ControlSocket, is_found_wherever_it_stands) {
  {
    const ScopedEnvironment nowhere("XDG_RUNTIME_DIR", nullptr);
    serve([](const std::string& /*line*/, const ControlServer::Reply& reply) {
      reply({R"({"worker":"agent"})"});
    });
  }
  const auto answer = ask(data, {.operation = "status"}, patience);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->reply.worker, "agent");
}

TEST_F(ControlSocket, may_stand_at_the_end_of_a_long_path) {
  const ScopedEnvironment nowhere("XDG_RUNTIME_DIR", nullptr);
  const fs::path deep = home.path() / std::string(150, 'd') / std::string(150, 'e');
  AsioDispatch dispatch;
  const ControlServer server(deep, dispatch, answerWithLine);
  EXPECT_TRUE(connectTo(deep / "control.socket"));
}

TEST_F(ControlSocket, two_installations_of_one_user_do_not_meet) {
  EXPECT_NE(localSocketPaths(data).front(), localSocketPaths(home.path() / "other").front());
  fs::create_directories(data);
  fs::create_directory_symlink(data, home.path() / "link");
  EXPECT_EQ(localSocketPaths(data).front(), localSocketPaths(home.path() / "link").front());
}

TEST_F(ControlSocket, an_answer_that_makes_no_sense_is_none) {
  for (const std::string answer : {"", "garbage", "[]", R"({"worker":7})"}) {
    serve([answer](const std::string& /*line*/, const ControlServer::Reply& reply) { reply({answer}); });
    EXPECT_FALSE(ask(data, {.operation = "status"}, patience)) << answer;
    stop();
  }
}

}  // namespace
}  // namespace quillmar::control
