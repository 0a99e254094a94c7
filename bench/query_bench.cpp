// SPDX-License-Identifier: Apache-2.0
// Stored data asked for by a client over a channel: last values, and a day out of very many stored values. Service and
// client share one thread, so that a figure is what both cost together. The same file grows from step to step.
#include <SQLiteCpp/Database.h>
#include <benchmark/benchmark.h>

#include <deque>
#include <memory>
#include <optional>

#include <bench/support/figures.h>
#include <bench/support/placement.h>
#include <gateway/service/data/data_server.h>
#include <tav/service/db_ctrl_io.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/db_ctrl_request.h>
#include <tests/support/temp_folder.h>

using namespace tav;
using namespace tav::bench;
using tav::data::cTables;

namespace {

constexpr unsigned int kMeters = 10;
constexpr unsigned int kValues = 6;   // of a reading
constexpr unsigned int kPeriod = 60;  // seconds between the readings of a meter
constexpr unsigned int kDay = 86400;
constexpr unsigned int kQuarter = 900;
constexpr unsigned int kStart = 1'699'920'000;  // a midnight of UTC
constexpr unsigned int kGroup = 1000;           // readings of a transaction
constexpr int kRounds = 101;

std::string MeterName(unsigned int number) { return "1EMH00123456" + std::to_string(10 + number); }

vorn::cRecord Form(unsigned int meter, unsigned int time, unsigned int number) {
  cMeterRecord reading("ehzif", "EMH", "E", MeterName(meter), "ttyUSB0", "", time, cMeterTav::eTsMeterUtc, number);
  for (unsigned int i = 0; i < kValues; ++i)
    reading.AddMeasurementEntry({"1-0:" + std::to_string(i + 1) + ".8.0", std::to_string(number * 10 + i) + ".5", "Wh",
                                 time, cMeterTav::eTsMeterUtc});
  return reading.ToRecord();
}

class cClient : public cDbCtrlIO {
 public:
  using cDbCtrlIO::cDbCtrlIO;

  bool DispatchMessage(const vorn::cMsg& msg) override {
    if (!cDbCtrlIO::DispatchMessage(msg)) m_answer = msg;
    return true;
  }
  vorn::cMsg Await() {
    m_answer.reset();
    while (!m_answer) GetService()->Poll(1000);
    return *m_answer;
  }

 private:
  std::optional<vorn::cMsg> m_answer;
};

class cWorld {
 public:
  bool Open() {
    if (m_store.Open()) return false;
    m_server = std::make_unique<data::cDataServer>(&m_host, &m_store, [this] { return std::int64_t{m_time}; });
    m_client = std::make_unique<cClient>(&m_host, "");
    while (!m_client->IsConnected()) m_host.Poll(1000);
    return m_server->IsListening() && Configure();
  }

  // Stores readings of all meters, one after the other, up to so many values; then lets the collectors log.
  bool FillUpTo(unsigned int values) {
    while (m_readings < values / kValues)
      if (m_store.Write([&](cTables& tables) { StoreGroup(tables, values / kValues); })) return false;
    bool done = false;
    while (!done)
      if (m_store.Write([&](cTables& tables) {
            tables.profiles.TakeCollectors();
            done = tables.profiles.LogUntil(m_time);
          }))
        return false;
    return !m_store.Checkpoint();
  }

  // Rows of the last values of one meter, or (empty) of all.
  std::size_t AskLast(const std::string& meter) {
    cDbCtrlRequest request;
    request.m_meterID = meter;
    request.m_maxLen = 0;
    m_client->GetLastValues(m_id, request);
    return m_client->Await().Record().GetCount();
  }
  // Rows of a day in the middle of what a meter has.
  std::size_t AskDay(const std::string& profile, const std::string& obis) {
    cDbCtrlRequest request;
    request.m_meterID = MeterName(kMeters / 2);
    request.m_profile = profile;
    request.AddObisID(obis);
    request.m_fromUTC = kStart + (m_time - kStart - kDay) / 2 / kQuarter * kQuarter + 1;
    request.m_toUTC = request.m_fromUTC + kDay - 1;
    request.m_maxLen = 0;
    m_client->GetStoredValues(m_id, request);
    const vorn::cUuid handle = m_client->Await().Record().GetUuidPar(db_ctrl::kHandle);
    m_client->FetchStoredValues(m_id, handle, data::cResultPage::kMaxRows);
    const vorn::cMsg page = m_client->Await();
    return page.Record().GetBoolPar(db_ctrl::kEnd) ? page.Record().GetCount() - 1 : 0;
  }
  double GetBytes() const { return static_cast<double>(m_store.GetFileBytes()); }

