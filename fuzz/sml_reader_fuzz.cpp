// SPDX-License-Identifier: Apache-2.0
// Any bytes taken for what a meter sends: read at once and in odd blocks they give the same frames, lists and faults,
// no byte is lost from the count, and the explanation of them agrees and stays a JSON document.
#include <gateway/driver/sml/sml_reader.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include <gateway/driver/sml/sml_decimal.h>
#include <gateway/driver/sml/sml_explain.h>

using namespace tav::sml;

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

// Writes down everything it is given, every byte of every view.
class cScribe : public cSmlSink {
 public:
  void OnFrame(const cSmlFrame& frame) override {
    Number(frame.kind), Number(frame.offset), Number(frame.size), Number(frame.padding), Octets(frame.payload);
  }
  void OnList(const cSmlFrame&, const cSmlList& list) override {
    Octets(list.clientId), Octets(list.serverId), Octets(list.listName), Octets(list.signature);
    for (const cSmlEntry& entry : list.entries) Entry(entry);
    Number(list.MeterTime().value_or(0));
  }
  void OnFault(const cSmlFrame& frame, const cSmlFault& fault) override {
    Check(fault.offset <= frame.payload.size());
    text += fault.ToString();
  }

  std::string text;

 private:
  void Entry(const cSmlEntry& entry) {
    Number(entry.offset), Number(entry.size), Number(entry.obis), Number(entry.status.value_or(1)),
        Number(entry.time.seconds);
    Number(entry.unit.value_or(0)), Octets(entry.value.octets), Octets(entry.signature);
    if (entry.value.IsNumber()) text += DecimalText(entry.value, entry.scaler.value_or(0)).View();
  }
  void Number(std::uint64_t number) { text += std::to_string(number) + ' '; }
  void Octets(cBytes bytes) { text.append(bytes.begin(), bytes.end()); }
};

struct cResult {
  std::string text;
  cSmlCounts frames;
  cSmlMessageCounts messages;
};

cResult Read(cBytes stream, std::size_t block) {
  cScribe scribe;
  const auto reader = std::make_unique<cSmlReader>(scribe);
  for (std::size_t at = 0; at < stream.size(); at += block) {
    const cBytes part = stream.subspan(at, std::min(block, stream.size() - at));
    const std::vector<std::uint8_t> exact(part.begin(), part.end());
    reader->Feed(exact.data(), exact.size());
  }
  reader->Finish();
  return {scribe.text, reader->GetFrameCounts(), reader->GetMessageCounts()};
}

void CheckSame(const cResult& a, const cResult& b) {
  Check(a.text == b.text);
  Check(a.frames.good == b.frames.good && a.frames.bad == b.frames.bad && a.frames.incomplete == b.frames.incomplete);
  Check(a.frames.skippedBytes == b.frames.skippedBytes);
  Check(a.messages.faults == b.messages.faults && a.messages.lists == b.messages.lists);
}

void CheckPayload(cBytes bytes) {
  cScribe scribe;
  const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
  std::make_unique<cSmlReader>(scribe)->ReadPayload(exact);
}

void CheckExplanation(std::string_view bytes, const cResult& read) {
  const tav::cExplanation explained = ExplainSml(bytes);
  const nlohmann::json document = nlohmann::json::parse(explained.json);
  const bool framed = bytes.find(kStartSequence) != std::string_view::npos;
  Check(!framed ||
        (explained.counts.good == read.frames.good && explained.counts.bad == read.frames.bad &&
         explained.counts.skippedBytes == read.frames.skippedBytes && explained.faults == read.messages.faults));
  Check(document.at("telegrams").size() == explained.counts.good + explained.counts.bad);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  const cBytes stream(bytes, size);
  const cResult whole = Read(stream, std::max<std::size_t>(size, 1));
  Check(whole.frames.skippedBytes <= size);
  for (const std::size_t block : {std::size_t{1}, std::size_t{7}, std::size_t{61}})
    CheckSame(whole, Read(stream, block));
  CheckPayload(stream);
  CheckExplanation({reinterpret_cast<const char*>(bytes), size}, whole);
  return 0;
}
