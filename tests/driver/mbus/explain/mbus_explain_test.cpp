// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/explain/mbus_explain.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include <tests/driver/mbus/mbus_frames.h>

using namespace tav::mbus;
using nlohmann::json;
using tav::cExplanation;
using tav::cObisNaming;
using testing::HasSubstr;

namespace {

const std::string kRequest = FromHex("10 5B 05 60 16");

json Json(const std::string& capture) { return json::parse(ExplainMBus(capture).json); }
json FirstOf(const std::string& capture) { return Json(capture).at("telegrams").at(0); }
json ValueOf(const std::string& record) { return FirstOf(Answer(record)).at("values").at(0); }

std::string With(std::string bytes, std::size_t at, int byte) {
  bytes[at] = static_cast<char>(byte);
  return bytes;
}

// Every row begins where the one before it ended; ranges say where frames and noise are.
void ExpectEveryByteOnce(const std::string& capture) {
  std::istringstream lines(ExplainMBus(capture).listing);
  std::size_t next = 0;
  bool wasCut = false;
  for (std::string line; std::getline(lines, line);) {
    std::size_t from = 0, to = 0;
    char digits[32] = "";
    if (std::sscanf(line.c_str(), "%zu..%zu:", &from, &to) == 2) {
      EXPECT_TRUE(from == next || (wasCut && from > next)) << line;
      next = line.find("no part of a frame") != std::string::npos ? to + 1 : from;
      wasCut = false;
    } else if (line[0] == ' ' && std::sscanf(line.c_str(), "%zu %31[0-9A-F]", &from, digits) == 2) {
      EXPECT_TRUE(from == next || (wasCut && from > next)) << line;
      const std::string shown = FromHex(digits);
      EXPECT_EQ(capture.substr(from, shown.size()), shown) << line;
      next = from + shown.size();
      wasCut = line.compare(30, 2, "..") == 0;
    }
  }
  EXPECT_TRUE(next == capture.size() || (wasCut && next < capture.size()));
}

}  // namespace

TEST(MBusExplain, GivesOneDocumentOfTheAgreedForm) {
  EXPECT_EQ(
      ExplainMBus(Answer("0C 07 00 00 00 00")).json,
      R"({"kind":"mbus","good":1,"bad":0,"incomplete":0,"skipped_bytes":0,"telegrams":[{"offset":0,"good":true,)"
      R"("meter":"44950146","manufacturer":"SPX","version":52,"medium":"h","access":84,"status":16,"configuration":0,)"
      R"("address":5,"control":8,"information":114,"more":false,"error":null,"reason":null,"values":[{"record":0,)"
      R"("function":"Instantaneous value","storage":0,"tariff":0,"subunit":0,"dib":"0C","vib":"07","raw":"0",)"
      R"("scaler":4,"unit":"Wh","value":"0","base_value":"0","base_unit":"Wh","mark":null,"rule":null}]}]})");
}

TEST(MBusExplain, WritesEveryKindOfValueAsAnExactText) {
  const struct {
    const char* record;
    const char* json;  // what it must have, among others
  } kCases[] = {
      {"04 06 01 00 00 00", R"({"raw":"1","scaler":3,"unit":"Wh","value":"1000","base_value":"1000"})"},
      {"02 5A FB FF", R"({"raw":"-5","scaler":-1,"unit":"°C","value":"-0.5","base_unit":"°C"})"},
      {"04 22 02 00 00 00", R"({"unit":"h","value":"2","base_value":"7200","base_unit":"s"})"},
      {"44 13 01 00 00 00", R"({"storage":1,"unit":"m³","value":"0.001"})"},
      {"94 50 3B 01 00 00 00", R"({"function":"Maximum value","dib":"94 50","vib":"3B","tariff":1,"subunit":1})"},
      {"05 5B 00 00 C0 3F", R"({"raw":"1.5","value":"1.5"})"},
      {"0D 78 03 43 42 FC", R"({"raw":"hex:4342FC","value":"üBC","base_value":null,"scaler":null})"},
      {"02 6C 1F 1C", R"({"raw":"hex:1F1C","value":"2008-12-31","base_value":null,"base_unit":null,"unit":null})"},
      {"02 7C 03 48 52 25 D4 11", R"({"vib":"7C 03 48 52 25","unit":"%RH","value":"4564"})"},
      {"00 13", R"({"raw":null,"value":null,"base_value":null,"unit":"m³"})"},
      {"0A 13 AA AA", R"({"raw":"hex:AAAA","value":"hex:AAAA","mark":"BCD with an error digit"})"},
      {"0F 01 02",
       R"({"function":"Manufacturer specific","dib":"0F","vib":null,"raw":"hex:0102","unit":null,"mark":null})"},
      {"1F", R"({"function":"More records follow","raw":null,"value":null})"},
      {"3E", R"({"dib":null,"mark":"the telegram ends within a VIB","raw":"hex:3E"})"},
  };
  for (const auto& c : kCases) {
    const json value = ValueOf(c.record);
    const json wanted = json::parse(c.json);
    for (const auto& [key, expected] : wanted.items()) EXPECT_EQ(value.at(key), expected) << c.record << key;
  }
}