 private:
  bool Configure() {
    return !m_store.Write([](cTables& tables) {
      tables.database.exec("INSERT INTO interface VALUES('SIM', '', 1)");
      for (unsigned int meter = 0; meter < kMeters; ++meter)
        tables.database.exec("INSERT INTO meter_config VALUES(NULL, '" + MeterName(meter) +
                             "', 'E', 'EMH', '', '', '', 'SIM', 'SML', '', 0, 1)");
      tables.database.exec(
          "INSERT INTO collector SELECT NULL, id, '1', 1, 0, 1, '15min', '1-0:1.8.0', NULL, '', 0, 0, "
          "0 FROM meter_config");
    });
  }
  void StoreGroup(cTables& tables, unsigned int end) {
    for (unsigned int i = 0; i < kGroup && m_readings < end; ++i, ++m_readings) {
      m_time = kStart + m_readings / kMeters * kPeriod;
      const vorn::cRecord form = Form(m_readings % kMeters, m_time, m_readings);
      if (m_view.Read(form)) tables.readings.Add(m_view);
    }
  }

  cTempFolder m_folder;
  data::cDataStore m_store{{m_folder.File("tav.db"), data::eDurability::Normal}};
  gateway::cServiceHost m_host{"query-bench", m_folder.GetPath()};
  std::unique_ptr<data::cDataServer> m_server;
  std::unique_ptr<cClient> m_client;
  data::cReadingView m_view;
  vorn::cUuid m_id;
  unsigned int m_readings = 0;
  unsigned int m_time = kStart;
};

// The median time of the CPU for a question, in microseconds; 0 when it has not the rows that it should have.
double Time(std::size_t rows, const std::function<std::size_t()>& ask) {
  std::vector<double> times;
  for (int round = 0; round < kRounds; ++round) {
    const double start = CpuNow();
    if (ask() != rows) return 0;
    times.push_back((CpuNow() - start) * 1e6);
  }
  return Median(times);
}

void Query(benchmark::State& state) {
  const cPlacement placement(ePlace::OneCore);
  cWorld world;
  if (!world.Open()) return state.SkipWithError("the service cannot be started");
  struct cQuestion {
    const char* name;
    std::size_t rows;
    std::function<std::size_t()> ask;
    double first = 0;
  };
  cQuestion questions[] = {
      {"last_values_of_one", kValues, [&] { return world.AskLast(MeterName(kMeters / 2)); }},
      {"last_values_of_all", kValues * kMeters, [&] { return world.AskLast(""); }},
      {"day_of_profile", kDay / kQuarter, [&] { return world.AskDay("15min", "1-0:1.8.0"); }},
      {"day_of_values", kDay / kPeriod, [&] { return world.AskDay("", "1-0:1.8.0"); }},
  };
  for (auto _ : state)
    for (const unsigned int values : {100'000u, 1'000'000u, 10'000'000u}) {
      if (!world.FillUpTo(values)) return state.SkipWithError("the readings cannot be stored");
      const std::string size = "/" + std::to_string(values);
      for (cQuestion& question : questions) {
        const double time = Time(question.rows, question.ask);
        if (time == 0) return state.SkipWithError((std::string(question.name) + size + ": rows are missing").c_str());
        if (question.first == 0) question.first = time;
        Report(state, question.name + size, time, "us");
        Report(state, question.name + size + "/growth", time / question.first, "1");
      }
      Report(state, "", values, "values");
      Report(state, "disk_of_value" + size, world.GetBytes() / values, "B");
    }
}
BENCHMARK(Query)->Name("query")->Iterations(1);

}  // namespace
