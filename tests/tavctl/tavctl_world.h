// SPDX-License-Identifier: Apache-2.0
// tavctl and the services it asks on one loop, over real sockets in a folder of their own.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include <gateway/service/data/data_server.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/application.h>
#include <tests/service/data/store_fixture.h>
#include <tests/support/scm_world.h>
#include <tests/support/temp_folder.h>
#include <tests/support/time_zone.h>

namespace tav::ctl {

using data::kNoon;  // 2023-11-14T22:13:20Z
using data::Reading;

struct cOutput {
  int exit = -1;
  std::string out;
  std::string err;

  // The output as the one JSON document that it has to be.
  nlohmann::json Json() const { return nlohmann::json::parse(out); }
};

class TavctlWorld : public testing::Test {
 protected:
  cOutput Run(const std::vector<std::string>& arguments, const std::string& input = "", bool terminal = false) {
    std::istringstream in(input);
    std::ostringstream out, err;
    cApplication application({in, out, err, terminal, terminal}, &m_host);
    const eExit exit = application.Run(arguments);
    return {exit, out.str(), err.str()};
  }

  const std::string& Directory() const { return m_folder.GetPath(); }

  cTimeZone m_zone;
  cTempFolder m_folder;
  gateway::cServiceHost m_host{"world", m_folder.GetPath()};
};

// With the database control service of a gateway.
class TavctlWithGateway : public TavctlWorld {
 protected:
  void SetUp() override {
    data::cDataOptions options;
    options.file = m_folder.File("tav.db");
    options.durability = data::eDurability::Normal;
    m_store = std::make_unique<data::cDataStore>(options);
    const data::cFault fault = m_store->Open();
    ASSERT_FALSE(fault) << fault.text;
    m_server = std::make_unique<data::cDataServer>(&m_host, m_store.get());
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
  }

  void Write(const std::function<void(data::cTables&)>& add) {
    const data::cFault fault = m_store->Write(add);
    ASSERT_FALSE(fault) << fault.text;
  }
  void Store(const cMeterRecord& reading) {
    data::cReadingView view;
    const vorn::cRecord record = reading.ToRecord();
    ASSERT_TRUE(view.Read(record)) << view.GetError();
    Write([&](data::cTables& tables) { tables.readings.Add(view); });
  }
  void StoreEvent(const vorn::cRecord& event, unsigned int time) {
    Write([&](data::cTables& tables) { tables.events.Add(event, time); });
  }
  void SetValue(const std::string& store, const std::string& key, const std::string& value) {
    Write([&](data::cTables& tables) { tables.values.Set(store, key, value); });
  }

  std::unique_ptr<data::cDataStore> m_store;
  std::unique_ptr<data::cDataServer> m_server;
};

// With a service "data" whose answers a test makes up.
class TavctlWithAnswers : public TavctlWorld {
 protected:
  void Answer(const std::function<vorn::cMsg(const vorn::cMsg& request)>& answer) {
    m_server.onMessage = [answer](const vorn::cMsg& request) {
      vorn::cMsg msg = answer(request);
      msg.SetId(request.GetId());
      if (msg.GetType() != 0) request.GetReplyChannel()->Send(msg);
    };
  }
  static vorn::cMsg Message(unsigned int type, const vorn::cRecord& record = {}) {
    vorn::cMsg msg(type);
    msg.Record() = record;
    return msg;
  }
  static vorn::cRecord Text(const char* name, const std::string& value) {
    vorn::cRecord record;
    record.AppendTextPar(name, value);
    return record;
  }

  cRecordingServer m_server{&m_host, "data"};
};

}  // namespace tav::ctl
