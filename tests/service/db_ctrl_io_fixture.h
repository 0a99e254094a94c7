// SPDX-License-Identifier: Apache-2.0
// What the tests of cDbCtrlIO share: a client and a real service, and the words to speak of them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <tav/service/db_ctrl_io.h>
#include <tests/support/proxy_fixture.h>

namespace db_ctrl_io_fixture {

using tav::cDbCtrlIO;
using tav::cMeterRecord;
using tav::cMeterTav;

inline constexpr unsigned int kLimit = 50;

inline cMeterRecord Reading(const std::string& meterID) {
  cMeterRecord record("ehzif", "EMH", "E", meterID, "12", "ok", 1, cMeterTav::eTsRtc, 2);
  record.AddMeasurementEntry({"1-0:1.8.0", "1", "Wh", 1, cMeterTav::eTsRtc});
  return record;
}

inline vorn::cRecord Event(const std::string& text) {
  vorn::cRecord event;
  event.AppendTextPar("text", text);
  return event;
}

inline void AppendStoreValue(vorn::cRecord& to, const std::string& key, const std::string& value) {
  vorn::cRecord pair;
  pair.AppendTextPar("key", key);
  pair.AppendTextPar("value", value);
  to.AppendRecordPar("store-value", pair);
}

inline vorn::cRecord StoreOf(const std::vector<std::pair<std::string, std::string>>& values) {
  vorn::cRecord store;
  for (const auto& [key, value] : values) AppendStoreValue(store, key, value);
  return store;
}

inline vorn::cRecord Because(const std::string& reason) {
  vorn::cRecord record;
  record.AppendTextPar("reason", reason);
  return record;
}

class cDbCtrlIOFixture : public cProxyFixture<cDbCtrlIO> {
 protected:
  cDbCtrlIOFixture() : cProxyFixture("data") {}

  // ---- what was stored and what arrived
  bool Store(const std::string& meterID) { return m_io->StoreMeterRec(Reading(meterID)); }
  void StoreMany(unsigned int count) {
    const cTraceLevel quiet("UnitTAV", 0);
    for (unsigned int i = 1; i <= count; ++i) Store(std::to_string(i));
  }
  // One text a message: "51009 4711", "51038 text=...", otherwise its type and its parameters.
  std::vector<std::string> Received() {
    std::vector<std::string> texts;
    for (const vorn::cMsg& msg : Messages()) texts.push_back(msg.GetType() == 0x51009 ? ShowStore(msg) : Show(msg));
    return texts;
  }
  static std::string ShowStore(const vorn::cMsg& msg) {
    std::string text = vorn::FormatString("%x", msg.GetType());
    for (auto par = msg.Record().GetPar("meter-record"); par.IsValid(); par = par.NextSame()) {
      vorn::cRecord reading;
      par.GetRecord(reading);
      text += " " + reading.GetTextPar("meterID");
    }
    return text;
  }
  std::vector<std::string> Queued() const {
    std::vector<std::string> texts;
    for (const vorn::cMsg& msg : m_io->m_queue)
      texts.push_back(msg.GetType() == 0x51009 ? msg.Record().GetRecordPar("meter-record").GetTextPar("meterID")
                                               : msg.Record().GetTextPar("text"));
    return texts;
  }
};

}  // namespace db_ctrl_io_fixture
