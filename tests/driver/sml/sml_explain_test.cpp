// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_explain.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "sml_telegrams.h"

using namespace tav::sml;
using nlohmann::json;
using tav::cExplanation;
using tav::cObisNaming;
using testing::HasSubstr;
using testing::Not;

namespace {

const cTestEntry kEnergy = {
    PackObis(1, 0, 1, 8, 0), "65001C0104", "7262016500001234", "621E", "52FF", "65033C9389", ""};

json Json(const std::string& capture) { return json::parse(ExplainSml(capture).json); }
json ValuesOf(const std::vector<cTestEntry>& entries) {
  return Json(Telegram(entries)).at("telegrams").at(0).at("values");
}

}  // namespace

TEST(SmlExplain, GivesOneDocumentOfTheAgreedForm) {
  EXPECT_EQ(
      ExplainSml(Telegram({kEnergy})).json,
      R"({"kind":"sml","good":1,"bad":0,"incomplete":0,"skipped_bytes":0,"telegrams":[{"offset":0,"good":true,)"
      R"("meter":"0A015453540001020304","values":[{"obis":"1-0:1.8.0*255","raw":"54301577","scaler":-1,"unit_code":30,)"
      R"("unit":"Wh","value":"5430157.7","rule":null}]}]})");
}

TEST(SmlExplain, WritesEveryKindOfValueAsAnExactText) {
  const struct {
    cTestEntry entry;
    const char* json;
  } kCases[] = {
      {{1, "", "", "", "", "", ""},
       R"({"obis":"0-0:0.0.0*1","raw":null,"scaler":null,"unit_code":null,"unit":null,"value":null,"rule":null})"},
      {{1, "", "", "6200", "5200", "03FF00", ""},
       R"({"obis":"0-0:0.0.0*1","raw":"hex:FF00","scaler":0,"unit_code":0,"unit":null,"value":"hex:FF00","rule":null})"},
      {{1, "", "", "", "", "4201", ""},
       R"({"obis":"0-0:0.0.0*1","raw":"true","scaler":null,"unit_code":null,"unit":null,"value":"true","rule":null})"},
      {{1, "", "", "", "", "4200", ""},
       R"({"obis":"0-0:0.0.0*1","raw":"false","scaler":null,"unit_code":null,"unit":null,"value":"false","rule":null})"},
      {{1, "", "", "621B", "52FE", "52FB", ""},
       R"({"obis":"0-0:0.0.0*1","raw":"-5","scaler":-2,"unit_code":27,"unit":"W","value":"-0.05","rule":null})"},
      {{1, "", "", "6208", "", "69FFFFFFFFFFFFFFFF", ""},
       R"({"obis":"0-0:0.0.0*1","raw":"18446744073709551615","scaler":null,"unit_code":8,"unit":"°","value":"18446744073709551615","rule":null})"},
      {{1, "", "", "62C8", "5203", "630914", ""},
       R"({"obis":"0-0:0.0.0*1","raw":"2324","scaler":3,"unit_code":200,"unit":null,"value":"2324000","rule":null})"},
      {{1, "", "", "", "", "72620162AA", ""},
       R"({"obis":"0-0:0.0.0*1","raw":"hex:72620162AA","scaler":null,"unit_code":null,"unit":null,"value":"hex:72620162AA","rule":null})"},
  };
  for (const auto& c : kCases) EXPECT_EQ(ValuesOf({c.entry}).at(0), json::parse(c.json)) << c.json;
}

TEST(SmlExplain, NamesTheMeterAsReadingsDo) {
  cSmlWriter to;
  to.BeginMessage("id", 0, eSmlGetListResponse);
  to.List(7);
  to.Absent();
  to.Octets("1EMH0012345678");
  to.Absent();
  to.Absent();
  to.List(0);
  to.Absent();
  to.Absent();
  to.EndMessage();
  EXPECT_EQ(Json(to.Frame()).at("telegrams").at(0).at("meter"), "1EMH0012345678");
  EXPECT_EQ(Json(Telegram({})).at("telegrams").at(0).at("meter"), "0A015453540001020304");
  EXPECT_EQ(Json(WriteSmlFrame("")).at("telegrams").at(0).at("meter"), nullptr);
}

