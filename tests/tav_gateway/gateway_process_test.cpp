// SPDX-License-Identifier: Apache-2.0
#include <gateway/tav_gateway/gateway_process.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include <tests/tav_gateway/process_fixture.h>

namespace tav::gateway {
namespace {

using testing::HasSubstr;

// What a service manager hears.
// A port that somebody else listens on.
class cTakenPort {
 public:
  cTakenPort() : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), size), 0);
    EXPECT_EQ(listen(m_socket, 1), 0);
    getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size);
    m_port = ntohs(address.sin_port);
  }
  ~cTakenPort() { close(m_socket); }
  cTakenPort(const cTakenPort&) = delete;
  cTakenPort& operator=(const cTakenPort&) = delete;
  std::string GetAddress() const { return "127.0.0.1:" + std::to_string(m_port); }

 private:
  int m_socket;
  int m_port = 0;
};

class cManagerSocket {
 public:
  explicit cManagerSocket(const std::string& path) : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    if (path.front() == '@') address.sun_path[0] = '\0';
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    bind(m_socket, reinterpret_cast<const sockaddr*>(&address), length);
    const timeval patience{20, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  }
  ~cManagerSocket() { close(m_socket); }

  std::string Next() {
    char text[256];
    const ssize_t size = recv(m_socket, text, sizeof text, 0);
    return size < 0 ? "nothing" : std::string(text, static_cast<std::size_t>(size));
  }

 private:
  int m_socket;
};

TEST_F(GatewayProcess, StoresWhatADriverSendsAndEndsOnRequest) {
  for (const int signal : {SIGTERM, SIGINT}) {
    Start();
    Connect();
    const auto number = static_cast<unsigned int>(signal);
    EXPECT_TRUE(AwaitAcknowledgement(m_driver->StoreOne(Reading(number))));
    m_process->Signal(signal);
    EXPECT_EQ(m_process->Wait(), eExitDone) << Said();
    EXPECT_FALSE(std::filesystem::exists(Directory() + "/tav.db-wal"));
    EXPECT_EQ(Ask("SELECT count(*) FROM reading_values WHERE value='" + std::to_string(number) + ".5'"), "3");
    EXPECT_EQ(Said(), "");
  }
}

TEST_F(GatewayProcess, RunsTheDatabaseServiceAlone) {
  Start({"data"});
  Connect();
  EXPECT_TRUE(AwaitAcknowledgement(m_driver->StoreOne(Reading(1))));
}

TEST_F(GatewayProcess, GivesADriverItsStoreBack) {
  Start();
  Connect();
  EXPECT_TRUE(m_driver->SetStoreValue("key", "value"));
  EXPECT_TRUE(AwaitAcknowledgement(m_driver->StoreOne(Reading(1))));
  Connect();
  EXPECT_EQ(m_driver->GetStoreValue("key"), "value");
}

TEST_F(GatewayProcess, KeepsItsFilesToItself) {
  Start();
  Connect();
  for (const char* name : {"", "/tav.db", "/tav.db-wal"}) {
    struct stat status {};
    ASSERT_EQ(stat((Directory() + name).c_str(), &status), 0) << name;
    EXPECT_EQ(status.st_mode & 0007, 0u) << name;
  }
}

TEST_F(GatewayProcess, TellsTheServiceManager) {
  for (const std::string& path : {m_folder.File("notify"), "@tav-gateway-test-" + std::to_string(getpid())}) {
    cManagerSocket manager(path);
    Start({"run"}, {"NOTIFY_SOCKET=" + path});
    EXPECT_EQ(manager.Next(), "READY=1");
    Connect();
    m_process->Signal(SIGTERM);
    EXPECT_EQ(manager.Next(), "STOPPING=1");
    EXPECT_EQ(m_process->Wait(), eExitDone);
  }
}

TEST_F(GatewayProcess, RunsThoughTheServiceManagerDoesNotListen) {
  Start({"run"}, {"NOTIFY_SOCKET=/nowhere"});
  Connect();
  EXPECT_THAT(Said(), HasSubstr("NOTIFY_SOCKET"));
}

TEST_F(GatewayProcess, EndsWithTwoForAWrongOption) {
  Start({"run", "--durability", "maybe"});
  EXPECT_EQ(m_process->Wait(), eExitUsage);
  EXPECT_THAT(Said(), HasSubstr("--durability"));
}

TEST_F(GatewayProcess, EndsWithThreeForADamagedDatabaseAndLeavesItAlone) {
  std::filesystem::create_directory(Directory());
  const std::string damaged(20'000, 'x');
  std::ofstream(Directory() + "/tav.db") << damaged;
  Start();
  EXPECT_EQ(m_process->Wait(), eExitStorage);
  EXPECT_THAT(Said(), HasSubstr("tav.db' is damaged"));
  std::ifstream file(Directory() + "/tav.db");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), damaged);
}

TEST_F(GatewayProcess, EndsWithThreeWhenItsDirectoryCannotBeMade) {
  std::ofstream(Directory()) << "a file";
  Start();
  EXPECT_EQ(m_process->Wait(), eExitStorage);
  EXPECT_THAT(Said(), HasSubstr(Directory()));
}

TEST_F(GatewayProcess, TellsWhereItsPagesAre) {
  Start();
  Connect();
  std::ifstream file(m_folder.File("said"));
  std::string line;
  ASSERT_TRUE(std::getline(file, line));
  EXPECT_THAT(line, testing::MatchesRegex("web pages at http://127\\.0\\.0\\.1:[0-9]+/"));
}

TEST_F(GatewayProcess, EndsWithFourWhenThePortOfItsPagesIsTaken) {
  cTakenPort taken;
  for (const char* command : {"run", "web"}) {
    cChildProcess second({TAV_GATEWAY, command, "--dir", Directory(), "--web-listen", taken.GetAddress()}, {},
                         m_folder.File("second"));
    EXPECT_EQ(second.Wait(), eExitSocket) << command;
    std::ifstream file(m_folder.File("second"));
    EXPECT_THAT(std::string(std::istreambuf_iterator<char>(file), {}),
                HasSubstr("tav-gateway: web pages cannot be served at http://" + taken.GetAddress() +
                          "/: Address already in use"));
  }
}

TEST_F(GatewayProcess, LeavesThePagesOut) {
  Start({"run", "--dir", Directory(), "--no-web"});
  Connect();
  EXPECT_FALSE(std::filesystem::exists(Directory() + "/web-tmp"));
  std::ifstream file(m_folder.File("said"));
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "");
}

TEST_F(GatewayProcess, EndsWithTwoForACertificateThatCannotBeRead) {
  Start({"web", "--dir", Directory(), "--web-cert", "/nowhere/cert.pem", "--web-key", "/nowhere/key.pem"});
  EXPECT_EQ(m_process->Wait(), eExitUsage);
  EXPECT_THAT(Said(), HasSubstr("file '/nowhere/cert.pem' cannot be read"));
}

TEST_F(GatewayProcess, EndsWithFourWhenAnotherOneRuns) {
  Start();
  Connect();
  cChildProcess second({TAV_GATEWAY, "run", "--dir", Directory(), "--no-web"}, {}, m_folder.File("second"));
  EXPECT_EQ(second.Wait(), eExitSocket);
  std::ifstream file(m_folder.File("second"));
  EXPECT_THAT(std::string(std::istreambuf_iterator<char>(file), {}), HasSubstr("data"));
  EXPECT_TRUE(AwaitAcknowledgement(m_driver->StoreOne(Reading(1))));
}

}  // namespace
}  // namespace tav::gateway
