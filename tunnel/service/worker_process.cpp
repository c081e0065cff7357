#include "tunnel/service/worker_process.h"

#include <fcntl.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include "tunnel/network/endpoint.h"
#include "tunnel/worker/worker.h"

namespace quillmar::tunnel {
namespace {

constexpr const char* userName = "quillmar-tunnel";
// Neither systemd nor Debian gives this number to a person or a service.
constexpr WorkerUser userWithoutName{60853, 60853};

// The worker expects its descriptors at fixed numbers. A source descriptor must not have one of these
// numbers, because an earlier dup2 would overwrite it.
constexpr int beyondTheWorkers = 16;

OpenFile movedAside(const OpenFile& file) {
  return OpenFile(::fcntl(file.get(), F_DUPFD_CLOEXEC, beyondTheWorkers));
}

WorkerProcess::Given movedAside(WorkerProcess::Given given) {
  for (OpenFile& listener : given.listeners) {
    listener = movedAside(listener);
  }
  return given;
}

std::string descriptionOf(int status) {
  return WIFSIGNALED(status) ? "was killed by signal " + std::to_string(WTERMSIG(status))
                             : "ended with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

WorkerUser workersUser() {
  const passwd* const known = ::getpwnam(userName);  // NOLINT(concurrency-mt-unsafe): there is one thread
  return known != nullptr ? WorkerUser{known->pw_uid, known->pw_gid} : userWithoutName;
}

WorkerProcess::WorkerProcess(boost::asio::io_context& context, Given given, Events events)
    : context_(context),
      given_(movedAside(std::move(given))),
      events_(std::move(events)),
      guard_({.tell = events_.tell,
              .serversWanted = [this] { say(TakeServers{events_.servers()}); },
              .ponged = [this] { pulse_.beat(); },
              .reached = events_.reached}),
      pulse_(context, given_.listeners,
             {.ask = [this] { say(Ping{}); }, .isSilent = [this] { misbehaved("does not answer"); }},
             given_.pace),
      pause_(context) {
  start();
}

WorkerProcess::~WorkerProcess() {
  if (process_ > 0) {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
}

void WorkerProcess::start() {
  started_ = BootClock::now();
  guard_.startAnew();
  pulse_.startAnew();
  std::array<int, 2> ends{-1, -1};
  ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data());
  OpenFile ours(ends[0]);
  const int error = ours ? spawn(OpenFile(ends[1])) : errno;
  if (error != 0) {
    return startLater("The worker can't be started: " + std::system_category().message(error));
  }
  messages_.emplace(context_, ours.release(),
                    MessageSocket::Events{.came = [this](std::string_view message) { came(message); },
                                          .isGone = [this] { ended(); }});
  say(Begin{.user = given_.user.user,
            .group = given_.user.group,
            .listeners = static_cast<std::uint16_t>(given_.listeners.size() / 2),
            .caFile = given_.caFile,
            .url = endpoint_,
            .lastGood = events_.lastGood()});
}

int WorkerProcess::spawn(OpenFile itsEnd) {
  const auto messages = movedAside(itsEnd);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&actions, standard, "/dev/null", O_RDWR, 0);
  }
  posix_spawn_file_actions_adddup2(&actions, messages.get(), messagesDescriptor);
  int next = firstListenerDescriptor;
  for (const OpenFile& listener : given_.listeners) {
    posix_spawn_file_actions_adddup2(&actions, listener.get(), next++);
  }
  posix_spawn_file_actions_addclosefrom_np(&actions, next);
  std::vector<char*> words;
  for (std::string& word : given_.words) {
    words.push_back(word.data());
  }
  words.push_back(nullptr);
  const int error =
      ::posix_spawn(&process_, given_.program.c_str(), &actions, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  process_ = error == 0 ? process_ : -1;
  return error;
}

void WorkerProcess::take(const std::string& endpoint) {
  endpoint_ = endpoint;
  const auto parsed = parseEndpoint(endpoint);
  guard_.expect(parsed ? parsed->host : std::string());
  say(TakeEndpoint{endpoint});
}

void WorkerProcess::networkChanged() { say(NetworkChanged{}); }

// Sends nothing while there is no worker. The next one gets the current state when it starts.
void WorkerProcess::say(const ToWorker& message) {
  if (process_ > 0 && !messages_->send(encode(message)) && (errno == EAGAIN || errno == ENOBUFS)) {
    misbehaved("does not listen");
  }
}

void WorkerProcess::came(std::string_view message) {
  if (process_ > 0 && !guard_.take(BootClock::now(), message)) {
    misbehaved("says what it may not");
  }
}

void WorkerProcess::misbehaved(const std::string& how) {
  if (process_ <= 0) {
    return;
  }
  events_.tell("The worker " + how + ": it is ended.");
  ended();
}

// Called when the worker has closed its end of the socket, which happens only when it dies or misbehaves.
void WorkerProcess::ended() {
  if (process_ <= 0) {
    return;
  }
  ::kill(process_, SIGKILL);
  int status = 0;
  ::waitpid(std::exchange(process_, -1), &status, 0);
  startLater("The worker " + descriptionOf(status));
}

void WorkerProcess::startLater(const std::string& cause) {
  const auto pause = restarts_.died(BootClock::now(), started_);
  events_.tell(cause + (pause.count() == 0 ? "; it is started again."
                                           : "; it is started again in " + std::to_string(pause.count()) +
                                                 " milliseconds."));
  pause_.start(pause, [this] { start(); });
}

}  // namespace quillmar::tunnel
