// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_telegram.h>

#include <gtest/gtest.h>

#include <tests/driver/mbus/mbus_bytes.h>

using namespace tav::mbus;

namespace {

const std::string kHeader = "46 01 95 44 18 4E 34 04 1E 08 00 00";  // 44950146 SPX, version 52, heat

struct cRead {
  std::vector<std::uint8_t> bytes;
  cMBusTelegram telegram;
  cMBusFault fault;
  bool good = false;
};

cRead ReadBytes(std::vector<std::uint8_t> bytes) {
  cRead read;
  read.bytes = std::move(bytes);
  cMBusFrame frame;
  EXPECT_EQ(ReadFrame(read.bytes, frame, read.fault), eFrameWhole);
  read.good = ReadTelegram(frame, read.telegram, read.fault);
  return read;
}

// digits: what is behind L, from C on.
cRead Read(const std::string& digits) { return ReadBytes(LongFrame(digits)); }

cMBusTelegram Good(const cRead& read) {
  EXPECT_TRUE(read.good) << read.fault.ToString();
  return read.telegram;
}

std::string Refusal(const cRead& read) {
  EXPECT_FALSE(read.good);
  return read.fault.ToString();
}

}  // namespace

TEST(MBusTelegram, ReadsTheLongHeader) {
  const cRead read = Read("08 05 72 46 01 95 44 18 4E 34 04 1E 81 34 12 0F 5A");
  const cMBusTelegram telegram = Good(read);
  EXPECT_EQ(telegram.information, eCiLongHeader);
  EXPECT_EQ(telegram.address, 5);
  EXPECT_TRUE(telegram.header.hasMeter);
  EXPECT_EQ(IdText(telegram.header.id), "44950146");
  EXPECT_EQ(ManufacturerText(telegram.header.manufacturer), "SPX");
  EXPECT_EQ(telegram.header.version, 0x34);
  EXPECT_EQ(telegram.header.medium, 4);
  EXPECT_EQ(telegram.header.access, 0x1E);
  EXPECT_EQ(telegram.header.status, 0x81);
  EXPECT_EQ(telegram.header.configuration, 0x1234);
  EXPECT_EQ(Hex(telegram.data), "0F5A");
  EXPECT_EQ(telegram.dataOffset, 19u);
  EXPECT_TRUE(telegram.HasRecords());
  EXPECT_FALSE(telegram.encrypted);
}

TEST(MBusTelegram, ReadsTheShortHeader) {
  const cRead read = Read("08 00 7A 1E 01 00 00 0F");
  const cMBusTelegram telegram = Good(read);
  EXPECT_FALSE(telegram.header.hasMeter);
  EXPECT_EQ(telegram.header.access, 0x1E);
  EXPECT_EQ(telegram.header.status, 1);
  EXPECT_EQ(telegram.header.configuration, 0);
  EXPECT_EQ(Hex(telegram.data), "0F");
  EXPECT_EQ(telegram.dataOffset, 11u);
  EXPECT_TRUE(telegram.HasRecords());
}

TEST(MBusTelegram, ReadsRecordsWithoutAHeader) {
  const cRead read = Read("08 FD 78 0F");
  const cMBusTelegram telegram = Good(read);
  EXPECT_FALSE(telegram.header.hasMeter);
  EXPECT_EQ(telegram.address, kSecondary);
  EXPECT_EQ(Hex(telegram.data), "0F");
  EXPECT_EQ(telegram.dataOffset, 7u);
  EXPECT_TRUE(telegram.HasRecords());
}

TEST(MBusTelegram, ReadsErrorsAndAlarmsWhichHaveNoRecords) {
  for (const char* information : {"70", "71"})
    for (const char* data : {"", "08"}) {
      const cRead read = Read("08 01" + std::string(information) + data);
      const cMBusTelegram telegram = Good(read);
      EXPECT_EQ(Hex(telegram.data), data);
      EXPECT_FALSE(telegram.HasRecords());
      EXPECT_FALSE(telegram.header.hasMeter);
    }
}

TEST(MBusTelegram, ReadsTheFixedStructure) {
  const cRead read = Read("08 05 73 78 56 34 12 0A FC E9 7E 01 00 00 00 35 01 00 00");
  const cMBusTelegram telegram = Good(read);
  EXPECT_TRUE(telegram.header.hasMeter);
  EXPECT_EQ(IdText(telegram.header.id), "12345678");
  EXPECT_EQ(telegram.header.manufacturer, 0);
  EXPECT_EQ(telegram.header.access, 0x0A);
  EXPECT_EQ(telegram.header.status, 0xFC);
  EXPECT_EQ(telegram.header.medium, 7);
  EXPECT_EQ(Hex(telegram.data), "E97E0100000035010000");
  EXPECT_EQ(telegram.dataOffset, 13u);
  EXPECT_FALSE(telegram.binary);
  EXPECT_FALSE(telegram.stored);
  EXPECT_FALSE(telegram.encrypted);
}