TEST(SmlExplain, ReadsHexadecimalDigitsAndPayloadsToo) {
  const std::string telegram = Telegram({kEnergy});
  std::string digits;
  for (const char byte : telegram) {
    char two[4];
    std::snprintf(two, sizeof two, "%02x ", static_cast<unsigned int>(static_cast<unsigned char>(byte)));
    digits += two;
  }
  EXPECT_EQ(ExplainSml(digits).json, ExplainSml(telegram).json);
  const cExplanation payload = ExplainSml(Payload({kEnergy}));
  EXPECT_EQ(payload.counts.good, 1u);
  EXPECT_TRUE(payload.AllGood());
  EXPECT_EQ(json::parse(payload.json).at("telegrams"), Json(telegram).at("telegrams"));
}

TEST(SmlExplain, ShowsBadFramesAndSaysThatNotAllIsGood) {
  const std::string telegram = Telegram({kEnergy});
  std::string bad = telegram;
  bad.back() = static_cast<char>(bad.back() ^ 1);
  const cExplanation result = ExplainSml("xy" + bad + telegram.substr(0, 50) + telegram + "z");
  EXPECT_FALSE(result.AllGood());
  const json document = json::parse(result.json);
  EXPECT_EQ(document.at("good"), 1);
  EXPECT_EQ(document.at("bad"), 1);
  EXPECT_EQ(document.at("incomplete"), 1);
  EXPECT_EQ(document.at("skipped_bytes"), 3);
  ASSERT_EQ(document.at("telegrams").size(), 2u) << "an incomplete frame is no telegram";
  EXPECT_EQ(document.at("telegrams").at(0).at("offset"), 2);
  EXPECT_EQ(document.at("telegrams").at(0).at("good"), false);
  EXPECT_EQ(document.at("telegrams").at(0).at("values").size(), 1u);
  EXPECT_EQ(document.at("telegrams").at(1).at("offset"), 2 + telegram.size() + 50);
  EXPECT_THAT(result.listing, HasSubstr("0..1: no part of a frame\n"));
  EXPECT_THAT(result.listing, HasSubstr("bytes, BAD, checksum wrong\n"));
  EXPECT_THAT(result.listing, HasSubstr("50 bytes, INCOMPLETE, a new start sequence within the frame\n"));
}

TEST(SmlExplain, IsContentWithIncompleteFramesBesideAGoodOne) {
  const std::string telegram = Telegram({kEnergy});
  EXPECT_TRUE(ExplainSml(telegram + telegram.substr(0, 50)).AllGood());
  EXPECT_FALSE(ExplainSml(telegram.substr(0, 50)).AllGood());
  EXPECT_FALSE(ExplainSml("").AllGood());
  EXPECT_FALSE(ExplainSml("no SML at all").AllGood());
}

TEST(SmlExplain, ShowsAMessageWithAWrongChecksumAndCountsItAsAFault) {
  std::string payload = Payload({kEnergy});
  const std::size_t at = payload.find(Bytes("033C9389"));
  payload[at] = 0;
  for (const std::string& capture : {WriteSmlFrame(payload), payload}) {
    const cExplanation result = ExplainSml(capture);
    EXPECT_EQ(result.counts.good, 1u);
    EXPECT_EQ(result.faults, 1u);
    EXPECT_FALSE(result.AllGood());
    EXPECT_THAT(result.listing, HasSubstr("message 2, GetList.Res, checksum WRONG\n"));
    EXPECT_EQ(json::parse(result.json).at("telegrams").at(0).at("values").size(), 1u) << "what the bytes would mean";
  }
}

TEST(SmlExplain, NamesEveryByteInOrder) {
  const std::string listing = ExplainSml(Telegram({kEnergy})).listing;
  for (const char* line :
       {"0..", "start sequence, version 1", "message 1, Open.Res, checksum right, CRC-16/X-25",
        "serverId 0A015453540001020304", "reqFileId \"file\"",
        "1-0:1.8.0*255 active energy import, total = 5430157.7 Wh", "objName 1-0:1.8.0*255", "status 1835268",
        "choice 1 seconds index", "unit 30 Wh", "scaler 10^-1", "value 54301577", "valueSignature not sent",
        "crc right", "endOfSmlMsg", "end sequence, padding count", "checksum right"})
    EXPECT_THAT(listing, HasSubstr(line));
}

