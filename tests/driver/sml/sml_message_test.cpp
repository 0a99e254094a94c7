// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_message.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "sml_telegrams.h"

using namespace tav::sml;

namespace {

// Reads the messages of a payload that ends exactly where the memory does.
struct cMessages {
  explicit cMessages(const std::string& payload) : bytes(payload.begin(), payload.end()) { messages->Begin(bytes); }
  bool Next() { return messages->Next(message); }
  std::string Fault() const { return messages->HasFault() ? messages->GetFault().ToString() : std::string(); }

  std::vector<std::uint8_t> bytes;
  std::unique_ptr<cSmlMessages> messages = std::make_unique<cSmlMessages>();
  cSmlMessage message;
};

// The only message of a payload with one list.
struct cOneList : cMessages {
  explicit cOneList(const std::vector<cTestEntry>& entries) : cMessages(ListPayload(entries)) { read = Next(); }
  bool read = false;
};

}  // namespace

TEST(SmlMessages, ReadsTheHeadOfEachMessage) {
  cMessages over(Payload({}));
  ASSERT_TRUE(over.Next());
  EXPECT_EQ(over.message.tag, eSmlOpenResponse);
  EXPECT_EQ(over.message.offset, 0u);
  EXPECT_EQ(over.message.group, 0);
  EXPECT_EQ(over.message.abortOnError, 0);
  EXPECT_EQ(std::string(over.message.transactionId.begin(), over.message.transactionId.end()), Bytes("00000001"));
  EXPECT_EQ(over.message.open.serverId.size(), 10u);
  EXPECT_EQ(over.message.open.requestFileId.size(), 4u);
  EXPECT_EQ(over.message.open.referenceTime.seconds, 1234u);
  const std::uint32_t behind = over.message.size;
  ASSERT_TRUE(over.Next());
  EXPECT_EQ(over.message.tag, eSmlGetListResponse);
  EXPECT_EQ(over.message.offset, behind);
  EXPECT_EQ(over.message.crc, eCrcX25);
  ASSERT_TRUE(over.Next());
  EXPECT_EQ(over.message.tag, eSmlCloseResponse);
  EXPECT_FALSE(over.Next());
  EXPECT_EQ(over.Fault(), "");
}

TEST(SmlMessages, ReadsEveryFieldOfAnEntry) {
  cOneList over(
      {{PackObis(1, 0, 1, 8, 0), "65001C0104", "72620265000000FF", "621E", "52FF", "59000000000000AAD2", "04010203"}});
  ASSERT_TRUE(over.read);
  ASSERT_EQ(over.message.list.entries.size(), 1u);
  const cSmlEntry& entry = over.message.list.entries[0];
  EXPECT_EQ(entry.obis, PackObis(1, 0, 1, 8, 0));
  EXPECT_EQ(entry.status, 0x1C0104u);
  EXPECT_EQ(entry.time.kind, eSmlTimestamp);
  EXPECT_EQ(entry.time.seconds, 255u);
  EXPECT_EQ(entry.unit, 30);
  EXPECT_EQ(entry.scaler, -1);
  EXPECT_EQ(entry.value.type, eSmlInt);
  EXPECT_EQ(entry.value.width, 8);
  EXPECT_EQ(entry.value.bits, 43730u);
  EXPECT_EQ(entry.signature.size(), 3u);
  EXPECT_EQ(over.bytes[entry.offset], 0x77);
  EXPECT_EQ(entry.size, 1 + 7 + 5 + 8 + 2 + 2 + 9 + 4u);
}

TEST(SmlMessages, LeavesOutWhatIsNotSent) {
  cOneList over({{PackObis(1, 0, 0, 0, 9), "", "", "", "", "", ""}});
  ASSERT_TRUE(over.read);
  const cSmlEntry& entry = over.message.list.entries[0];
  EXPECT_FALSE(entry.status);
  EXPECT_EQ(entry.time.kind, eSmlNoTime);
  EXPECT_FALSE(entry.unit);
  EXPECT_FALSE(entry.scaler);
  EXPECT_EQ(entry.value.type, eSmlAbsent);
  EXPECT_TRUE(entry.signature.empty());
}

TEST(SmlMessages, ReadsAListOfManyEntries) {
  cOneList over(std::vector<cTestEntry>(30, {PackObis(1, 0, 1, 8, 0), "", "", "", "", "6201", ""}));
  ASSERT_TRUE(over.read);
  EXPECT_EQ(over.message.list.entries.size(), 30u);
}

TEST(SmlMessages, TakesAListAtTheLimitAndRefusesOneAbove) {
  const cTestEntry entry = {PackObis(1, 0, 1, 8, 0), "", "", "", "", "6201", ""};
  for (const std::size_t count : {kMaxEntries - 1, kMaxEntries}) {
    cOneList over(std::vector<cTestEntry>(count, entry));
    EXPECT_TRUE(over.read && over.message.readable);
    EXPECT_EQ(over.message.list.entries.size(), count);
  }
  cOneList over(std::vector<cTestEntry>(kMaxEntries + 1, entry));
  ASSERT_TRUE(over.read) << "the message behind it can still be read";
  EXPECT_FALSE(over.message.readable);
  EXPECT_EQ(over.message.fault.field, std::string("valList"));
  EXPECT_EQ(over.message.fault.expected, std::string("at most 250 entries"));
}

