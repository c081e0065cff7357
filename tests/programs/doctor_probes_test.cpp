#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "platform/common/curl_http_session.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/settings.h"
#include "programs/doctor/doctor.h"
#include "programs/doctor/probes.h"
#include "sandbox/service.h"
#include "testing/memory_secure_items.h"
#include "testing/recording_log.h"
#include "testing/temporary_directory.h"

namespace quillmar::doctor {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* type = "live.quillmar.quillmar.PacketTunnel";

TEST(DataFolder, may_be_missing_if_it_can_be_made) {
  const TemporaryDirectory directory;
  const fs::path folder = directory.path() / "share" / "quillmar";
  EXPECT_TRUE(lookAtDataFolder(folder).works);
  EXPECT_FALSE(fs::exists(folder.parent_path())) << "nothing is made";
  fs::create_directories(folder);
  EXPECT_EQ(lookAtDataFolder(folder).words, folder.string() + " can be written.");
}

TEST(DataFolder, that_can_not_be_used_is_named_with_the_cause) {
  const TemporaryDirectory directory;
  std::ofstream(directory.path() / "file") << "text";
  const auto inFile = lookAtDataFolder(directory.path() / "file" / "quillmar");
  EXPECT_FALSE(inFile.works);
  EXPECT_THAT(inFile.words, HasSubstr("/file/quillmar can't be used: "));
  EXPECT_THAT(inFile.words, HasSubstr("/file is no folder. "));

  const fs::path disk = directory.path() / "disk";
  fs::create_directory(disk);
  if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k,mode=0700") != 0) {
    GTEST_SKIP() << "only root can have a small disk";
  }
  std::ofstream(disk / "filler") << std::string(std::size_t{128} * 1024, 'x');
  EXPECT_THAT(lookAtDataFolder(disk / "quillmar").words, HasSubstr("can't be used: the disk is full. "));
  ::mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
  EXPECT_THAT(lookAtDataFolder(disk).words, HasSubstr("can't be used: the disk is read-only. "));
  ::umount2(disk.c_str(), MNT_DETACH);
}

// The two directories for tunnel programs: the administrator's before the system's.
struct Registrations : testing::Test {
  Registrations() {
    fs::create_directory(etc);
    fs::create_directory(lib);
    makeProgram(fs::perms::owner_all);
  }
  void makeProgram(fs::perms permissions) {
    std::ofstream(program) << "#!/bin/sh\n";
    fs::permissions(program, permissions);
  }
  void write(const fs::path& file, const std::string& text) { std::ofstream(file) << text; }
  std::string registration() const {
    return std::string("[VPN Connection]\nname=quillmar\nservice=") + type + "\nprogram=" + program.string() +
           "\n";
  }
  Finding look() { return lookAtTunnelProgram({etc, lib}, type); }

  const TemporaryDirectory directory;
  const fs::path etc = directory.path() / "etc";
  const fs::path lib = directory.path() / "lib";
  const fs::path program = directory.path() / "tunnel-program";
};

TEST_F(Registrations, a_registered_program_is_found_in_either_directory) {
  write(lib / "quillmar.name", registration());
  EXPECT_TRUE(look().works) << look().words;
  EXPECT_EQ(look().words, program.string() + " is registered.");
  fs::rename(lib / "quillmar.name", etc / "quillmar.name");
  EXPECT_TRUE(look().works) << look().words;
}

TEST_F(Registrations, without_one_both_directories_are_named) {
  EXPECT_FALSE(look().works);
  EXPECT_EQ(look().words, std::string("none is registered for ") + type + " in " + etc.string() + " or " +
                              lib.string() + ". Install the tunnel program.");
}

TEST_F(Registrations, other_services_files_and_groups_do_not_count) {
  write(lib / "other.name", "[VPN Connection]\nservice=other.tunnel\nprogram=/bin/true\n");
  write(lib / "quillmar.name.bak", registration());
  write(lib / "gnome.name", std::string("[GNOME]\nservice=") + type + "\nprogram=" + program.string() + "\n");
  write(lib / "remark.name", std::string("[VPN Connection]\n#service=") + type + "\n");
  EXPECT_FALSE(look().works);
}

TEST_F(Registrations, a_program_that_is_missing_or_not_executable_is_named) {
  write(etc / "quillmar.name", registration());
  makeProgram(fs::perms::owner_read);
  EXPECT_FALSE(look().works);
  EXPECT_THAT(look().words, HasSubstr("names “" + program.string() + "”, which can't be executed"));
  fs::remove(program);
  EXPECT_FALSE(look().works);
  fs::create_directory(program);
  EXPECT_FALSE(look().works) << "a directory is no program";
}

