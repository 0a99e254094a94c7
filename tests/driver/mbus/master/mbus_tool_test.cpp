// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_tool.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include <gateway/driver/mbus/master/mbus_requests.h>

#include <tests/driver/input/pseudo_line.h>
#include <tests/support/temp_folder.h>

#include <tests/driver/mbus/mbus_digits.h>

namespace tav::mbus {
namespace {

using Action = std::function<bool(cMBusTool&, std::string& error)>;

const cMBusAddress kMeter = cMBusAddress::Primary(5);
const cMBusAddress kNamed{kSecondary, 0x44950146};

// On a line where nobody answers, and an answer is waited for a minute: only an interruption ends that in time, as soon
// as a request was sent.
class MBusTool : public testing::Test {
 protected:
  // What was sent until the action ended, which must not be done.
  std::string Sent(const Action& action) {
    cMBusLineSettings settings;
    settings.input.kind = eInputKind::Serial;
    settings.input.path = m_folder.File("bus");
    settings.longestAnswerMs = 60'000;
    std::string sent;
    cMBusTool tool(settings, [&] {
      sent += m_line.Read();
      return !sent.empty();
    });
    EXPECT_TRUE(tool.Open(10'000, m_error)) << m_error;
    EXPECT_FALSE(action(tool, m_error));
    sent += m_line.Read();
    return Hex(sent);
  }

  cTempFolder m_folder;
  cPseudoLine m_line{m_folder.File("bus")};
  std::string m_error;
};

TEST_F(MBusTool, EndsWhatIsInterrupted) {
  const auto scan = [](bool secondary) {
    return [secondary](cMBusTool& tool, std::string& error) {
      cMBusScanOptions options;
      options.secondary = secondary;
      return tool.Scan(options, {}, {}, error);
    };
  };
  std::vector<std::string> frames;
  const struct {
    Action action;
    const char* sent;
  } cases[] = {
      {scan(false), "10 40 00 40 16"},
      {scan(true), "10 40 FD 3D 16"},
      {[&](auto& tool, auto& error) { return tool.Read(kMeter, frames, error); }, "10 40 05 45 16"},
      {[](auto& tool, auto& error) { return tool.SetAddress(kMeter, 7, error); },
       "68 06 06 68 53 05 51 01 7A 07 2B 16"},
      {[](auto& tool, auto& error) { return tool.SetBaud(kMeter, 9600, error); }, "68 03 03 68 53 05 BD 15 16"},
      {[](auto& tool, auto& error) { return tool.ResetApplication(kMeter, -1, error); }, "68 03 03 68 53 05 50 A8 16"},
      {[](auto& tool, auto& error) { return tool.SetAddress(kNamed, 7, error); },
       "68 0B 0B 68 53 FD 52 46 01 95 44 FF FF FF FF BE 16"},
  };
  for (const auto& [action, sent] : cases) {
    EXPECT_EQ(Sent(action), sent);
    EXPECT_EQ(m_error, "interrupted") << sent;
  }
  EXPECT_TRUE(frames.empty());
}

TEST_F(MBusTool, DoesNotWaitForALineWhenItIsInterrupted) {
  cMBusLineSettings settings;
  settings.input.kind = eInputKind::Serial;
  settings.input.path = m_folder.File("bus");
  cMBusTool tool(settings, [] { return true; });
  EXPECT_FALSE(tool.Open(60'000, m_error));
  EXPECT_EQ(m_error, "interrupted");
}

TEST_F(MBusTool, SaysWhyThereIsNoLine) {
  m_line.Vanish();
  cMBusLineSettings settings;
  settings.input.kind = eInputKind::Serial;
  settings.input.path = m_folder.File("bus");
  cMBusTool tool(settings, [] { return false; });
  EXPECT_FALSE(tool.Open(60'000, m_error));
  EXPECT_EQ(m_error, "cannot open " + m_folder.File("bus") + ": No such file or directory");
}

TEST_F(MBusTool, EndsWithTheLine) {
  EXPECT_EQ(Sent([this](cMBusTool& tool, std::string& error) {
              m_line.Vanish();
              return tool.ResetApplication(kMeter, -1, error);
            }),
            "");
  EXPECT_NE(m_error, "interrupted");
  EXPECT_NE(m_error.find("the meter did not acknowledge the reset of its application: "), std::string::npos) << m_error;
}

TEST_F(MBusTool, KnowsTheRatesThatHaveACode) {
  for (const unsigned int baud : kBauds) EXPECT_TRUE(cMBusTool::CheckBaud(baud, m_error)) << baud;
  EXPECT_EQ(m_error, "");
  for (const unsigned int baud : {0u, 299u, 1234u, 38401u, 57600u}) {
    EXPECT_FALSE(cMBusTool::CheckBaud(baud, m_error));
    EXPECT_EQ(m_error, "there is no code for " + std::to_string(baud) +
                           " baud; expected 300, 600, 1200, 2400, 4800, 9600, 19200 or 38400");
  }
}

TEST_F(MBusTool, AsksNobodyForARateWithoutACode) {
  EXPECT_EQ(Sent([](auto& tool, auto& error) { return tool.SetBaud(kMeter, 1234, error); }), "");
  EXPECT_NE(m_error.find("no code for 1234 baud"), std::string::npos);
}

}  // namespace
}  // namespace tav::mbus