TEST(MBusExplain, NumbersTheRecordsOfATelegram) {
  const json telegram = FirstOf(OrdinaryAnswer());
  ASSERT_EQ(telegram.at("values").size(), 5u);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(telegram.at("values").at(i).at("record"), i);
  EXPECT_EQ(telegram.at("more"), false);
  EXPECT_EQ(FirstOf(Answer("01 13 01 1F")).at("more"), true);
}

TEST(MBusExplain, TakesWhatIsWholeAndNoAnswerForGood) {
  const json document = Json("\xE5" + kRequest + LongFrame("08 05 70 02") + LongFrame("08 05 71 02"));
  EXPECT_EQ(document.at("good"), 4);
  const json& telegrams = document.at("telegrams");
  for (const json& telegram : telegrams) {
    EXPECT_EQ(telegram.at("good"), true);
    EXPECT_EQ(telegram.at("meter"), nullptr);
    EXPECT_EQ(telegram.at("values").size(), 0u);
  }
  EXPECT_EQ(telegrams.at(0).at("control"), nullptr);
  EXPECT_EQ(telegrams.at(1).at("control"), 0x5B);
  EXPECT_EQ(telegrams.at(1).at("offset"), 1);
  EXPECT_EQ(telegrams.at(2).at("error"), "buffer too long, truncated");
  EXPECT_EQ(telegrams.at(3).at("error"), nullptr);
}

TEST(MBusExplain, SaysWhichByteIsWrong) {
  const std::string frame = Answer("01 13 07");
  const struct {
    std::string capture;
    const char* reason;
  } kCases[] = {
      {With(frame, frame.size() - 2, 0), "byte 22: the checksum is wrong (00)"},
      {With(frame, frame.size() - 1, 0), "byte 23: the frame has no stop byte (00)"},
      {With(frame, 2, 0), "byte 2: the two lengths differ (00)"},
      {Answer("01 13"), "byte 21: the data of a record end too early"},
      {LongFrame("53 05 51 01"), "byte 4: a request of the master, no answer (53)"},
      {LongFrame("08 05 76 01"), "byte 6: data with the most significant byte first, a form that is withdrawn (76)"},
      {LongFrame("08 05 72 01"), "byte 8: the header ends too early"},
  };
  for (const auto& c : kCases) {
    const cExplanation result = ExplainMBus("ab" + c.capture);
    EXPECT_FALSE(result.AllGood());
    EXPECT_EQ(result.counts.bad, 1u) << c.reason;
    EXPECT_EQ(result.counts.skippedBytes, 2u) << c.reason;
    const json telegram = json::parse(result.json).at("telegrams").at(0);
    EXPECT_EQ(telegram.at("reason"), c.reason);
    EXPECT_EQ(telegram.at("offset"), 2);
    EXPECT_THAT(result.listing, HasSubstr(std::string("  FAULT: ") + c.reason + ", at offset "));
  }
}

TEST(MBusExplain, ShowsTheValuesOfADamagedTelegramThatCanBeRead) {
  const std::string frame = Answer("01 13 07 02 13 08 00");
  const json bad = FirstOf(With(frame, frame.size() - 2, 0));
  EXPECT_EQ(bad.at("good"), false);
  EXPECT_EQ(bad.at("meter"), "44950146");
  EXPECT_EQ(bad.at("values").size(), 2u);
  const cExplanation cut = ExplainMBus(frame.substr(0, kAnswerRecords + 4));
  EXPECT_EQ(cut.counts.incomplete, 1u);
  EXPECT_EQ(cut.counts.bad, 0u);
  EXPECT_FALSE(cut.AllGood());
  const json telegram = json::parse(cut.json).at("telegrams").at(0);
  EXPECT_EQ(telegram.at("reason"), "byte 23: the frame ends too early");
  EXPECT_EQ(telegram.at("values").at(0).at("value"), "0.007");
  EXPECT_EQ(telegram.at("values").at(1).at("raw"), "hex:02");
}

