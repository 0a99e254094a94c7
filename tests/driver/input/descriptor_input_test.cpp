// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/input/descriptor_input.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <tests/support/scm_world.h>

#include "pseudo_line.h"
#include "tcp_listener.h"

namespace tav {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr unsigned int kReopen = 0x77;

// Owns the input as a driver does: hands it its timer messages. Time stands still until it is moved.
class cOwner : public vorn::cService {
 public:
  using vorn::cService::cService;
  bool DispatchMessage(const vorn::cMsg& msg) override {
    EXPECT_EQ(msg.GetType(), kReopen);
    input->OnTimer();
    return true;
  }

  std::unique_ptr<cDescriptorInput> input;
};

class DescriptorInput : public testing::Test {
 protected:
  void Open(const std::string& text) {
    cInputSpec spec;
    std::string error;
    ASSERT_TRUE(cInputSpec::Parse(text, spec, error)) << error;
    m_told.clear();
    spec.exclusive = m_exclusive;
    m_owner.input = std::make_unique<cDescriptorInput>(&m_owner, spec, MakeEvents(), kReopen);
    EXPECT_THAT(m_told, IsEmpty());  // nothing before the loop runs
  }
  cInputEvents MakeEvents() {
    cInputEvents events;
    events.onBytes = [this](const unsigned char* bytes, std::size_t size) {
      m_bytes.append(reinterpret_cast<const char*>(bytes), size);
      ++m_blocks;
      if (onBytes) onBytes();
    };
    events.onLost = [this](const std::string& reason) { m_told.push_back("lost: " + reason); };
    events.onOpen = [this] { m_told.push_back("open"); };
    events.onEnd = [this](const std::string& why) { m_told.push_back("end: " + why); };
    return events;
  }
  bool Await(const std::function<bool()>& holds) { return PollUntil(m_owner, holds); }
  bool AwaitTold(std::size_t count) {
    return Await([&] { return m_told.size() >= count; });
  }
  bool AwaitBytes(const std::string& bytes) {
    const bool came = Await([&] { return m_bytes.size() >= bytes.size(); });
    EXPECT_EQ(m_bytes, bytes);
    return came && std::exchange(m_bytes, "") == bytes;
  }
  void Pass(unsigned int milliseconds) {
    m_clock->Advance(milliseconds);
    PollUntilIdle(m_owner);
  }
  std::string WriteFile(const std::string& bytes) {
    std::ofstream(m_folder.File("capture"), std::ios::binary) << bytes;
    return m_folder.File("capture");
  }
  static std::string AllBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
    return bytes;
  }

  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  cOwner m_owner{m_clock};
  bool m_exclusive = false;
  std::vector<std::string> m_told;
  std::string m_bytes;
  int m_blocks = 0;
  std::function<void()> onBytes;
};

// ---- a file

TEST_F(DescriptorInput, ReadsAFileToItsEnd) {
  std::string bytes;
  for (int i = 0; i < 200; ++i) bytes += AllBytes();  // more than one block
  Open(WriteFile(bytes));
  EXPECT_TRUE(m_owner.input->CanWait());
  ASSERT_TRUE(AwaitTold(2));
  EXPECT_THAT(m_told, ElementsAre("open", "end: "));
  EXPECT_EQ(m_bytes, bytes);
  EXPECT_GT(m_blocks, 1);
}

TEST_F(DescriptorInput, EndsAnEmptyFileAtOnce) {
  Open(WriteFile(""));
  ASSERT_TRUE(AwaitTold(2));
  EXPECT_THAT(m_told, ElementsAre("open", "end: "));
  EXPECT_EQ(m_bytes, "");
}

