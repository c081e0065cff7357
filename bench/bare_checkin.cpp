// The minimal program for the agent's work: settings in SQLite and one check-in by libcurl. Then it waits.
// Usage: bare_checkin DATABASE URL CA_FILE DEVICE_ID [CA_DIRECTORY]

#include <curl/curl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace {

std::size_t take(char* bytes, std::size_t size, std::size_t count, void* body) {
  static_cast<std::string*>(body)->append(bytes, size * count);
  return size * count;
}

bool openSettings(const char* path, sqlite3*& database) {
  return sqlite3_open(path, &database) == SQLITE_OK &&
         sqlite3_exec(database, "PRAGMA journal_mode=WAL; SELECT * FROM settings", nullptr, nullptr,
                      nullptr) == SQLITE_OK;
}

bool checkIn(CURL* handle, const std::string& url, const char* caFile, const char* caDirectory,
             const std::string& deviceId) {
  const std::string body = R"({"device_id":")" + deviceId + R"(","device_type":"ios"})";
  std::string answer;
  curl_slist* const headers = curl_slist_append(nullptr, "Content-Type: application/json");
  curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle, CURLOPT_CAINFO, caFile);
  curl_easy_setopt(handle, CURLOPT_CAPATH, caDirectory);
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body.c_str());
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &take);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &answer);
  long status = 0;
  const bool isDone = curl_easy_perform(handle) == CURLE_OK &&
                      curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status) == CURLE_OK;
  curl_slist_free_all(headers);
  return isDone && status == 200;
}

}  // namespace

int main(int count, char** words) {
  sqlite3* database = nullptr;
  if (count < 5 || !openSettings(words[1], database)) {
    return 2;
  }
  CURL* const handle = curl_easy_init();
  const char* const caDirectory = count > 5 ? words[5] : nullptr;
  if (!checkIn(handle, std::string(words[2]) + "/api/v1/device/checkin", words[3], caDirectory, words[4])) {
    return 1;
  }
  std::puts("The service is reached.");
  std::fflush(stdout);
  pause();
  curl_easy_cleanup(handle);
  sqlite3_close(database);
  return 0;
}
