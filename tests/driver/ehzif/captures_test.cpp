// SPDX-License-Identifier: Apache-2.0
// Telegrams captured from real meters go through the driver's process into a gateway, and must be stored as the values
// that are known of them. They are not part of this tree: the variable TAV_TELEGRAMS names the folder that holds them,
// in sml/.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "ehzif_fixture.h"

namespace tav::sml {
namespace {

namespace fs = std::filesystem;

std::string LoadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> SplitLine(const std::string& line, char separator) {
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
  fs::path path;
  std::map<std::string, std::string> summary;
  std::vector<std::vector<std::string>> expected;  // frame_index, obis, value, unit_code, scaler, raw_value

  bool Has(const std::string& feature) const {
    const auto features = SplitLine(summary.at("features"), ' ');
    return std::find(features.begin(), features.end(), feature) != features.end();
  }
  std::uint64_t Number(const std::string& key) const {
    const auto found = summary.find(key);
    return found == summary.end() ? 0 : std::stoull(found->second);
  }
};

cCapture LoadCapture(const fs::path& path) {
  cCapture capture;
  capture.path = path;
  std::istringstream summary(LoadFile(fs::path(path).replace_extension(".summary.txt")));
  for (std::string line; std::getline(summary, line);)
    if (const std::size_t at = line.find('='); at != std::string::npos)
      capture.summary[line.substr(0, at)] = line.substr(at + 1);
  std::istringstream expected(LoadFile(fs::path(path).replace_extension(".expected.csv")));
  std::string line;
  std::getline(expected, line);
  while (std::getline(expected, line)) capture.expected.push_back(SplitLine(line, ','));
  return capture;
}

std::vector<cCapture> LoadCaptures(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    if (entry.path().extension() == ".bin" || entry.path().extension() == ".hex") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  std::vector<cCapture> captures;
  for (const fs::path& file : files) captures.push_back(LoadCapture(file));
  return captures;
}

std::string UnitText(const std::string& code) {
  static const std::map<std::string, std::string> kUnits = {{"8", "°"},  {"27", "W"}, {"30", "Wh"},
                                                            {"33", "A"}, {"35", "V"}, {"44", "Hz"}};
  const auto found = kUnits.find(code);
  return found == kUnits.end() ? "unit " + code : found->second;
}

// A row of the expected file as it is stored: the neutral group F is left out, and the first value of an identifier
// with another one gets the name of the library's import.
std::string StoredName(const std::string& obis, std::set<std::string>& seen) {
  const std::vector<std::string> parts = SplitLine(obis, '*');
  if (parts[1] == "255") return parts[0];
  if (!seen.insert(parts[0]).second) return obis;
  unsigned int a, b, c, d, e;
  EXPECT_EQ(std::sscanf(obis.c_str(), "%u-%u:%u.%u.%u", &a, &b, &c, &d, &e), 5);
  return parts[0] + "*" + std::to_string(c << 24 | d << 16 | e << 8 | 0xFF);
}

// The values with a unit, of all frames that are told.
std::set<std::string> ExpectedTexts(const cCapture& capture) {
  std::set<std::string> texts, seen;
  std::string frame;
  if (capture.Has("bad_message_crc")) return texts;
  for (const std::vector<std::string>& row : capture.expected) {
    if (std::exchange(frame, row[0]) != row[0]) seen.clear();
    const std::string name = StoredName(row[1], seen);
    if (!row[3].empty() && row[2].rfind("hex:", 0) != 0) texts.insert(name + "=" + row[2] + " " + UnitText(row[3]));
  }
  return texts;
}

class EhzifCaptures : public EhzifProcess {
 protected:
  void SetUp() override {
    const char* const folder = std::getenv("TAV_TELEGRAMS");
    if (folder == nullptr) GTEST_SKIP() << "TAV_TELEGRAMS does not name a folder of captured telegrams";
    m_captures = LoadCaptures(fs::path(folder) / "sml");
    ASSERT_GT(m_captures.size(), 20u) << folder;
  }
  // Into a gateway of its own, as captures may be of the same meter.
  void StoreAlone(const cCapture& capture) {
    m_client.reset();
    m_service.reset();
    m_gateway.reset();
    fs::remove_all(Directory());
    StartGateway();
    EXPECT_EQ(Run({"--input", capture.path.string(), "--once"}), 0) << Said();
  }
  std::set<std::string> AllStored() {
    std::set<std::string> texts;
    for (const std::string& meter : Meters())
      for (const std::string& text : StoredTexts(meter)) texts.insert(text);
    return texts;
  }

  std::vector<cCapture> m_captures;
};

}  // namespace

TEST_F(EhzifCaptures, AreStoredAsTheValuesThatAreKnownOfThem) {
  std::size_t values = 0;
  for (const cCapture& capture : m_captures) {
    SCOPED_TRACE(capture.path.filename());
    StoreAlone(capture);
    const std::set<std::string> expected = ExpectedTexts(capture), stored = AllStored();
    // The expected file tells the first three frames.
    if (capture.Number("valid_frames") <= 3)
      EXPECT_EQ(stored, expected);
    else
      EXPECT_THAT(stored, testing::IsSupersetOf(expected));
    EXPECT_EQ(Count("delivered"), Count("acknowledged")) << Said();
    values += expected.size();
  }
  EXPECT_GT(values, 100u);
}

TEST_F(EhzifCaptures, HaveTheirDamageCounted) {
  std::uint64_t damaged = 0;
  for (const cCapture& capture : m_captures) {
    SCOPED_TRACE(capture.path.filename());
    StoreAlone(capture);
    EXPECT_EQ(Count("good"), capture.Number("valid_frames"));
    EXPECT_EQ(Count("bad"), capture.Number("bad_crc"));
    EXPECT_EQ(Count("incomplete"), capture.Number("incomplete_frames"));
    EXPECT_EQ(Count("faults"), capture.Number("messages_bad_crc"));
    damaged += Count("bad") + Count("incomplete") + Count("faults");
  }
  EXPECT_GT(damaged, 10u);
}

}  // namespace tav::sml
