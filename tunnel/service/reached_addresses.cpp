#include "tunnel/service/reached_addresses.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <system_error>

#include "tunnel/link/open_file.h"

namespace quillmar::tunnel {
namespace {

constexpr const char* fileName = "addresses";
// An endpoint's host hardly ever changes.
constexpr std::size_t mostHosts = 16;
constexpr mode_t ownersDirectory = 0700;
constexpr mode_t ownersFile = 0600;

}  // namespace

ReachedAddresses::ReachedAddresses(std::filesystem::path directory) : directory_(std::move(directory)) {
  std::ifstream file(directory_ / fileName);
  std::string host;
  std::string text;
  while (addresses_.size() < mostHosts && file >> host >> text) {
    boost::system::error_code error;
    const auto address = boost::asio::ip::make_address(text, error);
    if (!error) {
      addresses_[host] = address;
    }
  }
}

std::string ReachedAddresses::keep(const std::string& host, const boost::asio::ip::address& address) {
  if (addresses_.size() >= mostHosts && !addresses_.contains(host)) {
    addresses_.clear();
  }
  addresses_[host] = address;
  return write();
}

// Writes another file and renames it, because a partly written file could contain a wrong address.
std::string ReachedAddresses::write() const {
  std::string text;
  for (const auto& [host, address] : addresses_) {
    text += host + ' ' + address.to_string() + '\n';
  }
  ::mkdir(directory_.c_str(), ownersDirectory);
  const auto path = directory_ / fileName;
  const auto draft = directory_ / (std::string(fileName) + ".new");
  const OpenFile file(
      ::open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, ownersFile));
  errno = file ? 0 : errno;
  const bool isKept = file &&
                      ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                      ::fsync(file.get()) == 0 && ::rename(draft.c_str(), path.c_str()) == 0;
  return isKept ? std::string()
                : path.string() + " can't be written: " + std::system_category().message(errno);
}

}  // namespace quillmar::tunnel
