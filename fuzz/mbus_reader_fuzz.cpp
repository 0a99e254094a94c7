// SPDX-License-Identifier: Apache-2.0
// Any bytes taken for what a line of M-Bus meters sends: fed at once and in odd blocks they give the same frames, every
// byte of a telegram belongs to one record or is idle, texts of values are numbers, and the explanation of them leaves
// no byte out and stays a JSON document.
#include <gateway/driver/mbus/reader/mbus_reader.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gateway/driver/mbus/explain/mbus_explain.h>
#include <gateway/driver/mbus/reader/mbus_framer.h>
#include <gateway/driver/mbus/reader/mbus_text.h>

using namespace tav::mbus;

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

bool IsDecimal(const std::string& text) {
  const std::size_t begin = text[0] == '-' ? 1 : 0;
  return text.size() > begin && std::count(text.begin(), text.end(), '.') <= 1 &&
         std::all_of(text.begin() + static_cast<std::ptrdiff_t>(begin), text.end(),
                     [](char c) { return c == '.' || (c >= '0' && c <= '9'); });
}

// A record lies behind the one before it, its parts within it, and its texts are what they should be.
std::string CheckRecord(const cMBusRecord& record) {
  Check(record.value.kind != eValueNone || record.mark == nullptr || record.data.empty());
  Check(!record.value.IsNumber() || record.mark == nullptr);
  const std::string raw = RawText(record), value = ValueText(record), base = BaseValue(record).value;
  Check(base.empty() == !record.value.IsNumber());
  Check(!record.value.IsNumber() || (IsDecimal(raw) && IsDecimal(value) && IsDecimal(base)));
  return raw + value + base + UnitText(record) + HexText(record.dib) + HexText(record.vib) +
         FunctionText(record.function);
}

std::string CheckTelegram(const cMBusFrame& frame) {
  cMBusTelegram telegram;
  cMBusFault fault;
  std::string text;
  if (!ReadTelegram(frame, telegram, fault)) {
    Check(fault.offset < frame.bytes.size());
    return fault.ToString();
  }
  cMBusReader reader;
  reader.Begin(telegram);
  std::size_t next = telegram.dataOffset + (telegram.information == eCiFixed ? 2 : 0);
  for (cMBusRecord record; reader.Next(record);) {
    Check(record.offset >= next && record.offset + record.bytes.size() <= frame.bytes.size() - 2);
    for (; next < record.offset; ++next) Check(frame.bytes[next] == 0x2F);
    next += record.bytes.size();
    text += CheckRecord(record);
  }
  if (telegram.HasRecords())
    for (; next < frame.bytes.size() - 2; ++next) Check(frame.bytes[next] == 0x2F);
  return text + (reader.HasFault() ? reader.GetFault().ToString() : "") + (reader.HasMore() ? "more" : "");
}

// All frames, with everything that is in them.
std::string Feed(cBytes stream, std::size_t block) {
  cMBusFramer framer;
  std::string text;
  for (std::size_t at = 0; at < stream.size();) {
    const cBytes part = stream.subspan(at, std::min(block, stream.size() - at));
    const std::vector<std::uint8_t> exact(part.begin(), part.end());
    const std::size_t taken = framer.Feed(exact);
    Check(taken != 0);
    at += taken;
    for (cMBusFrame frame; framer.Next(frame);) {
      text.append(frame.bytes.begin(), frame.bytes.end());
      if (frame.kind == eFrameLong) text += CheckTelegram(frame);
    }
  }
  Check(framer.GetSkipped() <= stream.size());
  return text + std::to_string(framer.GetSkipped());
}

// Rows and ranges follow each other without a gap, where a row is not cut.
void CheckListing(const std::string& listing, std::size_t size) {
  std::istringstream lines(listing);
  std::size_t next = 0;
  bool wasCut = false;
  for (std::string line; std::getline(lines, line);) {
    std::size_t from = 0, to = 0;
    char digits[32] = "";
    const bool isRange = std::sscanf(line.c_str(), "%zu..%zu:", &from, &to) == 2;
    if (!isRange && (line[0] != ' ' || std::sscanf(line.c_str(), "%zu %31[0-9A-F]", &from, digits) != 2)) continue;
    Check(from == next || (wasCut && from > next));
    const bool isNoise = isRange && line.find("no part of a frame") != std::string::npos;
    next = isNoise ? to + 1 : from + std::string_view(digits).size() / 2;
    wasCut = !isRange && line.compare(30, 2, "..") == 0;
  }
  Check(next == size || (wasCut && next < size));
}

void CheckExplanation(cBytes bytes) {
  // The capture's first byte is no digit, so that it is not taken for text.
  const std::string capture = "\xE5" + std::string(bytes.begin(), bytes.end());
  const tav::cExplanation explained = ExplainMBus(capture);
  CheckListing(explained.listing, capture.size());
  const nlohmann::json telegrams = nlohmann::json::parse(explained.json).at("telegrams");
  const auto& counts = explained.counts;
  Check(telegrams.size() == counts.good + counts.bad + counts.incomplete);
  for (const nlohmann::json& telegram : telegrams) Check(telegram.at("good") == telegram.at("reason").is_null());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  const cBytes stream(bytes, size);
  const std::string whole = Feed(stream, std::max<std::size_t>(size, 1));
  for (const std::size_t block : {std::size_t{1}, std::size_t{7}, std::size_t{61}}) Check(Feed(stream, block) == whole);
  CheckExplanation(stream);
  return 0;
}