TEST_F(DescriptorInput, SaysWhyAFileCannotBeRead) {
  const std::pair<std::string, std::string> kCases[] = {{m_folder.File("missing"), "No such file or directory"},
                                                        {m_folder.GetPath(), "Is a directory"}};
  for (const auto& [path, fault] : kCases) {
    Open(path);
    ASSERT_TRUE(AwaitTold(1));
    Pass(60'000);  // not tried again
    EXPECT_THAT(m_told, ElementsAre("end: cannot open " + path + ": " + fault));
  }
}

TEST_F(DescriptorInput, WaitsWhilePaused) {
  const std::string bytes(100'000, 'x');
  onBytes = [this] { m_owner.input->Pause(); };
  Open(WriteFile(bytes));
  ASSERT_TRUE(Await([this] { return m_blocks == 1; }));
  PollUntilIdle(m_owner);
  EXPECT_EQ(m_blocks, 1);
  for (int block = 2; m_bytes.size() < bytes.size(); ++block) {
    m_owner.input->Resume();
    m_owner.input->Resume();  // once more changes nothing
    ASSERT_TRUE(Await([&] { return m_blocks == block; }));
    PollUntilIdle(m_owner);
    EXPECT_EQ(m_blocks, block);
  }
  EXPECT_THAT(m_told, ElementsAre("open"));
  m_owner.input->Resume();
  ASSERT_TRUE(AwaitTold(2));
  EXPECT_EQ(m_bytes, bytes);
}

TEST_F(DescriptorInput, PausedBeforeItOpensReadsNothing) {
  Open(WriteFile("bytes"));
  m_owner.input->Pause();
  ASSERT_TRUE(AwaitTold(1));
  PollUntilIdle(m_owner);
  EXPECT_EQ(m_bytes, "");
  m_owner.input->Resume();
  EXPECT_TRUE(AwaitBytes("bytes"));
}

TEST_F(DescriptorInput, WaitsForTheWriterOfANamedPipe) {
  const std::string path = m_folder.File("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  Open(path);
  ASSERT_TRUE(AwaitTold(1));
  PollUntilIdle(m_owner);
  EXPECT_THAT(m_told, ElementsAre("open"));
  std::ofstream(path, std::ios::binary) << AllBytes();
  EXPECT_TRUE(AwaitBytes(AllBytes()));
  ASSERT_TRUE(AwaitTold(2));
  EXPECT_EQ(m_told.back(), "end: ");
}

TEST_F(DescriptorInput, EndsWithItsOwnerWhereverItIs) {
  Open(WriteFile("bytes"));
  m_owner.input.reset();
  PollUntilIdle(m_owner);
  EXPECT_THAT(m_told, IsEmpty());
}

// ---- standard input

// Standard input, for a while.
class cStandardInput {
 public:
  cStandardInput() : m_before(dup(STDIN_FILENO)) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
    m_writer = ends[1];
  }
  ~cStandardInput() {
    End();
    dup2(m_before, STDIN_FILENO);
    close(m_before);
  }
  bool Write(const std::string& bytes) const {
    return write(m_writer, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  }
  void End() {
    if (m_writer >= 0) close(m_writer);
    m_writer = -1;
  }

 private:
  int m_before;
  int m_writer = -1;
};

TEST_F(DescriptorInput, ReadsStandardInputAsItComes) {
  cStandardInput input;
  Open("-");
  ASSERT_TRUE(AwaitTold(1));
  EXPECT_TRUE(m_owner.input->CanWait());
  PollUntilIdle(m_owner);  // nothing there: does not block
  ASSERT_TRUE(input.Write("one"));
  EXPECT_TRUE(AwaitBytes("one"));
  ASSERT_TRUE(input.Write(AllBytes()));
  EXPECT_TRUE(AwaitBytes(AllBytes()));
  input.End();
  ASSERT_TRUE(AwaitTold(2));
  EXPECT_THAT(m_told, ElementsAre("open", "end: "));
}

TEST_F(DescriptorInput, LeavesStandardInputOpenAndAsItWas) {
  cStandardInput input;
  const int flags = fcntl(STDIN_FILENO, F_GETFL);
  Open("-");
  ASSERT_TRUE(AwaitTold(1));
  PollUntilIdle(m_owner);
  m_owner.input.reset();
  EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFL), flags);  // others may read it, too
}

// ---- a connection

class TcpInput : public DescriptorInput {
 protected:
  static std::string Address(std::uint16_t port, const std::string& host = "127.0.0.1") {
    return "tcp://" + host + ":" + std::to_string(port);
  }
  // A port on which nobody listens.
  static std::uint16_t FreePort() { return cTcpListener().GetPort(); }
};

TEST_F(TcpInput, ReadsWhatThePeerSends) {
  cTcpListener listener;
  Open(Address(listener.GetPort()));
  EXPECT_FALSE(m_owner.input->CanWait());
  ASSERT_TRUE(AwaitTold(1));
  ASSERT_TRUE(Await([&] { return listener.Accept(); }));
  ASSERT_TRUE(listener.Write(AllBytes()));
  EXPECT_TRUE(AwaitBytes(AllBytes()));
  EXPECT_THAT(m_told, ElementsAre("open"));
}

TEST_F(TcpInput, TriesEveryAddressOfAName) {
  cTcpListener listener;  // on the IPv4 address only
  Open(Address(listener.GetPort(), "localhost"));
  ASSERT_TRUE(Await([&] {
    m_clock->Advance(10);
    return listener.Accept();
  }));
  ASSERT_TRUE(Await([&] { return !m_told.empty() && m_told.back() == "open"; }));
}

TEST_F(TcpInput, ReportsARefusedConnectionOnceAndGoesOnTrying) {
  const std::uint16_t port = FreePort();
  Open(Address(port));
  ASSERT_TRUE(AwaitTold(1));
  for (int i = 0; i < 20; ++i) Pass(1000);
  EXPECT_THAT(m_told, ElementsAre("lost: cannot connect to " + Address(port) + ": Connection refused"));
  cTcpListener listener(port);
  ASSERT_TRUE(Await([&] {
    m_clock->Advance(100);
    return listener.Accept();
  }));
  ASSERT_TRUE(AwaitTold(2));
  EXPECT_EQ(m_told[1], "open");
  ASSERT_TRUE(listener.Write("bytes"));
  EXPECT_TRUE(AwaitBytes("bytes"));
}

TEST_F(TcpInput, ConnectsAgainWhenThePeerHangsUp) {
  cTcpListener listener;
  Open(Address(listener.GetPort()));
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(Await([&] { return listener.Accept(); }));
    ASSERT_TRUE(listener.Write("bytes"));
    EXPECT_TRUE(AwaitBytes("bytes"));
    listener.HangUp();
    ASSERT_TRUE(AwaitTold(2));
    EXPECT_THAT(m_told, ElementsAre("open", "lost: " + Address(listener.GetPort()) + " ended"));
    PollUntilIdle(m_owner);
    EXPECT_FALSE(listener.Accept());
    m_told.clear();
    Pass(cDescriptorInput::kFirstBackOffMs);
  }
}