TEST(SmlMessages, TellsTheMetersTimeWhenItIsOne) {
  const std::string index = "72620165000000FF", stamp = "72620265000000AA", local = "72620373 65000000BB 5200 5200";
  const auto meterTime = [](const std::vector<std::string>& times) {
    std::vector<cTestEntry> entries;
    for (const std::string& time : times) entries.push_back({PackObis(1, 0, 1, 8, 0), "", time, "", "", "6201", ""});
    return cOneList(entries).message.list.MeterTime();
  };
  EXPECT_EQ(meterTime({}), std::nullopt) << "the list has a seconds index";
  EXPECT_EQ(meterTime({index, "650A575853"}), std::nullopt);
  EXPECT_EQ(meterTime({index, stamp, local}), 0xAAu);
  EXPECT_EQ(meterTime({local}), 0xBBu);
}

TEST(SmlMessages, SaysWhichFieldOfAnEntryIsWrong) {
  const struct {
    cTestEntry entry;
    const char* field;
    const char* expected;
  } kCases[] = {
      {{1, "5201", "", "", "", "", ""}, "status", "an unsigned integer"},
      {{1, "", "72620562 01", "", "", "", ""},
       "valTime",
       "choice 1 (seconds index), 2 (timestamp) or 3 (local timestamp)"},
      {{1, "", "", "521E", "", "", ""}, "unit", "an unsigned integer"},
      {{1, "", "", "63011E", "", "", ""}, "unit", "a smaller number"},
      {{1, "", "", "", "62FF", "", ""}, "scaler", "a signed integer"},
      {{1, "", "", "", "530080", "", ""}, "scaler", "a number nearer to zero"},
      {{1, "", "", "", "53FF7F", "", ""}, "scaler", "a number nearer to zero"},
      {{1, "", "", "", "", "5A000000000000000000", ""}, "value", "a number of 1 to 8 bytes or a boolean of one"},
      {{1, "", "", "", "", "", "6201"}, "valueSignature", "an octet string"},
  };
  for (const auto& c : kCases) {
    cOneList over({{2, "", "", "", "", "6201", ""}, c.entry});
    ASSERT_TRUE(over.read) << c.field << over.Fault();
    EXPECT_FALSE(over.message.readable) << c.field;
    EXPECT_EQ(over.message.fault.field, std::string(c.field));
    EXPECT_EQ(over.message.fault.expected, std::string(c.expected)) << c.field;
    EXPECT_EQ(over.message.list.entries.size(), 1u) << "the entry before the fault is there";
  }
}

TEST(SmlMessages, WantsIdentifiersOfSixBytes) {
  std::string payload = ListPayload({{PackObis(1, 0, 1, 8, 0), "", "", "", "", "6201", ""}});
  const std::size_t at = payload.find(Bytes("070100010800FF"));
  payload.replace(at, 7, Bytes("0601000108 00"));
  cMessages over(payload);
  ASSERT_TRUE(over.Next()) << over.Fault();
  EXPECT_FALSE(over.message.readable);
  EXPECT_EQ(over.message.fault.ToString(),
            "byte " + std::to_string(at) + ", objName: expected an octet string of 6 bytes, found 0x06");
}

TEST(SmlMessages, SaysWhatIsWrongWithAMessage) {
  const struct {
    const char* payload;
    const char* fault;
  } kCases[] = {
      {"75", "byte 0, message: expected a message (list of 6), found 0x75"},
      {"62AA", "byte 0, message: expected a message (list of 6), found 0x62"},
      {"76", "byte 1, transactionId: expected a type-length field, found the end of the bytes"},
      {"76 6201", "byte 1, transactionId: expected an octet string, found 0x62"},
      {"76 0201 0201", "byte 3, groupNo: expected an unsigned integer, found 0x02"},
      {"76 0201 630100", "byte 3, groupNo: expected a smaller number, found 0x63"},
      {"76 0201 6200 0201", "byte 5, abortOnError: expected an unsigned integer, found 0x02"},
      {"76 0201 6200 6200 73", "byte 7, messageBody: expected a message body (list of 2), found 0x73"},
      {"76 0201 6200 6200 72 5201", "byte 8, messageBody tag: expected an unsigned integer, found 0x52"},
      {"76 0201 6200 6200 72 6201 72 01",
       "byte 12, messageBody: expected a type-length field, found the end of the bytes"},
      {"76 0201 6200 6200 72 6201 01 6501020304", "byte 11, crc: expected a smaller number, found 0x65"},
      {"76 0201 6200 6200 72 6201 01 63AABB 01", "byte 14, end of message: expected 0x00, found 0x01"},
      {"76 0201 6200 6200 72 6201 01 63AABB", "byte 14, end of message: expected 0x00, found the end of the bytes"},
  };
  for (const auto& c : kCases) {
    cMessages over(Bytes(c.payload));
    EXPECT_FALSE(over.Next());
    EXPECT_EQ(over.Fault(), c.fault);
    EXPECT_FALSE(over.Next()) << "nothing behind a fault";
  }
}