TEST(MBusExplain, IsContentWithAFrameThatTheEndCutsOffBesideAGoodOne) {
  const std::string frame = Answer("01 13 07");
  EXPECT_TRUE(ExplainMBus(frame + frame.substr(0, 12)).AllGood());
  EXPECT_FALSE(ExplainMBus(frame.substr(0, 12) + frame).AllGood()) << "bytes are missing within the capture";
  EXPECT_FALSE(ExplainMBus("").AllGood());
  EXPECT_FALSE(ExplainMBus("no M-Bus at all").AllGood());
}

TEST(MBusExplain, SaysWhyACaptureWithoutAFrameIsNone) {
  const cExplanation explained = ExplainMBus(FromHex("D0 40 46"));
  EXPECT_EQ(explained.counts.bad, 1u);
  EXPECT_EQ(explained.firstBad, "at offset 0, byte 0: no frame starts with this byte (D0)");
  const auto telegram = nlohmann::json::parse(explained.json)["telegrams"][0];
  EXPECT_EQ(telegram["good"], false);
  EXPECT_EQ(telegram["reason"], "byte 0: no frame starts with this byte (D0)");
  EXPECT_THAT(explained.listing, HasSubstr("0..2: no part of a frame"));
}

TEST(MBusExplain, ReadsHexadecimalDigitsToo) {
  EXPECT_EQ(ExplainMBus(Hex(OrdinaryAnswer())).json, ExplainMBus(OrdinaryAnswer()).json);
}

TEST(MBusExplain, AsksTheRulesAsTheMappingDoes) {
  std::vector<std::string> asked;
  const auto namer = [&](const cMBusIdentity& identity) {
    asked.push_back(identity.meterAddr + " " + identity.medium + " " + Hex({identity.dib.begin(), identity.dib.end()}) +
                    " / " + Hex({identity.vib.begin(), identity.vib.end()}));
    return asked.size() == 1 ? cObisNaming{{{7, "Wärme", "6-0:1.0.0"}}, {"rule 7 names it"}}
                             : cObisNaming{{}, {"none"}};
  };
  const cExplanation result = ExplainMBus(Answer("8C 10 06 01 00 00 00 01 93 3A 05 0F 01"), namer);
  EXPECT_THAT(asked, testing::ElementsAre("5 h 8C 10 / 06", "5 h 01 / 93 3A"));
  EXPECT_THAT(result.listing, HasSubstr("  record 0: Wärme = 1000 Wh\n      rule 7 names it\n"));
  EXPECT_THAT(result.listing, HasSubstr("  record 1: Volume = 0.005 m³\n      none\n"));
  const json values = json::parse(result.json).at("telegrams").at(0).at("values");
  EXPECT_EQ(values.at(0).at("rule").dump(), R"({"id":7,"name":"Wärme","obis":"6-0:1.0.0"})");
  EXPECT_EQ(values.at(1).at("rule"), nullptr);
  ExplainMBus(LongFrame("08 05 78 01 13 07"), namer);
  EXPECT_EQ(asked.back(), "5  01 / 13") << "without a header no medium is known";
}

TEST(MBusExplain, GivesADocumentWhateverTheNamesOfRulesAre) {
  const auto namer = [](const cMBusIdentity&) { return cObisNaming{{{1, "\xFF\"", ""}}, {}}; };
  EXPECT_TRUE(json::accept(ExplainMBus(OrdinaryAnswer(), namer).json));
}

TEST(MBusExplain, LeavesNoByteOfAnyDamagedCaptureOut) {
  const std::string capture = "\xE5" + kRequest + "noise" + OrdinaryAnswer() + LongFrame("08 05 7A 54 00 30 05 AA BB") +
                              LongFrame("08 05 73 78 56 34 12 0A 00 E9 7E 01 00 00 00 35 01 00 00");
  ExpectEveryByteOnce(capture);
  for (std::size_t at = 0; at < capture.size(); ++at)
    for (const std::string& damaged : {With(capture, at, ~capture[at]), capture.substr(at), capture.substr(0, at),
                                       std::string(capture).erase(at, 1)}) {
      SCOPED_TRACE(at);
      ExpectEveryByteOnce(damaged);
      EXPECT_TRUE(json::accept(ExplainMBus(damaged).json));
    }
}
