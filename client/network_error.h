#pragma once

#include <string>

namespace quillmar {

// Errors of the service client itself. Errors of the transport and of the coder are passed on unchanged.
struct NetworkError {
  enum class Case {
    serverError,
    invalidResponse,
    unauthorized,
    forbidden,
    notFound,
    encodingError,
    noRegionConfigured
  };

  Case which = Case::invalidResponse;
  std::string message;  // of serverError only: the service's message

  static NetworkError serverError(std::string message) { return {Case::serverError, std::move(message)}; }
  static NetworkError invalidResponse() { return {Case::invalidResponse, {}}; }
  static NetworkError unauthorized() { return {Case::unauthorized, {}}; }
  static NetworkError forbidden() { return {Case::forbidden, {}}; }
  static NetworkError notFound() { return {Case::notFound, {}}; }
  static NetworkError encodingError() { return {Case::encodingError, {}}; }
  static NetworkError noRegionConfigured() { return {Case::noRegionConfigured, {}}; }

  std::string errorDescription() const;
  std::string localizedDescription() const { return errorDescription(); }
  friend bool operator==(const NetworkError&, const NetworkError&) = default;
};

}  // namespace quillmar
