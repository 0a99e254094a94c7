// SPDX-License-Identifier: Apache-2.0
// Any record taken for the form of each record class: it is read without a fault, and what was read of it comes back
// equal from the form that is written of it. A collector's distance is lost on that way, because it is written and read
// under different names. The clients that keep a copy of what a service sends are given the record as a message of each
// kind.
//
// The first byte tells what follows: even, a record's bytes; odd, a script that builds one from the names that the
// classes read, because bytes alone would seldom hit a name.
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <tav/config/interface_record.h>
#include <tav/config/meter_template.h>
#include <tav/framework/trace.h>
#include <tav/obis/obis_protocol.h>
#include <tav/obis/obis_proxy.h>
#include <tav/record/meter_record.h>
#include <tav/service/db_ctrl_io_driver_notify.h>
#include <tav/service/db_ctrl_request.h>
#include <tav/service/status_protocol.h>
#include <tav/service/status_proxy.h>

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

// ---- the script

constexpr const char* kNames[] = {
    "version",
    "meterID",
    "addr",
    "manufactor",
    "medium",
    "mfct",
    "vendor",
    "key",
    "status",
    "driver",
    "timestamp",
    "time-source",
    "osc",
    "learning",
    "rssi",
    "store-osc",
    "store-utc",
    "interface-name",
    "interface-protocol",
    "interface-options",
    "measurement",
    "entry",
    "raw",
    "event-raster",
    "value",
    "unit",
    "signature",
    "last-reply-received",
    "last-reply-received-timesource",
    "lost-packets",
    "encryption",
    "software-version",
    "hardware-version",
    "activation",
    "meter-rec",
    "ID",
    "name",
    "obis",
    "map",
    "obis-map",
    "options",
    "enabled",
    "meterconfig-record",
    "push-enabled",
    "store-raw-enabled",
    "collector-config",
    "should-removed",
    "countRP",
    "distanceRP",
    "distanecRP",
    "event-type",
    "obis-ids",
    "push-target-idx",
    "push-target-name",
    "push-period",
    "push-raw-enabled",
    "push-random-offset",
    "idx",
    "protocoll",
    "username",
    "password",
    "host",
    "uri",
    "collect",
    "maxruntime",
    "log-enabled",
    "post-enabled",
    "enable",
    "meter-config",
    "push-config",
    "mode",
    "raw-format",
    "fromUTC",
    "toUTC",
    "maxlen",
    "profile",
    "obis-id",
    "command",
    "content",
};

// Texts that mean something to a reader.
constexpr const char* kTexts[] = {
    "",       "1-0:1.8.0*255", "RS485", "MODBUS", "a=1,b,c=2=3,,=4", "protocol=mbus,dif=04,vif=03",
    "base64", "RTC",           "4711",  "set",    "remove",
};

class cScript {
 public:
  cScript(const unsigned char* bytes, std::size_t size) : m_left(reinterpret_cast<const char*>(bytes), size) {}

  vorn::cRecord Build(int depth = 1) {
    vorn::cRecord record;
    for (unsigned int left = Byte() % 32; left != 0 && !m_left.empty(); --left) Append(record, depth);
    return record;
  }

 private:
  void Append(vorn::cRecord& to, int depth) {
    const char* const name = kNames[Byte() % std::size(kNames)];
    switch (Byte() % 12) {
      case 0:
        return to.AppendTextPar(name, nullptr);
      case 1:
        return to.AppendTextPar(name, kTexts[Byte() % std::size(kTexts)]);
      case 2:
        return to.AppendTextPar(name, Text());
      case 3:
        return to.AppendIntPar(name, static_cast<int>(Number()));
      case 4:
        return to.AppendUIntPar(name, 1);
      case 5:
        return to.AppendUIntPar(name, static_cast<unsigned int>(Number()));
      case 6:
        return to.AppendUInt64Par(name, Number());
      case 7:
        return to.AppendBoolPar(name, (Byte() & 1) != 0);
      case 8:
        return to.AppendTimePar(name, vorn::cTime::FromSeconds(Byte(), true));
      case 9:
        return to.AppendUuidPar(name, vorn::cUuid());
      case 10:
        return to.AppendDataPar(name, vorn::cData(std::string(Text())));
      default:
        return to.AppendRecordPar(name, depth < 8 ? Build(depth + 1) : vorn::cRecord());
    }
  }
  unsigned char Byte() {
    if (m_left.empty()) return 0;
    const auto byte = static_cast<unsigned char>(m_left[0]);
    m_left.remove_prefix(1);
    return byte;
  }
  std::uint64_t Number() {
    std::uint64_t number = Byte();
    for (int more = number >= 0xF0 ? 8 : 0; more > 0; --more) number = number << 8 | Byte();
    return number;
  }
  std::string_view Text() {
    const std::string_view text = m_left.substr(0, Byte() % 16);
    m_left.remove_prefix(text.size());
    return text;
  }