TEST_F(TcpInput, SaysWhyAConnectionBroke) {
  cTcpListener listener;
  Open(Address(listener.GetPort()));
  ASSERT_TRUE(Await([&] { return listener.Accept(); }));
  ASSERT_TRUE(AwaitTold(1));
  listener.Reset();
  ASSERT_TRUE(AwaitTold(2));
  EXPECT_EQ(m_told[1], "lost: cannot read " + Address(listener.GetPort()) + ": Connection reset by peer");
}

TEST_F(TcpInput, AsksAPeerThatHangsUpAtOnceLessAndLessOften) {
  cTcpListener listener;
  Open(Address(listener.GetPort()));
  ASSERT_TRUE(Await([&] { return listener.Accept(); }));
  listener.HangUp();
  ASSERT_TRUE(AwaitTold(2));
  EXPECT_THAT(m_told, ElementsAre("open", HasSubstr("lost: ")));
  unsigned int backOff = cDescriptorInput::kFirstBackOffMs;
  for (int attempt = 0; attempt < 10; ++attempt) {
    const std::size_t told = m_told.size();
    PollUntilIdle(m_owner);
    Pass(backOff - 1);
    EXPECT_FALSE(listener.Accept()) << backOff;
    Pass(1);
    ASSERT_TRUE(Await([&] { return listener.Accept(); })) << backOff;
    ASSERT_TRUE(AwaitTold(told + 1));
    listener.HangUp();
    PollUntilIdle(m_owner);
    EXPECT_EQ(m_told.size(), told + 1);  // "open"; its loss is not told once more
    backOff = std::min(2 * backOff, cDescriptorInput::kLongestBackOffMs);
  }
  EXPECT_EQ(backOff, cDescriptorInput::kLongestBackOffMs);
}

TEST_F(TcpInput, WritesWhatIsAsked) {
  cTcpListener listener;
  Open(Address(listener.GetPort()));
  m_owner.input->Write("too early");
  EXPECT_FALSE(m_owner.input->IsOpen());
  ASSERT_TRUE(AwaitTold(1));
  EXPECT_TRUE(m_owner.input->IsOpen());
  ASSERT_TRUE(Await([&] { return listener.Accept(); }));
  m_owner.input->Write("one");
  m_owner.input->Write(AllBytes());
  std::string read;
  ASSERT_TRUE(Await([&] { return (read += listener.Read()).size() >= 3 + 256; }));
  EXPECT_EQ(read, "one" + AllBytes());
}

