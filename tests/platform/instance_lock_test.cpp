#include "platform/linux/instance_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <future>
#include <optional>
#include <system_error>

#include "testing/temporary_directory.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;
using Taken = std::optional<InstanceLock>;

struct InstanceLockTest : testing::Test {
  std::future<Taken> wait() const {
    const auto promise = std::make_shared<std::promise<Taken>>();
    InstanceLock::whenFree(directory.path(),
                           [promise](Taken taken) { promise->set_value(std::move(taken)); });
    return promise->get_future();
  }

  const TemporaryDirectory directory;
};

TEST_F(InstanceLockTest, has_one_holder_at_a_time_and_is_released_by_its_destructor) {
  {
    const auto first = InstanceLock::acquire(directory.path());
    EXPECT_TRUE(first);
    EXPECT_FALSE(InstanceLock::acquire(directory.path()));
  }
  EXPECT_TRUE(InstanceLock::acquire(directory.path()));
}

TEST_F(InstanceLockTest, that_is_held_differs_from_one_that_cannot_be_created) {
  const auto first = InstanceLock::acquire(directory.path());
  EXPECT_FALSE(InstanceLock::obstacle(directory.path()));
  EXPECT_TRUE(InstanceLock::attempt(directory.path()).isElsewhere());
  EXPECT_FALSE(InstanceLock::attempt(directory.path(), "another.lock").isElsewhere());
  EXPECT_FALSE(InstanceLock::attempt("/dev/null").isElsewhere());
  EXPECT_EQ(InstanceLock::attempt("/dev/null").obstacle, std::errc::not_a_directory);
  for (const fs::path nowhere : {"/dev/null", "/dev/null/deeper"}) {
    EXPECT_FALSE(InstanceLock::acquire(nowhere));
    EXPECT_EQ(InstanceLock::obstacle(nowhere), std::errc::not_a_directory) << nowhere;
  }
  EXPECT_EQ(InstanceLock::obstacle("/proc/nothing/made"), std::errc::no_such_file_or_directory);
}

TEST_F(InstanceLockTest, of_one_name_does_not_block_another) {
  const auto work = InstanceLock::acquire(directory.path());
  const auto other = InstanceLock::acquire(directory.path(), "agent.lock");
  EXPECT_TRUE(work);
  EXPECT_TRUE(other);
  EXPECT_FALSE(InstanceLock::acquire(directory.path(), "agent.lock"));
}

TEST_F(InstanceLockTest, ends_with_its_process) {
  const pid_t other = fork();
  if (other == 0) {
    const auto held = InstanceLock::acquire(directory.path());
    raise(held ? SIGKILL : SIGTERM);
  }
  int status = 0;
  ASSERT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
  EXPECT_TRUE(InstanceLock::acquire(directory.path()));
}

TEST_F(InstanceLockTest, needs_a_directory) {
  EXPECT_FALSE(InstanceLock::acquire("/dev/null/x"));
  std::promise<bool> taken;
  InstanceLock::whenFree("/dev/null/x", [&](const Taken& lock) { taken.set_value(lock.has_value()); });
  EXPECT_FALSE(taken.get_future().get());
}

TEST_F(InstanceLockTest, goes_to_a_waiting_process_when_it_is_free) {
  auto first = InstanceLock::acquire(directory.path());
  auto waiting = wait();
  EXPECT_EQ(waiting.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  first.reset();
  EXPECT_TRUE(waiting.get());
}

TEST_F(InstanceLockTest, waited_for_in_a_deleted_file_is_taken_in_the_new_one) {
  const TemporaryDirectory elsewhere;
  auto first = InstanceLock::acquire(directory.path());
  auto second = InstanceLock::acquire(elsewhere.path());
  auto waiting = wait();
  // Renames in one step, so that the file exists at every moment, however late the other thread opens it.
  fs::rename(elsewhere.path() / InstanceLock::work, directory.path() / InstanceLock::work);
  first.reset();
  EXPECT_EQ(waiting.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  second.reset();
  EXPECT_TRUE(waiting.get());
}

TEST_F(InstanceLockTest, is_free_at_no_moment_of_a_hand_over) {
  auto first = InstanceLock::acquire(directory.path());
  auto waiting = wait();
  // A received descriptor is the same open file under another number.
  FileDescriptor sent = InstanceLock::handOver(std::move(*first));
  FileDescriptor received(fcntl(sent.get(), F_DUPFD_CLOEXEC, 0));
  first.reset();
  sent = FileDescriptor();
  EXPECT_FALSE(InstanceLock::acquire(directory.path()));
  auto second = InstanceLock::receive(std::move(received), directory.path());
  ASSERT_TRUE(second);
  EXPECT_FALSE(InstanceLock::acquire(directory.path()));
  second.reset();
  EXPECT_TRUE(waiting.get());
}

TEST_F(InstanceLockTest, is_not_received_from_another_file) {
  const TemporaryDirectory elsewhere;
  auto foreign = InstanceLock::acquire(elsewhere.path());
  EXPECT_FALSE(InstanceLock::receive(InstanceLock::handOver(std::move(*foreign)), directory.path()));
  EXPECT_FALSE(InstanceLock::receive(FileDescriptor(), directory.path()));
}

TEST_F(InstanceLockTest, is_not_received_while_another_process_holds_it) {
  const auto held = InstanceLock::acquire(directory.path());
  const fs::path file = directory.path() / InstanceLock::work;
  EXPECT_FALSE(
      InstanceLock::receive(FileDescriptor(open(file.c_str(), O_RDWR | O_CLOEXEC)), directory.path()));
}

}  // namespace
}  // namespace quillmar