  std::string_view m_left;
};

// ---- the classes

// What a form cannot carry there and back.
template <typename Value>
void ForgetLost(Value&) {}
void ForgetLost(tav::cMeterConfig& meter) {
  for (tav::cCollectorConfig& collector : meter.collectors) collector.distanceRP = 0;
}
void ForgetLost(tav::cCollectorConfig& collector) { collector.distanceRP = 0; }
void ForgetLost(tav::cMeterTemplate& preset) { ForgetLost(preset.meterConfig); }

// Whether the form was taken; any form at all is read and written twice.
template <typename Value>
bool CheckStable(const vorn::cRecord& form) {
  Value first, second;
  const bool taken = first.FromRecord(form);
  ForgetLost(first);
  const vorn::cRecord written = first.ToRecord();
  if (!form.IsEmpty()) Check(second.FromRecord(written) == taken);
  second.FromRecord(written);
  Check(second.ToRecord() == written);
  Check(first.ToString() == second.ToString());
  return taken;
}

// A reading needs a value to be taken; one whose values are all no records has none to write.
void CheckReading(const vorn::cRecord& form) {
  tav::cMeterRecord first, second;
  if (!first.FromRecord(form)) {
    Check(first.ToRecord().GetCount() != 0 && !first.ToString().empty());
    return;
  }
  const vorn::cRecord written = first.ToRecord();
  Check(second.FromRecord(written) == !first.GetMeasurementEntries().empty());
  if (!first.GetMeasurementEntries().empty()) Check(second.ToRecord() == written);
  Check(first.GetMeterStatus().ToString() == second.GetMeterStatus().ToString() || !second.IsValid());
}

void CheckStatus(const vorn::cRecord& form) {
  tav::cMeterStatus first, second;
  first.FromRecord(form);
  const vorn::cRecord written = first.ToRecord();
  Check(written.IsEmpty() == !first.IsValid());
  if (!first.IsValid()) return;
  Check(second.FromRecord(written) && second.IsValid());
  Check(second.ToRecord() == written && second.ToString() == first.ToString());
}

void CheckMapEntry(const vorn::cRecord& form) {
  tav::cObisMapEntry first, second;
  if (!first.FromRecord(form)) return;
  Check(second.FromRecord(first.ToRecord()));
  Check(second.ToRecord() == first.ToRecord() && second.ToString() == first.ToString());
}

void CheckMap(const vorn::cRecord& form) {
  tav::cObisMap first, second;
  first.FromRecord(form);
  vorn::cRecord written;
  written.AppendRecordPar("obis-map", first.ToRecord());
  second.FromRecord(written);
  Check(second.ToRecord() == first.ToRecord() && second.ToString() == first.ToString());
}

void CheckInterface(const vorn::cRecord& form) {
  CheckStable<tav::cInterfaceRecord>(form);
  tav::cInterfaceRecord interface;
  interface.FromRecord(form);
  for (const tav::cMeterConfig& meter : interface.meters) Check(meter.valid);
}

// There is no writer of notifications; what was read must be found by their names again.
void CheckNotification(const vorn::cRecord& form) {
  const tav::cDbCtrlIODriverNotify first(form);
  vorn::cRecord written;
  written.AppendTextPar("interface-name", first.m_interfaceName);
  written.AppendTextPar("command", first.m_command);
  written.AppendRecordPar("content", first.m_content);
  const tav::cDbCtrlIODriverNotify second(written);
  Check(second.m_interfaceName == first.m_interfaceName && second.m_command == first.m_command);
  Check(second.m_content == first.m_content);
}