TEST_F(TcpInput, WritesMoreThanFitsAsThereIsRoom) {
  cTcpListener listener;
  Open(Address(listener.GetPort()));
  ASSERT_TRUE(AwaitTold(1));
  ASSERT_TRUE(Await([&] { return listener.Accept(); }));
  std::string bytes;
  for (int i = 0; i < 50'000; ++i) bytes += AllBytes();
  m_owner.input->Write(bytes);
  m_owner.input->Write("end");
  std::string read;
  ASSERT_TRUE(Await([&] { return (read += listener.Read()).size() >= bytes.size() + 3; }));
  EXPECT_TRUE(read == bytes + "end");
}

TEST_F(TcpInput, LosesWhatIsNotWrittenWithTheConnection) {
  cTcpListener listener;
  Open(Address(listener.GetPort()));
  ASSERT_TRUE(AwaitTold(1));
  ASSERT_TRUE(Await([&] { return listener.Accept(); }));
  m_owner.input->Write(std::string(50'000'000, 'x'));
  listener.Reset();
  ASSERT_TRUE(AwaitTold(2));
  EXPECT_THAT(m_told[1], HasSubstr("lost: "));
  EXPECT_FALSE(m_owner.input->IsOpen());
  Pass(cDescriptorInput::kFirstBackOffMs);
  ASSERT_TRUE(Await([&] { return listener.Accept(); }));
  m_owner.input->Write("new");
  std::string read;
  ASSERT_TRUE(Await([&] { return (read += listener.Read()).size() >= 3; }));
  EXPECT_EQ(read, "new");
}

TEST_F(TcpInput, TellsWhoWritesOfEveryLoss) {
  cTcpListener listener;
  Open(Address(listener.GetPort()));
  for (std::size_t round = 1; round <= 3; ++round) {
    ASSERT_TRUE(Await([&] {
      m_clock->Advance(100);
      return m_owner.input->IsOpen() && listener.Accept();
    }));
    m_owner.input->Write("question");
    listener.HangUp();
    ASSERT_TRUE(AwaitTold(2 * round));
    EXPECT_THAT(m_told.back(), HasSubstr("lost: "));
  }
}

// ---- a serial device

class SerialInput : public DescriptorInput {
 protected:
  std::string Device() const { return m_folder.File("ttyUSB0"); }
  std::string Named() const { return Device() + " (9600 8N1)"; }
};

TEST_F(SerialInput, PassesEveryByteUnharmed) {
  cPseudoLine line(Device());
  Open(Device());
  EXPECT_FALSE(m_owner.input->CanWait());
  ASSERT_TRUE(AwaitTold(1));
  ASSERT_TRUE(line.Write(AllBytes()));
  EXPECT_TRUE(AwaitBytes(AllBytes()));
  ASSERT_TRUE(line.Write("\x03\x04\x1A\x11\x13\r\n\x7F"));  // what a terminal would act on
  EXPECT_TRUE(AwaitBytes("\x03\x04\x1A\x11\x13\r\n\x7F"));
  EXPECT_THAT(m_told, ElementsAre("open"));
}

TEST_F(SerialInput, ThrowsAwayWhatCameBeforeItWasSetUp) {
  cPseudoLine line(Device());
  ASSERT_TRUE(line.Write("garbage"));
  Open(Device());
  ASSERT_TRUE(AwaitTold(1));
  ASSERT_TRUE(line.Write("bytes"));
  EXPECT_TRUE(AwaitBytes("bytes"));
}

TEST_F(SerialInput, ComesBackAfterItVanished) {
  auto line = std::make_unique<cPseudoLine>(Device());
  Open(Device());
  ASSERT_TRUE(AwaitTold(1));
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(line->Write("bytes"));
    EXPECT_TRUE(AwaitBytes("bytes"));
    m_told.clear();
    line->Vanish();
    ASSERT_TRUE(AwaitTold(1));
    EXPECT_THAT(m_told[0], HasSubstr("lost: "));
    EXPECT_THAT(m_told[0], HasSubstr(Named()));
    for (int i = 0; i < 5; ++i) Pass(1000);
    EXPECT_EQ(m_told.size(), 1u);
    line = std::make_unique<cPseudoLine>(Device());
    Pass(cDescriptorInput::kLongestBackOffMs);
    EXPECT_THAT(m_told, ElementsAre(HasSubstr("lost: "), "open"));
  }
}