TEST_F(Registrations, a_file_without_a_program_does_not_count_but_one_with_spaces_does) {
  write(lib / "quillmar.name", std::string("[VPN Connection]\nservice=") + type + "\n");
  EXPECT_FALSE(look().works);
  write(lib / "quillmar.name", std::string("# comment\n\n[ other ]\n[VPN Connection]\n service = ") + type +
                                   " \n program = " + program.string() + " \n");
  EXPECT_TRUE(look().works) << look().words;
}

TEST(DoctorsCamera, is_missing_if_there_is_no_device) {
  const TemporaryDirectory directory;
  std::ofstream(directory.path() / "audio0") << "";
  EXPECT_FALSE(lookAtCamera(directory.path()).works);
  EXPECT_THAT(lookAtCamera(directory.path()).words, StartsWith("none is connected."));
  EXPECT_FALSE(lookAtCamera(directory.path() / "nowhere").works);
}

TEST(DoctorsCamera, works_if_any_device_can_be_opened_and_otherwise_says_why_not) {
  const TemporaryDirectory directory;
  fs::create_symlink("nowhere", directory.path() / "video0");
  EXPECT_FALSE(lookAtCamera(directory.path()).works);
  EXPECT_THAT(lookAtCamera(directory.path()).words,
              HasSubstr("video0 can't be opened (No such file or directory)"));
  std::ofstream(directory.path() / "video1") << "";
  EXPECT_TRUE(lookAtCamera(directory.path()).works);
  EXPECT_THAT(lookAtCamera(directory.path()).words, HasSubstr("video1 can be opened"));
}

// A keyring whose answers the test sets.
class ToldKeyring final : public SecureItemStore {
 public:
  ToldKeyring(SecureItemStatus adding, SecureItemStatus removing) : adding_(adding), removing_(removing) {}
  SecureItemStatus add(std::string_view, std::string_view, std::string_view) override { return adding_; }
  Found copyMatching(std::string_view, std::string_view) override { return {}; }
  SecureItemStatus remove(std::string_view, std::string_view) override { return removing_; }

 private:
  const SecureItemStatus adding_;
  const SecureItemStatus removing_;
};

TEST(DoctorsCameraModule, is_named_or_its_package_is_suggested) {
  EXPECT_EQ(lookAtCameraModule("/usr/lib/quillmar/quillmar-camera.so").words,
            "/usr/lib/quillmar/quillmar-camera.so is installed.");
  const auto absent = lookAtCameraModule({});
  EXPECT_FALSE(absent.works);
  EXPECT_THAT(absent.words, testing::EndsWith("Install quillmar-camera."));
}

TEST(DoctorsKeyring, works_and_is_left_unchanged) {
  MemorySecureItems keyring;
  EXPECT_TRUE(lookAtKeyring(keyring).works);
  EXPECT_TRUE(lookAtKeyring(keyring).works);
  EXPECT_EQ(keyring.copyMatching("live.quillmar.doctor", "probe").status, SecureItemStatus::notFound);
}

TEST(DoctorsKeyring, says_why_it_does_not_work) {
  using Status = SecureItemStatus;
  const auto words = [](Status adding, Status removing) {
    ToldKeyring keyring(adding, removing);
    const auto finding = lookAtKeyring(keyring);
    EXPECT_FALSE(finding.works);
    return finding.words;
  };
  EXPECT_THAT(words(Status::failed, Status::failed), StartsWith("no keyring service answers."));
  EXPECT_THAT(words(Status::interactionNotAllowed, Status::notFound), StartsWith("is locked."));
  EXPECT_THAT(words(Status::success, Status::interactionNotAllowed), StartsWith("is locked."));
  EXPECT_THAT(words(Status::failed, Status::notFound), StartsWith("takes nothing in."));
  EXPECT_THAT(words(Status::success, Status::notFound), StartsWith("keeps what it should forget."));
}

TEST(DoctorsBus, says_that_no_service_answers) {
  const std::string nowhere = "unix:path=/nowhere/bus";
  EXPECT_FALSE(lookAtNetworkManager(nowhere).works);
  EXPECT_THAT(lookAtNetworkManager(nowhere).words,
              HasSubstr("does not answer (The system's message bus does not answer.)"));
  EXPECT_FALSE(lookAtFingerprintReader(nowhere).works);
  EXPECT_THAT(lookAtFingerprintReader(nowhere).words,
              HasSubstr("can't be asked (The system's message bus does not answer.)"));
}

// The doctor and the stand-in service over the network.
struct DoctorsService : testing::Test {
  explicit DoctorsService(sandbox::Clock clock = sandbox::systemClock())
      : service(std::move(*sandbox::Service::start({}, std::move(clock)))) {}

  ServiceFinding look() {
    CurlHttpSession http(CurlHttpSession::Options{.extraCaFile = service->caFile().string()});
    return lookAtService(http, service->secureUrl() + "/api/v1");
  }

