#include <vector>

#include "tests/sandbox/support/household.h"
#include "tests/sandbox/support/raw_connection.h"

namespace quillmar::sandbox::test {
namespace {

constexpr const char* init = "/enrollment/init";

class BadInputTest : public ServiceTest {
 protected:
  // Every test ends with a good request that must be answered.
  ~BadInputTest() override {
    EXPECT_EQ(ask("POST", init, {}, R"({"device_id":"A","device_name":"B","device_type":"ios"})").status,
              200);
  }
  std::string answerTo(const std::string& bytes) {
    RawConnection connection{service().port()};
    connection.send(bytes);
    return connection.readAnswer();
  }
};

TEST_F(BadInputTest, one_refusal_names_all_missing_keys_and_wrong_types) {
  EXPECT_EQ(ask("POST", init, {}, "{}").error(),
            "The request lacks “device_id”, “device_name” and “device_type”.");
  EXPECT_EQ(ask("POST", init, {}, R"({"device_id":null,"device_name":5,"device_type":["ios"]})").error(),
            "The request lacks “device_id”; “device_name” has to be a text; “device_type” has to be a text.");
}

TEST_F(BadInputTest, a_body_that_is_not_a_json_object_is_refused) {
  for (const std::string body :
       {" ", "{", "[]", "5", "null", "{\"device_id\":\"A\",}", "{}{}", "\xc3\x28",
        "{\"device_id\":\"\xc3\x28\"}", "{'device_id':'A'}", "{\"device_id\":NaN}"}) {
    const auto reply = ask("POST", init, {}, body);
    EXPECT_EQ(reply.status, 400) << body;
    EXPECT_NE(reply.error(), "") << body;
  }
  EXPECT_EQ(ask("POST", init).status, 400) << "no body at all";
}

TEST_F(BadInputTest, an_endlessly_nested_body_is_refused) {
  EXPECT_EQ(ask("POST", init, {}, std::string(900'000, '[')).status, 400);
  std::string nested = R"({"device_id":"A","device_name":"B","device_type":)";
  nested += std::string(200'000, '[') + std::string(200'000, ']') + "}";
  EXPECT_EQ(ask("POST", init, {}, nested).status, 400);
}

TEST_F(BadInputTest, unknown_keys_are_ignored_and_a_nul_is_a_character_like_any_other) {
  const auto reply =
      ask("POST", init, {},
          R"({"device_id":"A\u0000","device_name":"\u0000","device_type":"ios","more":[1,{}]})");
  EXPECT_EQ(reply.status, 200);
}

TEST_F(BadInputTest, one_megabyte_is_the_largest_body) {
  const auto bodyOf = [](std::size_t size) {
    const std::string start = R"({"device_id":"A","device_name":"B","device_type":"ios","more":")";
    return start + std::string(size - start.size() - 2, 'x') + "\"}";
  };
  for (const std::string version : {"--http1.1", "--http2"}) {
    EXPECT_EQ(ask("POST", init, {}, bodyOf(1'000'000), {version}).status, 200) << version;
    const auto refused = ask("POST", init, {}, bodyOf(1'000'001), {version});
    EXPECT_EQ(refused.status, 413) << version;
    EXPECT_NE(refused.error(), "") << version;
  }
  EXPECT_EQ(ask("POST", init, {}, bodyOf(1'000'001), {"--http1.1", "--header", "Transfer-Encoding: chunked"})
                .status,
            413);
  EXPECT_EQ(
      ask("POST", init, {}, bodyOf(1'000'001), {"--http1.1", "--header", "Expect: 100-continue"}).status,
      413);
  EXPECT_EQ(
      ask("POST", init, {}, bodyOf(1'000'000), {"--http1.1", "--header", "Expect: 100-continue"}).status,
      200);
}

TEST_F(BadInputTest, an_unknown_path_is_a_404) {
  for (const std::string path : {"/", "/api", "/api/v1", "/api/v1/", "/api/v1/nothing", "/api/v2/children",
                                 "/api/v1/children/", "/api/v1//children", "/API/v1/children", "/sandbox",
                                 "/api/v1/enrollment/status/", "/dns-query", "/dns-query/"}) {
    const auto reply = curl({"--path-as-is", service().secureUrl() + path});
    EXPECT_EQ(reply.status, 404) << path;
    EXPECT_NE(reply.error(), "") << path;
  }
}

TEST_F(BadInputTest, a_path_with_other_methods_lists_them) {
  const auto reply = ask("PATCH", "/children/x", {}, "{}", {"--include", "--http1.1"});
  EXPECT_EQ(reply.status, 405);
  EXPECT_THAT(reply.body, testing::HasSubstr("Allow: GET, PUT, DELETE\r\n"));
  EXPECT_THAT(reply.body, testing::HasSubstr(R"({"error":)"));
  EXPECT_EQ(ask("GET", init).status, 405);
  EXPECT_EQ(ask("BREW", init).status, 405);
  EXPECT_EQ(curl({"--head", service().secureUrl() + "/api/v1/children"}).status, 405);
  EXPECT_EQ(curl({"--head", "--http1.1", service().secureUrl() + "/api/v1/children"}).status, 405);
}

TEST_F(BadInputTest, an_invalid_escape_is_refused) {
  for (const std::string path : {"/children/%zz", "/children/%4", "/children/%"}) {
    EXPECT_EQ(ask("GET", path, givenAccount(path.substr(10) + "@example.com")).status, 400) << path;
  }
}

TEST_F(BadInputTest, an_id_is_a_text_like_any_other) {
  const auto token = givenAccount("ann@example.com");
  for (const std::string& id :
       std::vector<std::string>{"'%20OR%201=1--", "%00", "..", "%2e%2e", "%ff%fe", std::string(3000, 'x')}) {
    EXPECT_EQ(ask("GET", "/children/" + id, token, {}, {"--path-as-is"}).status, 404) << id;
  }
}

TEST_F(BadInputTest, malformed_http_gets_an_error_and_a_closed_connection) {
  for (const std::string& bytes :
       {std::string{"HELLO\r\n\r\n"}, std::string{"GET / HTTP/9.9\r\n\r\n"},
        std::string{"GET\x01/ HTTP/1.1\r\n\r\n"},
        std::string{"POST / HTTP/1.1\r\nContent-Length: -5\r\n\r\n"},
        std::string{"POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n"},
        "GET / HTTP/1.1\r\nX: " + std::string(40'000, 'x') + "\r\n\r\n", std::string(100, '\x16')}) {
    EXPECT_EQ(statusOf(answerTo(bytes)), 400) << bytes.substr(0, 40);
  }
}

TEST_F(BadInputTest, a_target_that_is_not_a_path_is_refused) {
  for (const std::string target : {"*", "http://other.example/api/v1/children", "children"}) {
    EXPECT_EQ(statusOf(answerTo("GET " + target + " HTTP/1.1\r\nHost: x\r\n\r\n")), 400) << target;
  }
}

TEST_F(BadInputTest, requests_may_follow_one_another_without_waiting) {
  RawConnection connection{service().port()};
  const std::string get = "GET /api/v1/enrollment/status/nobody HTTP/1.1\r\nHost: x\r\n\r\n";
  connection.send(get + get + get);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(statusOf(connection.readAnswer()), 404);
}

TEST_F(BadInputTest, a_client_that_disconnects_early_does_no_harm) {
  for (const std::string bytes :
       {"", "POST", "POST /api/v1/enrollment/init HTTP/1.1\r\nContent-Length: 500\r\n\r\n{\"device_id\":"}) {
    RawConnection connection{service().port()};
    EXPECT_TRUE(connection.send(bytes));
  }
  RawConnection{service().tlsPort()}.send("\x16\x03\x01");
}

TEST_F(BadInputTest, plain_http_on_the_tls_port_gets_no_answer) {
  RawConnection connection{service().tlsPort()};
  connection.send("GET /api/v1/children HTTP/1.1\r\nHost: x\r\n\r\n");
  EXPECT_EQ(connection.readToEnd().find("HTTP/1.1 2"), std::string::npos);
}

TEST_F(BadInputTest, a_request_to_close_is_answered_and_the_connection_closed) {
  RawConnection connection{service().port()};
  connection.send("GET /api/v1/children HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
  EXPECT_EQ(statusOf(connection.readToEnd()), 401);
}

}  // namespace
}  // namespace quillmar::sandbox::test
