#pragma once

#include <QProcess>
#include <filesystem>
#include <optional>
#include <string>

namespace quillmar {

// The stand-in service, running for the lifetime of this object.
class SandboxProcess {
 public:
  struct Addresses {
    std::string url;
    std::string secureUrl;
    std::string caFile;
  };

  // nullopt, with a line on the standard error, if it does not start.
  std::optional<Addresses> start(const std::filesystem::path& dataDirectory);
  // The command that completes an enrollment as a parent would, without the code at its end.
  std::string approval() const;

  SandboxProcess() = default;
  SandboxProcess(const SandboxProcess&) = delete;
  SandboxProcess& operator=(const SandboxProcess&) = delete;
  ~SandboxProcess();

 private:
  QProcess process_;
};

}  // namespace quillmar