  const std::unique_ptr<sandbox::Service> service;
};

TEST_F(DoctorsService, works_if_it_answers_over_tls_and_the_clocks_agree) {
  const auto finding = look();
  EXPECT_TRUE(finding.answer.works);
  EXPECT_EQ(finding.answer.words, service->secureUrl() + "/api/v1 answers, over verified TLS.");
  ASSERT_TRUE(finding.clockLead);
  EXPECT_LT(std::chrono::abs(*finding.clockLead), std::chrono::minutes(1));
}

TEST_F(DoctorsService, reports_an_untrusted_certificate_in_the_transports_words) {
  CurlHttpSession http;
  const auto finding = lookAtService(http, service->secureUrl());
  EXPECT_FALSE(finding.answer.works);
  EXPECT_THAT(finding.answer.words,
              HasSubstr("can't be reached: The certificate for this server is invalid."));
  EXPECT_FALSE(finding.clockLead);
}

TEST_F(DoctorsService, a_server_error_is_a_failure_but_provides_the_time) {
  sandbox::Misbehaviour broken;
  broken.failEverything = true;
  service->misbehave(broken);
  const auto finding = look();
  EXPECT_FALSE(finding.answer.works);
  EXPECT_THAT(finding.answer.words, HasSubstr("fails, with status 5"));
  EXPECT_TRUE(finding.clockLead);
}

TEST_F(DoctorsService, reports_a_refused_connection_in_the_transports_words) {
  CurlHttpSession http;
  const auto finding = lookAtService(http, "https://127.0.0.1:1");
  EXPECT_FALSE(finding.answer.works);
  EXPECT_THAT(finding.answer.words, HasSubstr("Could not connect to the server."));
}

struct ServiceOfTheFuture : DoctorsService {
  ServiceOfTheFuture()
      : DoctorsService([] { return std::chrono::system_clock::now() + std::chrono::hours(1); }) {}
};

TEST_F(ServiceOfTheFuture, shows_that_this_machines_clock_is_behind) {
  ASSERT_TRUE(look().clockLead);
  EXPECT_LT(*look().clockLead, -std::chrono::minutes(59));
  EXPECT_GT(*look().clockLead, -std::chrono::minutes(61));
}

// The whole doctor, with an installation.
struct Doctor : DoctorsService {
  std::string report() {
    std::ostringstream output;
    isFit = examineMachine({.dataDirectory = data,
                            .service = service->secureUrl(),
                            .caFile = service->caFile().string(),
                            .keyring = hasWindow ? &keyring : nullptr},
                           output);
    return output.str();
  }
  void store(std::string_view key, const SettingValue& value) {
    RecordingLog log;
    SqliteSettingsStore(data, log).set(key, value);
  }

  const TemporaryDirectory directory;
  const fs::path data = directory.path() / "data";
  MemorySecureItems keyring;
  bool hasWindow = true;
  bool isFit = false;
};

TEST_F(Doctor, without_a_window_checks_a_childs_device) {
  hasWindow = false;
  EXPECT_THAT(report(), HasSubstr("a child's device needs."));
}

TEST_F(Doctor, checks_the_service_of_the_command_line_and_creates_no_installation) {
  EXPECT_THAT(report(), HasSubstr("works     Service: " + service->secureUrl() + "/api/v1 answers"));
  EXPECT_THAT(report(), HasSubstr("No role is chosen yet"));
  EXPECT_TRUE(isFit);
  EXPECT_FALSE(fs::exists(data));
}

TEST_F(Doctor, checks_the_service_that_the_installation_enrolled_with) {
  store(settings::deviceRole, std::string("parent"));
  store(settings::apiBaseURL, std::string("https://127.0.0.1:1"));
  EXPECT_THAT(report(), HasSubstr("MISSING   Service: https://127.0.0.1:1/api/v1 can't be reached"));
  EXPECT_FALSE(isFit);
}

TEST_F(Doctor, looks_at_the_tunnel_of_an_enrolled_device_only) {
  store(settings::deviceRole, std::string("child"));
  EXPECT_THAT(report(), Not(HasSubstr(" Tunnel: ")));
  store(settings::childIsEnrolled, true);
  const auto ofEnrolled = report();
  for (const auto* part : {"Tunnel", "Redirection of DNS", "Lookup of names", "Endpoint", "Network"}) {
    EXPECT_THAT(ofEnrolled, HasSubstr(" " + std::string(part) + ": "));
  }
}

TEST_F(Doctor, uses_the_role_of_the_installation) {
  store(settings::deviceRole, std::string("child"));
  EXPECT_THAT(report(), HasSubstr("a child's device needs."));
  EXPECT_THAT(report(), Not(HasSubstr("optional  Tunnel program")));
}

}  // namespace
}  // namespace quillmar::doctor
