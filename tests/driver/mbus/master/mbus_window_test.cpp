// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_window.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <gateway/driver/mbus/master/mbus_requests.h>

#include <tests/driver/mbus/mbus_frames.h>

namespace tav::mbus {
namespace {

const std::string kRequest = "10 7B 05 80 16";
const std::string kForeign = "10 40 07 47 16";  // a request of another master
const std::string kShort = "10 08 05 0D 16";    // of a meter
const std::string kAnswer = "68 03 03 68 08 05 72 7F 16";
const std::string kOther = "68 03 03 68 08 06 72 80 16";
const std::string kCommand = "68 03 03 68 53 05 50 A8 16";  // a long frame of a master

class MBusWindow : public testing::Test {
 protected:
  void Begin(eExpected expected, bool echo = false) { m_window.Begin(FromHex(kRequest), expected, echo); }
  void Take(const std::string& digits) {
    const std::string bytes = FromHex(digits);
    m_window.Take(View(bytes));
  }
  void TakeEach(const std::string& digits) {
    for (const char byte : FromHex(digits)) m_window.Take(View(std::string(1, byte)));
  }
  // The answer's bytes, or the cause.
  std::string Judged(eOutcome expected) {
    cMBusFrame frame;
    std::string cause;
    EXPECT_EQ(m_window.Judge(frame, cause), expected) << cause;
    EXPECT_EQ(cause.empty(), expected == eOutcome::Answered);
    return cause.empty() ? Hex({frame.bytes.begin(), frame.bytes.end()}) : cause;
  }

