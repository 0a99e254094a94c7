// SPDX-License-Identifier: Apache-2.0
// The words of the SML tests: telegrams written field by field, and a sink that remembers what it was given as texts.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gateway/driver/sml/obis_code.h>
#include <gateway/driver/sml/sml_decimal.h>
#include <gateway/driver/sml/sml_reader.h>
#include <gateway/driver/sml/sml_writer.h>

// Bytes from hexadecimal digits; blanks are skipped.
std::string Bytes(std::string_view digits);
tav::sml::cBytes View(const std::string& bytes);

// A list entry, field by field. Fields that are not set are not sent.
struct cTestEntry {
  std::uint64_t obis = tav::sml::PackObis(1, 0, 1, 8, 0);
  std::string status, time, unit, scaler, value, signature;  // elements in hexadecimal digits
};

// A payload of one list response, and the same between an open and a close response.
std::string ListPayload(const std::vector<cTestEntry>& entries, tav::sml::eCrcKind crc = tav::sml::eCrcX25);
std::string Payload(const std::vector<cTestEntry>& entries, tav::sml::eCrcKind crc = tav::sml::eCrcX25);
// In a transport frame.
std::string Telegram(const std::vector<cTestEntry>& entries, tav::sml::eCrcKind crc = tav::sml::eCrcX25);
// An ordinary meter's telegram: manufacturer, server id, two energies, a power, a public key.
std::string OrdinaryTelegram();

// Remembers everything in the order it came: "good 0+256", "list 0A01...", "1-0:1.8.0*255 = 5430157.7 unit 30",
// "fault ...".
class cMemory : public tav::sml::cSmlSink {
 public:
  void OnFrame(const tav::sml::cSmlFrame& frame) override;
  void OnList(const tav::sml::cSmlFrame& frame, const tav::sml::cSmlList& list) override;
  void OnFault(const tav::sml::cSmlFrame& frame, const tav::sml::cSmlFault& fault) override;

  std::vector<std::string> events;
};

struct cReading {
  std::vector<std::string> events;
  tav::sml::cSmlCounts frames;
  tav::sml::cSmlMessageCounts messages;

  std::size_t Lists() const { return static_cast<std::size_t>(messages.lists); }
};

// A whole stream, fed in blocks of that many bytes; 0: at once.
cReading Read(std::string_view stream, std::size_t block = 0);
cReading ReadPayload(const std::string& payload);
