#pragma once

#include <QProcess>
#include <filesystem>
#include <optional>
#include <string>

namespace quillmar {

// The stand-in service, run beside the window for as long as this lives.
class SandboxProcess {
 public:
  struct Addresses {
    std::string url;
    std::string secureUrl;
    std::string caFile;
  };

  // Nothing, with a line on the standard error, when it does not come up.
  std::optional<Addresses> start(const std::filesystem::path& dataDirectory);
  // What a person types to be the parent, without the code.
  std::string approval() const;

  SandboxProcess() = default;
  SandboxProcess(const SandboxProcess&) = delete;
  SandboxProcess& operator=(const SandboxProcess&) = delete;
  ~SandboxProcess();

 private:
  QProcess process_;
};

}  // namespace quillmar
