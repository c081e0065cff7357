#include "client/network_error.h"

namespace quillmar {

std::string NetworkError::errorDescription() const {
  switch (which) {
    case Case::serverError:
      return message;
    case Case::invalidResponse:
      return "Invalid response from server";
    case Case::unauthorized:
      return "Please log in again";
    case Case::forbidden:
      return "Access denied";
    case Case::notFound:
      return "Resource not found";
    case Case::encodingError:
      return "Failed to encode request";
    case Case::noRegionConfigured:
      return "No region configured. Please select a region first.";
  }
  return {};
}

}  // namespace quillmar
