#include "client/network_error.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>
#include <utility>

#include "foundation/error.h"

namespace quillmar {
namespace {

TEST(NetworkError, each_case_has_its_message) {
  const auto sentences = std::to_array<std::pair<NetworkError, std::string_view>>({
      {NetworkError::serverError("No such luck"), "No such luck"},
      {NetworkError::serverError(""), ""},
      {NetworkError::invalidResponse(), "Invalid response from server"},
      {NetworkError::unauthorized(), "Please log in again"},
      {NetworkError::forbidden(), "Access denied"},
      {NetworkError::notFound(), "Resource not found"},
      {NetworkError::encodingError(), "Failed to encode request"},
      {NetworkError::noRegionConfigured(), "No region configured. Please select a region first."},
  });
  for (const auto& [error, sentence] : sentences) {
    EXPECT_EQ(error.errorDescription(), sentence);
    EXPECT_EQ(Error(error).localizedDescription(), sentence);
  }
}

TEST(NetworkError, errors_are_equal_if_case_and_message_are) {
  EXPECT_EQ(NetworkError::serverError("a"), NetworkError::serverError("a"));
  EXPECT_NE(NetworkError::serverError("a"), NetworkError::serverError("b"));
  EXPECT_NE(NetworkError::unauthorized(), NetworkError::forbidden());
  // A server's message may equal the client's; the errors still differ.
  EXPECT_NE(NetworkError::serverError("Please log in again"), NetworkError::unauthorized());
}

}  // namespace
}  // namespace quillmar