TEST_F(SerialInput, ComesBackUnderANameThatStayed) {
  auto line = std::make_unique<cPseudoLine>(Device());
  Open(Device());
  ASSERT_TRUE(AwaitTold(1));
  line->HangUp();
  ASSERT_TRUE(AwaitTold(2));
  Pass(cDescriptorInput::kFirstBackOffMs);
  line = std::make_unique<cPseudoLine>(Device());
  Pass(cDescriptorInput::kLongestBackOffMs);
  ASSERT_TRUE(AwaitTold(3));
  ASSERT_TRUE(line->Write("bytes"));
  EXPECT_TRUE(AwaitBytes("bytes"));
}

TEST_F(SerialInput, IsWaitedForWhenItIsNotThereYet) {
  cInputSpec spec;
  spec.kind = eInputKind::Serial;
  spec.path = Device();
  m_owner.input = std::make_unique<cDescriptorInput>(&m_owner, spec, MakeEvents(), kReopen);
  ASSERT_TRUE(AwaitTold(1));
  EXPECT_THAT(m_told, ElementsAre("lost: cannot open " + Device() + ": No such file or directory"));
  cPseudoLine line(Device());
  Pass(cDescriptorInput::kFirstBackOffMs);
  ASSERT_TRUE(AwaitTold(2));
  ASSERT_TRUE(line.Write("bytes"));
  EXPECT_TRUE(AwaitBytes("bytes"));
}

TEST_F(SerialInput, OpensALineAsItWasLeft) {
  cPseudoLine line(Device());
  cInputSpec spec;
  spec.kind = eInputKind::Serial;
  spec.path = Device();
  spec.framing = "7E2";
  for (int round = 0; round < 3; ++round) {
    m_told.clear();
    m_owner.input.reset();
    m_owner.input = std::make_unique<cDescriptorInput>(&m_owner, spec, MakeEvents(), kReopen);
    ASSERT_TRUE(AwaitTold(1));
    EXPECT_THAT(m_told, ElementsAre("open"));
  }
}

TEST_F(SerialInput, WritesEveryByteUnharmed) {
  cPseudoLine line(Device());
  Open(Device());
  ASSERT_TRUE(AwaitTold(1));
  m_owner.input->Write(AllBytes());
  std::string read;
  ASSERT_TRUE(Await([&] { return (read += line.Read()).size() >= 256; }));
  EXPECT_EQ(read, AllBytes());
  EXPECT_EQ(m_bytes, "");  // no echo
}

TEST_F(SerialInput, TakesWhatHasComeAtOnce) {
  cPseudoLine line(Device());
  Open(Device());
  m_owner.input->ReadNow();  // not open yet
  ASSERT_TRUE(AwaitTold(1));
  ASSERT_TRUE(line.Write("bytes"));
  ASSERT_TRUE(Await([&] {
    m_owner.input->ReadNow();
    return m_bytes == "bytes";
  }));
}

TEST_F(SerialInput, ChangesItsRateForGood) {
  auto line = std::make_unique<cPseudoLine>(Device());
  Open(Device());
  ASSERT_TRUE(AwaitTold(1));
  termios settings = line->GetSettings();
  EXPECT_EQ(cfgetospeed(&settings), speed_t{B9600});
  m_owner.input->SetBaud(300);
  settings = line->GetSettings();
  EXPECT_EQ(cfgetospeed(&settings), speed_t{B300});
  line->Vanish();
  line = std::make_unique<cPseudoLine>(Device());  // another device in its place
  ASSERT_TRUE(AwaitTold(2));
  Pass(cDescriptorInput::kLongestBackOffMs);
  ASSERT_TRUE(AwaitTold(3));
  settings = line->GetSettings();
  EXPECT_EQ(cfgetospeed(&settings), speed_t{B300});
}

TEST_F(SerialInput, LosesADeviceThatCannotHaveTheRate) {
  cPseudoLine line(Device());
  Open(Device());
  ASSERT_TRUE(AwaitTold(1));
  m_owner.input->SetBaud(301);
  EXPECT_THAT(m_told.back(), HasSubstr("lost: " + Device() + " cannot be set to 301 8N1"));
}

TEST_F(SerialInput, KeepsADeviceForItselfWhenToldSo) {
  cPseudoLine line(Device());
  m_exclusive = true;
  Open(Device());
  ASSERT_TRUE(AwaitTold(1));
  auto first = std::move(m_owner.input);
  Open(Device());
  ASSERT_TRUE(AwaitTold(1));
  EXPECT_THAT(m_told, ElementsAre("lost: " + Device() + " is in use by another process"));
  first.reset();
  Pass(cDescriptorInput::kFirstBackOffMs);
  EXPECT_EQ(m_told.back(), "open");
}

}  // namespace
}  // namespace tav
