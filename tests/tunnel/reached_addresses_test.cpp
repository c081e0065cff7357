#include "tunnel/service/reached_addresses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "testing/temporary_directory.h"

namespace quillmar::tunnel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace ip = boost::asio::ip;

TEST(TunnelReachedAddresses, are_read_back_and_readable_by_their_owner_only) {
  const TemporaryDirectory directory;
  const auto kept = directory.path() / "kept";
  {
    ReachedAddresses addresses(kept);
    EXPECT_THAT(addresses.all(), IsEmpty());
    EXPECT_EQ(addresses.keep("doh.example", ip::make_address("192.0.2.7")), "");
    EXPECT_EQ(addresses.keep("doh.example", ip::make_address("2001:db8::1")), "");
  }
  EXPECT_THAT(ReachedAddresses(kept).all(),
              ElementsAre(testing::Pair("doh.example", ip::make_address("2001:db8::1"))));
  EXPECT_EQ(std::filesystem::status(kept).permissions(), std::filesystem::perms(0700));
  EXPECT_EQ(std::filesystem::status(kept / "addresses").permissions(), std::filesystem::perms(0600));
}

TEST(TunnelReachedAddresses, that_are_malformed_are_ignored) {
  const TemporaryDirectory directory;
  std::ofstream(directory.path() / "addresses") << "a.example nonsense\nb.example 192.0.2.7\nc.example";
  EXPECT_THAT(ReachedAddresses(directory.path()).all(),
              ElementsAre(testing::Pair("b.example", ip::make_address("192.0.2.7"))));
}

TEST(TunnelReachedAddresses, that_cannot_be_written_are_reported) {
  ReachedAddresses addresses("/dev/null/kept");
  EXPECT_EQ(addresses.keep("doh.example", ip::make_address("192.0.2.7")),
            "/dev/null/kept/addresses can't be written: Not a directory");
}

}  // namespace
}  // namespace quillmar::tunnel
