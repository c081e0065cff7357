#pragma once

#include <memory>

#include "sandbox/http/certificates.h"
#include "sandbox/http/message.h"
#include "sandbox/outcome.h"

namespace quillmar::sandbox {

// Serves HTTP/1.1 on one loopback port and HTTPS (HTTP/1.1 and HTTP/2) on another. The handler runs on worker
// threads, several at once.
class HttpServer {
 public:
  struct Settings {
    int port = 0;  // 0: any free one
    int tlsPort = 0;
    std::size_t workers = 4;
  };

  // Binds both ports. No request is answered before `open`, so that the handler may still learn the ports.
  static Outcome<std::unique_ptr<HttpServer>> bind(const Settings& settings,
                                                   const Certificates& certificates);
  ~HttpServer();

  void open(Handler handler);

  // Whether answers that ask to be held are; no longer holding lets all of them go.
  void hold(bool holding);

  int port() const;
  int tlsPort() const;

 private:
  class Implementation;
  explicit HttpServer(std::unique_ptr<Implementation> implementation);

  std::unique_ptr<Implementation> implementation_;
};

}  // namespace quillmar::sandbox