  cMBusWindow m_window;
};

struct cWindowCase {
  eExpected expected;
  std::string came;
  eOutcome outcome;
  std::string said;  // the answer, or the cause
};

const cWindowCase kCases[] = {
    // Answers.
    {eExpected::Ack, "E5", eOutcome::Answered, "E5"},
    {eExpected::Data, "E5", eOutcome::Answered, "E5"},  // it has no data
    {eExpected::Data, kAnswer, eOutcome::Answered, kAnswer},
    {eExpected::Data, "FF " + kAnswer, eOutcome::Answered, kAnswer},
    {eExpected::Data, "10 " + kAnswer, eOutcome::Answered, kAnswer},
    {eExpected::Data, "68 68 " + kAnswer, eOutcome::Answered, kAnswer},
    {eExpected::Data, "E4 E5 " + kAnswer, eOutcome::Answered, kAnswer},
    // Frames that answer nothing, before one that does.
    {eExpected::Ack, kRequest + " E5", eOutcome::Answered, "E5"},
    {eExpected::Ack, kForeign + " E5", eOutcome::Answered, "E5"},
    {eExpected::Ack, kAnswer + " E5", eOutcome::Answered, "E5"},
    {eExpected::Ack, kCommand + kForeign + " E5", eOutcome::Answered, "E5"},
    {eExpected::Data, kRequest + kAnswer, eOutcome::Answered, kAnswer},
    {eExpected::Data, kShort + kAnswer, eOutcome::Answered, kAnswer},
    {eExpected::Data, "00 " + kForeign + kAnswer, eOutcome::Answered, kAnswer},
    // Nothing, or nothing that answers.
    {eExpected::Ack, "", eOutcome::Silent, "no answer"},
    {eExpected::Data, kRequest, eOutcome::Silent, "no answer"},
    {eExpected::Ack, kForeign, eOutcome::Damaged, "a request that was not sent from here"},
    {eExpected::Ack, kAnswer, eOutcome::Damaged, "an answer that was not asked for"},
    {eExpected::Data, kShort, eOutcome::Damaged, "an answer that was not asked for"},
    {eExpected::Data, kCommand, eOutcome::Damaged, "a request that was not sent from here"},
    // One that cannot be read.
    {eExpected::Data, "68", eOutcome::Damaged, "byte 1: the frame ends too early"},
    {eExpected::Data, "68 03 03 68 08 05 72 7F", eOutcome::Damaged, "byte 8: the frame ends too early"},
    {eExpected::Data, "68 03 03 68 08 05 72 70 16", eOutcome::Damaged, "byte 7: the checksum is wrong (70)"},
    {eExpected::Data, "68 03 03 68 08 05 72 7F 17", eOutcome::Damaged, "byte 8: the frame has no stop byte (17)"},
    {eExpected::Data, "01 02 68 03 03 68 08 05 72 70 16", eOutcome::Damaged, "byte 9: the checksum is wrong (70)"},
    {eExpected::Data, "01 68 03", eOutcome::Damaged, "byte 3: the frame ends too early"},
    // Several.
    {eExpected::Ack, "E5 E5", eOutcome::Collision, "1 byte behind the first answer"},
    {eExpected::Ack, "E5 00 00", eOutcome::Collision, "2 bytes behind the first answer"},
    {eExpected::Data, kAnswer + kOther, eOutcome::Collision, "9 bytes behind the first answer"},
    {eExpected::Data, kAnswer + " E5", eOutcome::Collision, "1 byte behind the first answer"},
    {eExpected::Ack, "E4", eOutcome::Collision, "byte 0: no frame starts with this byte (E4)"},
    {eExpected::Ack, "E4 E5", eOutcome::Collision, "byte 0: no frame starts with this byte (E4)"},
    {eExpected::Ack, "00 " + kAnswer, eOutcome::Collision, "byte 0: no frame starts with this byte (00)"},
    {eExpected::Ack, "10 E5", eOutcome::Collision, "byte 2: the frame ends too early"},
    {eExpected::Data, "68 02 68 00", eOutcome::Collision, "byte 1: the length is below 3 (02)"},
    {eExpected::Data, "68 05 04 00", eOutcome::Collision, "byte 2: the two lengths differ (04)"},
    {eExpected::Data, "68 03 03 69 08", eOutcome::Collision, "byte 3: the second start byte is wrong (69)"},
};

TEST_F(MBusWindow, TellsWhatCame) {
  for (const cWindowCase& test : kCases) {
    SCOPED_TRACE(test.came);
    Begin(test.expected);
    Take(test.came);
    EXPECT_EQ(Judged(test.outcome), test.said);
    EXPECT_EQ(m_window.IsWhole(), test.outcome == eOutcome::Answered);
  }
}

TEST_F(MBusWindow, TellsTheSameOfBytesThatComeOneByOne) {
  for (const cWindowCase& test : kCases) {
    SCOPED_TRACE(test.came);
    Begin(test.expected);
    TakeEach(test.came);
    EXPECT_EQ(Judged(test.outcome), test.said);
  }
}

TEST_F(MBusWindow, IsWholeWithTheLastByteAndNotBefore) {
  Begin(eExpected::Data);
  EXPECT_FALSE(m_window.HasBytes());
  const std::string bytes = FromHex(kAnswer);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    EXPECT_FALSE(m_window.IsWhole()) << i;
    m_window.Take(View(bytes.substr(i, 1)));
    EXPECT_TRUE(m_window.HasBytes());
  }
  EXPECT_TRUE(m_window.IsWhole());
  Take("00");
  EXPECT_FALSE(m_window.IsWhole());
}

TEST_F(MBusWindow, TakesTheEchoThatItIsToldOfAway) {
  const struct {
    eExpected expected;
    std::string came;
    eOutcome outcome;
    std::string said;
    bool hasBytes;
  } kEchoes[] = {
      {eExpected::Ack, "", eOutcome::Silent, "no answer, nor the echo of the request", false},
      {eExpected::Ack, "10 7B 05", eOutcome::Damaged, "the echo of the request ends too early", false},
      {eExpected::Ack, kRequest, eOutcome::Silent, "no answer", false},
      {eExpected::Ack, kRequest + " E5", eOutcome::Answered, "E5", true},
      {eExpected::Data, kRequest + kAnswer, eOutcome::Answered, kAnswer, true},
      {eExpected::Ack, "E5", eOutcome::Damaged, "byte 0: the echo is not what was sent, by a collision or noise (E5)",
       true},
      {eExpected::Data, "10 7B 04 " + kAnswer, eOutcome::Damaged,
       "byte 2: the echo is not what was sent, by a collision or noise (04)", true},
      {eExpected::Ack, kRequest + " E5 E5", eOutcome::Collision, "1 byte behind the first answer", true},
  };
  for (const auto& test : kEchoes) {
    SCOPED_TRACE(test.came);
    for (const bool each : {false, true}) {
      Begin(test.expected, true);
      each ? TakeEach(test.came) : Take(test.came);
      EXPECT_EQ(Judged(test.outcome), test.said);
      EXPECT_EQ(m_window.HasBytes(), test.hasBytes);
      EXPECT_FALSE(m_window.SawEcho()) << "it was expected";
    }
  }
}

TEST_F(MBusWindow, SeesAnEchoThatItIsNotToldOf) {
  Begin(eExpected::Data);
  Take(kForeign);
  EXPECT_FALSE(m_window.SawEcho());
  Take(kRequest);
  EXPECT_TRUE(m_window.SawEcho());
  Take(kAnswer);
  EXPECT_EQ(Judged(eOutcome::Answered), kAnswer);
  EXPECT_TRUE(m_window.SawEcho());
}

TEST_F(MBusWindow, BeginsAnew) {
  Begin(eExpected::Data, true);
  Take("00 " + kForeign);
  Begin(eExpected::Ack);
  EXPECT_FALSE(m_window.HasBytes());
  EXPECT_EQ(Judged(eOutcome::Silent), "no answer");
  Take("E5");
  EXPECT_EQ(Judged(eOutcome::Answered), "E5");
  Begin(eExpected::Data);
  Take(kRequest);
  Begin(eExpected::Data);
  EXPECT_FALSE(m_window.SawEcho());
}

TEST_F(MBusWindow, IsFullOfNoiseWithoutEnd) {
  Begin(eExpected::Data);
  const std::string noise(cMBusWindow::kMostBytes - 1, '\0');
  m_window.Take(View(noise));
  EXPECT_FALSE(m_window.IsFull());
  Take("00");
  EXPECT_TRUE(m_window.IsFull());
  Take(kAnswer);
  EXPECT_EQ(Judged(eOutcome::Collision), "byte 0: no frame starts with this byte (00)");
}

TEST_F(MBusWindow, IsNotFilledByFramesThatItPassesOver) {
  Begin(eExpected::Data);
  for (std::size_t i = 0; i < cMBusWindow::kMostBytes; ++i) Take(kForeign);
  EXPECT_FALSE(m_window.IsFull());
  Take(kAnswer);
  EXPECT_EQ(Judged(eOutcome::Answered), kAnswer);
}

}  // namespace
}  // namespace tav::mbus