TEST(SmlMessages, ReadsOnBehindABodyThatIsNone) {
  std::string payload = Payload({{PackObis(1, 0, 1, 8, 0), "5201", "", "", "", "6201", ""}});
  cMessages over(payload);
  ASSERT_TRUE(over.Next());
  ASSERT_TRUE(over.Next());
  EXPECT_FALSE(over.message.readable);
  EXPECT_EQ(over.message.crc, eCrcX25) << "the checksum is still right";
  ASSERT_TRUE(over.Next());
  EXPECT_EQ(over.message.tag, eSmlCloseResponse);
  EXPECT_TRUE(over.message.readable);
}

TEST(SmlMessages, PassesOverOtherBodies) {
  cSmlWriter to;
  to.BeginMessage("id", 7, 0xFF01);
  to.List(4);
  to.Octets("server");
  to.Octets(Bytes("8181C7C7FE00"));
  to.Absent();
  to.Absent();
  to.EndMessage();
  cMessages over(to.GetPayload());
  ASSERT_TRUE(over.Next()) << over.Fault();
  EXPECT_EQ(over.message.tag, 0xFF01u);
  EXPECT_EQ(over.message.group, 7);
  EXPECT_TRUE(over.message.readable);
  EXPECT_FALSE(over.Next());
}

TEST(SmlMessages, TakesAChecksumWithoutItsLeadingZero) {
  // Of 256 transaction ids one at least has a checksum whose first byte on the wire is zero.
  int found = 0;
  for (int id = 0; id < 2560 && found == 0; ++id) {
    cSmlWriter to;
    to.BeginMessage(std::to_string(id), 0, eSmlCloseResponse);
    to.List(1);
    to.Absent();
    to.EndMessage();
    std::string payload = to.GetPayload();
    const std::size_t crc = payload.size() - 4;
    if (payload[crc + 1] != '\0') continue;
    payload.replace(crc, 2, "\x62");
    cMessages over(payload);
    ASSERT_TRUE(over.Next()) << over.Fault();
    EXPECT_EQ(over.message.crc, eCrcX25);
    ++found;
  }
  EXPECT_EQ(found, 1);
}

TEST(SmlMessages, RefusesEveryPrefixWithoutReadingPastItsEnd) {
  const std::string payload = Payload({{kObisManufacturer, "", "", "", "", "04545354", ""},
                                       {PackObis(1, 0, 1, 8, 0), "65001C0104", "72620373 6565E748D7 53003C 5200",
                                        "621E", "52FF", "59000000000000AAD2", "04010203"},
                                       {kObisPublicKey, "", "", "", "", "8302" + std::string(96, 'A'), ""}});
  std::vector<std::size_t> ends = {0};
  cMessages whole(payload);
  while (whole.Next()) ends.push_back(whole.message.offset + whole.message.size);
  ASSERT_EQ(ends.size(), 4u);
  for (std::size_t size = 0; size < payload.size(); ++size) {
    cMessages over(payload.substr(0, size));
    std::size_t messages = 0;
    while (over.Next()) ++messages;
    const bool atEnd = std::find(ends.begin(), ends.end(), size) != ends.end();
    EXPECT_EQ(over.Fault().empty(), atEnd) << size;
    EXPECT_EQ(ends[messages] <= size, true) << size;
  }
}

TEST(SmlMessages, SurvivesEveryDamagedByte) {
  const std::string payload = Payload(
      {{PackObis(1, 0, 1, 8, 0), "65001C0104", "7262016500001234", "621E", "52FF", "59000000000000AAD2", "04010203"}});
  for (std::size_t at = 0; at < payload.size(); ++at) {
    for (int byte = 0; byte < 256; ++byte) {
      if (payload[at] == static_cast<char>(byte)) continue;
      std::string damaged = payload;
      damaged[at] = static_cast<char>(byte);
      cMessages over(damaged);
      std::size_t right = 0;
      while (over.Next()) right += over.message.crc != eCrcNone ? 1 : 0;
      EXPECT_LT(right, 3u) << at << " " << byte;
    }
  }
}

TEST(SmlBodyText, NamesTheBodiesOfTheStandard) {
  EXPECT_STREQ(SmlBodyText(0x101), "Open.Res");
  EXPECT_STREQ(SmlBodyText(0x701), "GetList.Res");
  EXPECT_STREQ(SmlBodyText(0xFF01), "Attention.Res");
  EXPECT_STREQ(SmlBodyText(0x702), "unknown");
}
