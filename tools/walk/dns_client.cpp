#include "tools/walk/dns_client.h"

#include <QByteArray>
#include <QProcess>
#include <QStringList>
#include <sstream>

#include "ui/bridge/shown_text.h"

namespace quillmar {
namespace {

constexpr auto recursionDesired = "\x01\x00";
constexpr auto oneQuestion = "\x00\x01\x00\x00\x00\x00\x00\x00";
constexpr auto addressOfInternet = "\x00\x01\x00\x01";

// An RFC 1035 query. Its id is 0, as RFC 8484 recommends.
QByteArray question(const std::string& name) {
  QByteArray message(2, '\0');
  message.append(recursionDesired, 2).append(oneQuestion, 8);
  std::istringstream labels(name);
  for (std::string label; std::getline(labels, label, '.');) {
    message.append(static_cast<char>(label.size())).append(QByteArray::fromStdString(label));
  }
  return message.append('\0').append(addressOfInternet, 4);
}

}  // namespace

bool askOverHttps(const std::string& endpoint, const std::string& name, const std::string& caFile) {
  QProcess curl;
  QStringList words{
      "--silent",      "--fail", "--max-time", "10", "--header", "Content-Type: application/dns-message",
      "--data-binary", "@-"};
  if (!caFile.empty()) {
    words << "--cacert" << ui::exactText(caFile);
  }
  curl.start("curl", words << ui::exactText(endpoint));
  curl.write(question(name));
  curl.closeWriteChannel();
  return curl.waitForFinished() && curl.exitStatus() == QProcess::NormalExit && curl.exitCode() == 0;
}

}  // namespace quillmar