// ---- the clients

// The way back to a service that keeps what it is answered.
class cKeepingChannel : public vorn::cScmChannel {
 public:
  int Send(const vorn::cMsg& msg) override {
    m_answers.push_back(msg);
    return 1;
  }
  void Close() override {}
  bool IsOpen() const override { return true; }
  const vorn::cScmPeer& GetPeer() const override { return m_peer; }

  std::vector<vorn::cMsg> m_answers;

 private:
  vorn::cScmPeer m_peer;
};

// The only answer, one of type 0 when there is none. Whatever the record, the message is taken.
vorn::cMsg Dispatch(vorn::cScmServiceIO& client, unsigned int type, const vorn::cRecord& record) {
  const auto channel = std::make_shared<cKeepingChannel>();
  vorn::cMsg msg(type);
  msg.Record() = record;
  msg.SetReplyChannel(channel);
  Check(client.DispatchMessage(msg));
  Check(channel->m_answers.size() <= 1);
  return channel->m_answers.empty() ? vorn::cMsg() : channel->m_answers.front();
}

// Never polled, so that its clients never look for a service.
vorn::cScmService* Idle() {
  static vorn::cScmService service("forms_fuzz", "/");
  return &service;
}

void CheckObisProxy(const vorn::cRecord& form) {
  static tav::cObisProxy proxy(Idle());
  proxy.loaded = false;
  tav::cObisMap map;
  map.FromRecord(form);
  Check(Dispatch(proxy, tav::obis::eMap, form).GetType() == 0);
  Check(proxy.loaded && proxy.map.ToRecord() == map.ToRecord());

  const unsigned int answer = Dispatch(proxy, tav::obis::eChanged, form).GetType();
  Check(answer == tav::obis::eChangeApplied || answer == tav::obis::eChangeNotApplied);
  Check(answer == tav::obis::eChangeApplied || proxy.map.ToRecord() == map.ToRecord());
  const auto now = proxy.map.GetEntries().size(), before = map.GetEntries().size();
  Check(now <= before + 1 && before <= now + 1);
}

void CheckStatusProxy(const vorn::cRecord& form) {
  static tav::cStatusProxy proxy(Idle());
  proxy.m_values = {{"kept", "1"}};
  proxy.m_synced = false;
  Check(Dispatch(proxy, tav::status::eValues, form).GetType() == 0 && proxy.m_synced);
  Check(proxy.m_values.Contains("kept"));
  auto merged = proxy.m_values;

  Check(Dispatch(proxy, tav::status::eReplace, form).GetType() == tav::status::eReplaced);
  Check(proxy.m_values.size() <= form.GetCount());
  if (!proxy.m_values.Contains("kept")) merged.Remove("kept");
  Check(proxy.m_values == merged);

  const vorn::cMsg all = Dispatch(proxy, tav::status::eAsk, {});
  Check(all.GetType() == tav::status::eAllValues && all.Record().GetCount() == merged.size());
  Dispatch(proxy, tav::status::eReplace, all.Record());
  Check(proxy.m_values == merged);
  Check(proxy.ToString().empty() == merged.empty());
}

void CheckAll(const vorn::cRecord& form) {
  CheckReading(form);
  CheckStatus(form);
  CheckMapEntry(form);
  CheckMap(form);
  CheckInterface(form);
  CheckStable<tav::cCollectorConfig>(form);
  CheckStable<tav::cMeterConfig>(form);
  CheckStable<tav::cPushTarget>(form);
  CheckStable<tav::cMeterTemplate>(form);
  CheckStable<tav::cDbCtrlRequest>(form);
  CheckNotification(form);
  CheckObisProxy(form);
  CheckStatusProxy(form);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vorn::SetTraceSink([](const vorn::cUnit&, int, const std::string&) {});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  vorn::cRecord record;
  if (size != 0 && (bytes[0] & 1) != 0)
    record = cScript(bytes + 1, size - 1).Build();
  else if (size != 0 && !vorn::cRecord::FromBytes(bytes + 1, size - 1, record))
    return 0;
  CheckAll(record);
  return 0;
}
