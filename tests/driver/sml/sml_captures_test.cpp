// SPDX-License-Identifier: Apache-2.0
// Telegrams captured from real meters, each with the readings it must give. They are not part of this tree: the
// variable TAV_TELEGRAMS names the folder that holds them, in sml/.
#include <gateway/driver/sml/sml_explain.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include <gateway/driver/capture_bytes.h>
#include <gateway/driver/sml/sml_input.h>

#include "sml_telegrams.h"

using namespace tav::sml;
using nlohmann::json;
namespace fs = std::filesystem;

namespace {

std::string Load(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> Split(const std::string& line, char separator) {
  std::vector<std::string> parts = {""};
  for (const char c : line) {
    if (c == separator)
      parts.emplace_back();
    else
      parts.back() += c;
  }
  return parts;
}

struct cCapture {
  std::string name;
  std::string bytes;
  std::map<std::string, std::string> summary;
  std::vector<std::vector<std::string>> expected;  // frame_index, obis, value, unit_code, scaler, raw_value

  bool Has(const std::string& feature) const {
    const auto features = summary.find("features");
    return features != summary.end() && (" " + features->second + " ").find(" " + feature + " ") != std::string::npos;
  }
  std::uint64_t Number(const std::string& key) const { return std::stoull(summary.at(key)); }
};

cCapture LoadCapture(const fs::path& path) {
  cCapture capture;
  capture.name = path.stem().string();
  const std::string file = Load(path);
  const tav::cCaptureBytes input(file);
  capture.bytes.assign(input.Get().begin(), input.Get().end());
  std::istringstream summary(Load(path.parent_path() / (capture.name + ".summary.txt")));
  for (std::string line; std::getline(summary, line);)
    if (const std::size_t at = line.find('='); at != std::string::npos)
      capture.summary[line.substr(0, at)] = line.substr(at + 1);
  std::istringstream expected(Load(path.parent_path() / (capture.name + ".expected.csv")));
  std::string line;
  std::getline(expected, line);
  while (std::getline(expected, line)) capture.expected.push_back(Split(line, ','));
  return capture;
}

class SmlCaptures : public testing::Test {
 protected:
  void SetUp() override {
    const char* const folder = std::getenv("TAV_TELEGRAMS");
    if (folder == nullptr) GTEST_SKIP() << "TAV_TELEGRAMS does not name a folder of captured telegrams";
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(folder) / "sml"))
      if (entry.path().extension() == ".bin" || entry.path().extension() == ".hex") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    ASSERT_FALSE(files.empty()) << folder;
    for (const fs::path& file : files) captures.push_back(LoadCapture(file));
  }

  std::vector<cCapture> captures;
};

std::string OrEmpty(const json& value) {
  return value.is_null() ? "" : value.is_string() ? value.get<std::string>() : value.dump();
}

// The values of a document as rows of the expected file: of the first three good telegrams.
std::vector<std::vector<std::string>> Rows(const json& document) {
  std::vector<std::vector<std::string>> rows;
  int frame = 0;
  for (const json& telegram : document.at("telegrams")) {
    if (!telegram.at("good") || frame == 3) continue;
    for (const json& value : telegram.at("values"))
      rows.push_back({std::to_string(frame), value.at("obis"), OrEmpty(value.at("value")),
                      OrEmpty(value.at("unit_code")), OrEmpty(value.at("scaler")), OrEmpty(value.at("raw"))});
    ++frame;
  }
  return rows;
}

}  // namespace

TEST_F(SmlCaptures, GiveTheExpectedValues) {
  std::size_t rows = 0;
  for (const cCapture& capture : captures) {
    EXPECT_EQ(Rows(json::parse(ExplainSml(capture.bytes).json)), capture.expected) << capture.name;
    rows += capture.expected.size();
  }
  EXPECT_GT(rows, 100u);
}