TEST(MBusTelegram, TheFixedStatusTellsCodingAndDateButNoErrorByThem) {
  for (unsigned int status = 0; status < 256; ++status) {
    const cRead read = Read("08 05 73 78 56 34 12 0A" + HexOf(status) + "E9 7E 01 00 00 00 35 01 00 00");
    const cMBusTelegram telegram = Good(read);
    EXPECT_EQ(telegram.binary, (status & 1) != 0);
    EXPECT_EQ(telegram.stored, (status & 2) != 0);
    EXPECT_EQ(telegram.header.status, status / 4 * 4);
  }
}

TEST(MBusTelegram, TheFixedMediumIsTwoBitsOfEachUnit) {
  const std::uint8_t media[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 0x0F, 3, 4, 6, 7, 8, 0x0F};
  for (unsigned int medium = 0; medium < 16; ++medium) {
    const std::string units = HexOf((medium & 3) << 6 | 0x29) + HexOf(medium >> 2 << 6 | 0x3E);
    const cRead read = Read("08 05 73 78 56 34 12 0A 00" + units + "01 00 00 00 35 01 00 00");
    EXPECT_EQ(Good(read).header.medium, media[medium]) << medium;
  }
}

TEST(MBusTelegram, RefusesAHeaderThatEndsTooEarly) {
  const std::vector<std::uint8_t> header = Bytes(kHeader);
  const auto first = [&](std::size_t count) { return Hex({header.data(), count}); };
  for (std::size_t count = 0; count < 12; ++count)
    EXPECT_EQ(Refusal(Read("08 05 72" + first(count))),
              "byte " + std::to_string(7 + count) + ": the header ends too early");
  for (std::size_t count = 0; count < 4; ++count)
    EXPECT_EQ(Refusal(Read("08 05 7A" + first(count))),
              "byte " + std::to_string(7 + count) + ": the header ends too early");
  for (std::size_t count = 0; count < 16; ++count)
    EXPECT_EQ(Refusal(Read("08 05 73" + Repeated("01", count))),
              "byte " + std::to_string(7 + count) + ": the fixed data structure ends too early");
}

TEST(MBusTelegram, AHeaderMayHaveNothingBehindIt) {
  EXPECT_TRUE(Good(Read("08 05 72" + kHeader)).data.empty());
  EXPECT_TRUE(Good(Read("08 05 7A 00 00 00 00")).data.empty());
  EXPECT_TRUE(Good(Read("08 05 78")).data.empty());
}

TEST(MBusTelegram, RefusesBytesBehindTheFixedStructure) {
  EXPECT_EQ(Refusal(Read("08 05 73" + Repeated("01", 17))), "byte 23: bytes behind the fixed data structure");
}

TEST(MBusTelegram, RefusesEveryOtherControlInformation) {
  for (unsigned int information = 0; information < 256; ++information) {
    if ((information >= 0x70 && information <= 0x73) || information == 0x78 || information == 0x7A) continue;
    const bool isWithdrawn = information == 0x76 || information == 0x77;
    EXPECT_EQ(Refusal(Read("08 05" + HexOf(information) + kHeader)),
              std::string(isWithdrawn ? "byte 6: data with the most significant byte first, a form that is withdrawn"
                                      : "byte 6: a control information that no meter answers with") +
                  " (" + HexOf(information) + ")");
  }
}

TEST(MBusTelegram, RefusesWhatTheMasterSends) {
  for (const char* control : {"53", "73", "40", "48", "FF"})
    EXPECT_EQ(Refusal(Read(control + std::string("05 72") + kHeader)),
              "byte 4: a request of the master, no answer (" + std::string(control) + ")");
}

TEST(MBusTelegram, TakesAnAnswerWithItsAccessDemandAndFlowBits) {
  for (const char* control : {"08", "18", "28", "38"}) Good(Read(control + std::string("05 72") + kHeader));
}

