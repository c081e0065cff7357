#pragma once

#include <memory>
#include <string>

#include "sandbox/http/certificates.h"
#include "sandbox/http/message.h"
#include "sandbox/outcome.h"

namespace quillmar::sandbox {

// Serves HTTP/1.1 on a port of one address and HTTPS (HTTP/1.1 and HTTP/2) on another. The handler runs on
// several worker threads at once.
class HttpServer {
 public:
  struct Settings {
    std::string address = "127.0.0.1";
    int port = 0;  // 0: any free port
    int tlsPort = 0;
    std::size_t workers = 4;
  };

  // Binds both ports. Requests are answered only after `open`, because the handler needs to know the ports.
  static Outcome<std::unique_ptr<HttpServer>> bind(const Settings& settings,
                                                   const Certificates& certificates);
  ~HttpServer();

  void open(Handler handler);

  // Answers with `Delivery::held` wait while `holding` is true.
  void hold(bool holding);

  int port() const;
  int tlsPort() const;

 private:
  class Implementation;
  explicit HttpServer(std::unique_ptr<Implementation> implementation);

  std::unique_ptr<Implementation> implementation_;
};

}  // namespace quillmar::sandbox