TEST_F(SmlCaptures, HoldTheExpectedFrames) {
  for (const cCapture& capture : captures) {
    if (capture.summary.count("transport") != 0) continue;
    const cReading reading = Read(capture.bytes);
    EXPECT_EQ(reading.frames.good, capture.Number("valid_frames")) << capture.name;
    EXPECT_EQ(reading.frames.bad, capture.Number("bad_crc")) << capture.name;
    EXPECT_EQ(reading.frames.incomplete, capture.Number("incomplete_frames")) << capture.name;
    EXPECT_GE(reading.frames.skippedBytes, capture.Number("bytes_before_first_start")) << capture.name;
    const std::uint64_t messages = capture.Number("messages_good_crc") + capture.Number("messages_bad_crc");
    EXPECT_EQ(reading.messages.messages, messages) << capture.name;
    EXPECT_EQ(reading.messages.badCrc, capture.Number("messages_bad_crc")) << capture.name;
    const std::uint64_t lists =
        capture.Has("bad_message_crc") ? 0 : capture.Number("getlist_responses_in_valid_frames");
    EXPECT_EQ(reading.messages.lists, lists) << capture.name;
    EXPECT_EQ(reading.messages.faults, reading.messages.badCrc) << capture.name;
  }
}

TEST_F(SmlCaptures, HaveTheirFramesWhereTheySay) {
  for (const cCapture& capture : captures) {
    if (capture.summary.count("transport") != 0) continue;
    std::vector<std::string> good, bad;
    eCrcKind kind = eCrcNone;
    std::uint64_t first = capture.bytes.size();
    const auto transport = std::make_unique<cSmlTransport>([&](const cSmlFrame& frame) {
      first = std::min(first, frame.offset);
      if (frame.kind == eFrameGood) kind = frame.crc;
      if (frame.kind == eFrameGood) good.push_back(std::to_string(frame.offset));
      if (frame.kind == eFrameBad) bad.push_back(std::to_string(frame.offset));
    });
    transport->Feed(capture.bytes.data(), capture.bytes.size());
    transport->Finish();
    std::vector<std::string> offsets = Split(capture.summary.at("valid_frame_offsets"), ' ');
    if (offsets.back() == "...") good.resize(offsets.size() - 1);
    offsets.erase(std::remove_if(offsets.begin(), offsets.end(), [](const auto& o) { return o.empty() || o == "..."; }),
                  offsets.end());
    EXPECT_EQ(good, offsets) << capture.name;
    if (capture.summary.count("bad_crc_offsets") != 0) {
      EXPECT_EQ(bad, Split(capture.summary.at("bad_crc_offsets"), ' ')) << capture.name;
    }
    EXPECT_EQ(first, capture.Number("bytes_before_first_start")) << capture.name;
    const std::string expected = capture.summary.at("crc_kind");
    EXPECT_EQ(kind, expected == "x25" ? eCrcX25 : expected == "kermit" ? eCrcKermit : eCrcNone) << capture.name;
  }
}

TEST_F(SmlCaptures, ReadTheSameInBlocksOfAnySize) {
  for (const cCapture& capture : captures) {
    const std::string some = capture.bytes.substr(0, 4096);
    const cReading whole = Read(some);
    for (const std::size_t block : {1u, 7u, 64u, 333u})
      EXPECT_EQ(Read(some, block).events, whole.events) << capture.name << " " << block;
  }
}

TEST_F(SmlCaptures, WithoutTransportAreReadAsMessages) {
  std::size_t found = 0;
  for (const cCapture& capture : captures) {
    EXPECT_EQ(IsPayload(View(capture.bytes)), capture.summary.count("transport") != 0) << capture.name;
    if (capture.summary.count("transport") == 0) continue;
    ++found;
    const cReading reading = ReadPayload(capture.bytes);
    EXPECT_EQ(reading.messages.badCrc, capture.Number("messages_bad_crc")) << capture.name;
    EXPECT_EQ(reading.messages.lists, capture.Has("bad_message_crc") ? 0u : 1u) << capture.name;
  }
  EXPECT_GT(found, 0u);
}

TEST_F(SmlCaptures, AreAllGoodWhenNothingInThemIsBad) {
  for (const cCapture& capture : captures) {
    const bool expected = !capture.Has("bad_crc") && !capture.Has("bad_message_crc") && !capture.Has("no_valid_frame");
    EXPECT_EQ(ExplainSml(capture.bytes).AllGood(), expected) << capture.name;
  }
}