TEST(MBusTelegram, RefusesFramesWithoutData) {
  EXPECT_EQ(Refusal(ReadBytes(Bytes("E5"))), "byte 0: a frame without data (E5)");
  EXPECT_EQ(Refusal(ReadBytes(ShortFrame(0x08, 1))), "byte 0: a frame without data (10)");
  cMBusTelegram telegram;
  cMBusFault fault;
  EXPECT_FALSE(ReadTelegram({}, telegram, fault));
  EXPECT_EQ(fault.ToString(), "byte 0: a frame without data");
}

TEST(MBusTelegram, NothingStaysOfTheTelegramBefore) {
  cRead read = Read("08 05 72" + kHeader);
  const std::vector<std::uint8_t> bytes = LongFrame("08 06 76");
  cMBusFrame frame;
  ASSERT_EQ(ReadFrame(bytes, frame, read.fault), eFrameWhole);
  EXPECT_FALSE(ReadTelegram(frame, read.telegram, read.fault));
  EXPECT_FALSE(read.telegram.header.hasMeter);
  EXPECT_EQ(read.telegram.header.id, 0u);
}

TEST(MBusTelegram, KnowsEncryptionByItsModeAndItsBlocks) {
  for (unsigned int mode = 0; mode < 32; ++mode)
    for (unsigned int blocks = 0; blocks < 16; ++blocks) {
      const std::string configuration = HexOf(blocks << 4 | 0x05) + HexOf(0xC0 | mode);
      const bool expected = (mode == 5 || mode == 7) && blocks > 0;
      const std::string behind = configuration + "1B 2F 2F";
      EXPECT_EQ(Good(Read("08 05 72 46 01 95 44 18 4E 34 04 1E 00" + behind)).encrypted, expected) << configuration;
      EXPECT_EQ(Good(Read("08 05 7A 1E 00" + behind)).encrypted, expected) << configuration;
    }
}

TEST(MBusTelegram, DataThatBeginWithTwoFillersAreDecryptedAlready) {
  EXPECT_FALSE(Good(Read("08 05 7A 1E 00 10 05 2F 2F 01")).encrypted);
  EXPECT_TRUE(Good(Read("08 05 7A 1E 00 10 05 2F 2E 01")).encrypted);
  EXPECT_TRUE(Good(Read("08 05 7A 1E 00 10 05 2F")).encrypted);
}

TEST(MBusTelegram, TheIdentificationIsEightDigitsWhateverTheyAre) {
  EXPECT_EQ(IdText(0), "00000000");
  EXPECT_EQ(IdText(0x00000042), "00000042");
  EXPECT_EQ(IdText(0x1234ABCF), "1234ABCF");
}

TEST(MBusTelegram, ManufacturersAreThreeLettersOfFiveBits) {
  const struct {
    std::uint16_t code;
    const char* letters;
  } kCases[] = {
      {0x4E18, "SPX"}, {0x2C2D, "KAM"}, {0x0421, "AAA"}, {0x6B5A, "ZZZ"}, {0x1593, "ELS"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(ManufacturerText(c.code), c.letters);
    EXPECT_EQ(ManufacturerCode(c.letters), c.code);
  }
}

TEST(MBusTelegram, EveryManufacturerReadsBothWays) {
  for (unsigned int code = 0; code < 0x8000; ++code) {
    const std::string letters = ManufacturerText(static_cast<std::uint16_t>(code));
    const bool isKnown = letters.find('?') == std::string::npos;
    EXPECT_EQ(ManufacturerCode(letters), isKnown ? code : 0) << code;
  }
}

TEST(MBusTelegram, ANumberThatIsNoLetterGivesAQuestionMark) {
  EXPECT_EQ(ManufacturerText(0), "???");
  EXPECT_EQ(ManufacturerText(0x7FFF), "???");
  EXPECT_EQ(ManufacturerText(0x0020), "?A?");
}

TEST(MBusTelegram, OnlyThreeCapitalLettersAreAManufacturer) {
  for (const char* letters : {"", "AB", "ABCD", "abc", "AB1", "A?C", "[AB", "@AB"})
    EXPECT_EQ(ManufacturerCode(letters), 0) << letters;
}

TEST(MBusTelegram, EveryApplicationErrorHasAText) {
  const char* const texts[] = {"unspecified error",
                               "control information not implemented",
                               "buffer too long, truncated",
                               "too many records",
                               "premature end of record",
                               "more than 10 DIFE",
                               "more than 10 VIFE",
                               "reserved",
                               "application too busy for a readout",
                               "too many readouts"};
  for (unsigned int code = 0; code < 256; ++code)
    EXPECT_STREQ(ApplicationErrorText(static_cast<std::uint8_t>(code)), code < 10 ? texts[code] : "reserved");
}
