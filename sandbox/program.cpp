#include "sandbox/program.h"

#include <charconv>
#include <csignal>
#include <functional>
#include <iostream>
#include <map>

#include "sandbox/http/client.h"
#include "sandbox/json.h"
#include "sandbox/service.h"

namespace quillmar::sandbox {
namespace {

constexpr int defaultPort = 8790;
constexpr int defaultTlsPort = 8791;

constexpr const char* usage =
    "usage: quillmar-sandbox [--port 8790] [--tls-port 8791] [--data DIR | --memory] [--seed demo|empty]\n"
    "                        [--traffic] [--upstream ADDRESS]\n"
    "       quillmar-sandbox approve CODE [--port 8790]\n";

// The words of a command line: what stands by itself, and options with their values.
struct CommandLine {
  std::vector<std::string> words;
  std::map<std::string, std::string> options;
};

std::optional<CommandLine> parse(const std::vector<std::string>& given) {
  static const std::map<std::string, bool> takesValue{
      {"--port", true}, {"--tls-port", true}, {"--data", true},     {"--memory", false},
      {"--seed", true}, {"--traffic", false}, {"--upstream", true}, {"--help", false}};
  CommandLine line;
  for (auto word = given.begin(); word != given.end(); ++word) {
    if (!word->starts_with('-')) {
      line.words.push_back(*word);
      continue;
    }
    const auto known = takesValue.find(*word);
    if (known == takesValue.end()) return std::nullopt;
    auto& value = line.options[*word];
    if (!known->second) continue;
    if (++word == given.end()) return std::nullopt;
    value = *word;
  }
  return line;
}

std::optional<std::string> value(const CommandLine& line, const std::string& option) {
  const auto found = line.options.find(option);
  return found == line.options.end() ? std::nullopt : std::optional{found->second};
}

std::optional<int> port(const CommandLine& line, const std::string& option, int otherwise) {
  const auto text = value(line, option);
  if (!text) return otherwise;
  int number = -1;
  const auto read = std::from_chars(text->data(), text->data() + text->size(), number);
  const bool whole = read.ec == std::errc{} && read.ptr == text->data() + text->size();
  return whole && number >= 0 && number <= 65535 ? std::optional{number} : std::nullopt;
}

int complain(const std::string& text) {
  std::cerr << "quillmar-sandbox: " << text << '\n';
  return 1;
}

int misused() {
  std::cerr << usage;
  return 2;
}

int approve(const CommandLine& line) {
  const auto number = port(line, "--port", defaultPort);
  if (line.words.size() != 2 || !number) return misused();
  const auto answer = post(*number, "/sandbox/approve", Json{{"enrollment_code", line.words[1]}}.dump());
  if (!answer) return complain(answer.failure());
  const auto body = Json::parse(answer->body, nullptr, false);
  if (answer->status >= 400) return complain(body.is_object() ? body.value("error", "Refused.") : "Refused.");
  std::cout << body.value("message", "") << '\n';
  return 0;
}

std::optional<Options> optionsFrom(const CommandLine& line) {
  const auto plainPort = port(line, "--port", defaultPort);
  const auto tlsPort = port(line, "--tls-port", defaultTlsPort);
  const auto seed = value(line, "--seed").value_or("empty");
  const bool both = line.options.contains("--data") && line.options.contains("--memory");
  if (!plainPort || !tlsPort || both || (seed != "demo" && seed != "empty")) return std::nullopt;
  return Options{.port = *plainPort,
                 .tlsPort = *tlsPort,
                 .data = value(line, "--data"),
                 .seed = seed == "demo" ? Seed::demo : Seed::empty,
                 .traffic = line.options.contains("--traffic"),
                 .upstream = value(line, "--upstream")};
}

int serve(const CommandLine& line) {
  const auto options = optionsFrom(line);
  if (!options) return misused();

  // Blocked before any thread starts, so that the signals wait for the sigwait below.
  sigset_t endings;
  sigemptyset(&endings);
  sigaddset(&endings, SIGTERM);
  sigaddset(&endings, SIGINT);
  sigaddset(&endings, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &endings, nullptr);
  std::signal(SIGPIPE, SIG_IGN);

  const auto service = Service::start(*options);
  if (!service) return complain(service.failure());
  std::cout << "quillmar-sandbox " << (*service)->url() << ' ' << (*service)->secureUrl()
            << " ca=" << (*service)->caFile().string() << std::endl;
  int received = 0;
  sigwait(&endings, &received);
  return 0;
}

}  // namespace

int runProgram(const std::vector<std::string>& words) {
  const auto line = parse(words);
  if (!line) return misused();
  if (line->options.contains("--help")) {
    std::cout << usage;
    return 0;
  }
  if (line->words.empty()) return serve(*line);
  return line->words[0] == "approve" ? approve(*line) : misused();
}

}  // namespace quillmar::sandbox