TEST(SmlExplain, LeavesNoByteOfATelegramOut) {
  const std::string telegram = OrdinaryTelegram();
  std::istringstream lines(ExplainSml(telegram).listing);
  std::string line;
  std::size_t next = 0;
  while (std::getline(lines, line)) {
    std::size_t offset = 0;
    char digits[32] = "";
    if (line.compare(0, 2, "  ") != 0 || std::sscanf(line.c_str(), "%zu %31[0-9A-F]", &offset, digits) != 2) continue;
    EXPECT_EQ(offset, next) << line;
    const std::string shown = Bytes(digits);
    EXPECT_EQ(telegram.substr(offset, shown.size()), shown) << line;
    const bool cut = line.find("..") != std::string::npos;
    if (!cut) next = offset + shown.size();
    if (cut) next = offset + (line.find("AAAA") != std::string::npos ? 50 : 11);
  }
  EXPECT_EQ(next, telegram.size());
}

TEST(SmlExplain, KeepsItsOffsetsBehindEscapes) {
  const std::string telegram =
      Telegram({{kObisPublicKey, "", "", "", "", "0E 1B1B1B1B1B1B1B1B1B1B1B1B1B", ""}, kEnergy});
  const std::string listing = ExplainSml(telegram).listing;
  const std::size_t at = telegram.find(Bytes("65033C9389"));
  EXPECT_THAT(listing, HasSubstr(" " + std::to_string(at) + "  65033C9389 "));
  EXPECT_THAT(listing, HasSubstr(std::to_string(telegram.size() - 8) + "  1B1B1B1B1A"));
}

TEST(SmlExplain, SaysWhereAndWhyItStops) {
  std::string payload = Payload({kEnergy});
  const std::size_t at = payload.find(Bytes("621E"));
  payload[at] = 0;
  const cExplanation result = ExplainSml(WriteSmlFrame(payload));
  EXPECT_EQ(result.faults, 1u);
  EXPECT_THAT(result.listing, HasSubstr("message 2, BROKEN\n"));
  EXPECT_THAT(result.listing, HasSubstr("FAULT: byte " + std::to_string(at + 8) +
                                        ", unit: expected an unsigned integer, found 0x00\n"));
  EXPECT_THAT(result.listing, HasSubstr("not read, "));
}

TEST(SmlExplain, ShowsWhichRuleNamesAValue) {
  const cExplanation result = ExplainSml(
      Telegram({kEnergy, {PackObis(1, 0, 2, 8, 0), "", "", "", "", "6201", ""}}), [](const std::string& obis) {
        return obis == "1-0:1.8.0*255" ? cObisNaming{{{7, "Bezug", "1-0:1.8.0"}}, {"rule 7", "rule 9 as well"}}
                                       : cObisNaming{{}, {"none"}};
      });
  EXPECT_THAT(result.listing, HasSubstr("1-0:1.8.0*255 Bezug = 5430157.7 Wh\n      rule 7\n      rule 9 as well\n"));
  EXPECT_THAT(result.listing, HasSubstr("1-0:2.8.0*255 active energy export, total = 1\n      none\n"));
  const json values = json::parse(result.json).at("telegrams").at(0).at("values");
  EXPECT_EQ(values.at(0).at("rule").dump(), R"({"id":7,"name":"Bezug","obis":"1-0:1.8.0"})");
  EXPECT_EQ(values.at(1).at("rule"), nullptr);
}

TEST(SmlExplain, GivesADocumentWhateverTheNamesOfRulesAre) {
  const auto namer = [](const std::string&) { return cObisNaming{{{1, "\xFF\"", ""}}, {}}; };
  EXPECT_TRUE(json::accept(ExplainSml(Telegram({kEnergy}), namer).json));
}

TEST(SmlExplain, SurvivesEveryDamagedByteAndEveryPrefix) {
  const std::string payload = Payload({kEnergy, {kObisServerId, "", "", "", "", "0B0A01FFFEC3280102C328", ""}});
  const std::string telegram = WriteSmlFrame(payload);
  for (std::size_t at = 0; at < telegram.size(); ++at) {
    std::string damaged = telegram;
    damaged[at] = static_cast<char>(~damaged[at]);
    EXPECT_TRUE(json::accept(ExplainSml(damaged).json)) << at;
    EXPECT_TRUE(json::accept(ExplainSml(telegram.substr(0, at)).json)) << at;
  }
  for (std::size_t at = 0; at < payload.size(); ++at) {
    std::string damaged = payload;
    damaged[at] = static_cast<char>(~damaged[at]);
    EXPECT_TRUE(json::accept(ExplainSml(WriteSmlFrame(damaged)).json)) << at;
  }
}
