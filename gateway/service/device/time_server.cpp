// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/time_server.h>

#include <unistd.h>

#include <gateway/host/clock_state.h>
#include <tav/framework/trace.h>
#include <tav/service/device_protocol.h>

namespace tav::gateway {

namespace {

constexpr const char* kSimulated = "simulated";
constexpr const char* kKernel = "kernel";

std::unique_ptr<cWallClock> MakeClock(const cTimeOptions& options) {
  if (options.clock == kKernel) return std::make_unique<cKernelClock>();
  return std::make_unique<cSimulatedClock>();
}

vorn::cTime Utc(std::int64_t seconds) { return vorn::cTime::FromSeconds(static_cast<unsigned int>(seconds), true); }

std::string Text(const std::optional<vorn::cTime>& time) { return time ? time->ToISO8601String() : "never"; }

}  // namespace

std::string cTimeOptions::Check() const { return CheckChoice("clock", clock, kSimulated, kKernel); }

cTimeServer::cTimeServer(cServiceHost* host, const cTimeOptions& options, std::unique_ptr<cWallClock> clock)
    : cDeviceServer(host, time_service::kProtocol, time_service::eGetState),
      m_clock(clock ? std::move(clock) : MakeClock(options)) {
  On(time_service::eSetTime, [this](const vorn::cMsg& request) { SetTime(request); });
  On(time_service::eWanUp, [this](const vorn::cMsg& request) { SetWan(request, true); });
  On(time_service::eWanDown, [this](const vorn::cMsg& request) { SetWan(request, false); });
}

bool cTimeServer::MaySet(const vorn::cScmPeer& peer) { return peer.uid == 0 || peer.uid == geteuid(); }

void cTimeServer::SetTime(const vorn::cMsg& request) {
  const auto& channel = request.GetReplyChannel();
  if (channel != nullptr && !m_maySet(channel->GetPeer()))
    return Refuse(request, channel->GetPeer().ToString() + " may not set the clock: only root and the user of this " +
                               "service may, uid " + std::to_string(geteuid()));
  // A time is printed as its maker wanted; here all are UTC.
  const vorn::cTime to = Utc(request.Record().GetTimePar(device::kNewUtc).GetSeconds());
  if (to < Utc(kEarliest) || Utc(kLatest) < to)
    return Refuse(request, "parameter \"new-utc\": expected " + Utc(kEarliest).ToISO8601String() + " to " +
                               Utc(kLatest).ToISO8601String() + ", found " + to.ToISO8601String());
  if (const std::string fault = Step(to); !fault.empty()) return Refuse(request, fault);
  Answer(request);
  StateChanged();
}

std::string cTimeServer::Step(const vorn::cTime& to) {
  const vorn::cTime before = Now();
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitGateway");
  if (std::string fault = m_clock->Set(to.GetSeconds()); !fault.empty()) {
    vorn::Trace(unit, 4, "time-service: ", fault);
    return fault;
  }
  // Stamps before and behind this line are of two clocks: whoever reads the lines has to know.
  vorn::Trace(unit, 4, "time-service: clock (", m_clock->GetKind(), ") set from ", before.ToISO8601String(), " to ",
              to.ToISO8601String());
  m_lastSet = to;
  if (m_onStep) m_onStep(before, to);
  return {};
}

void cTimeServer::SetWan(const vorn::cMsg& request, bool up) {
  Answer(request);
  if (m_wanUp == up) return;
  m_wanUp = up;
  m_wanSince = Now();
  StateChanged();
}

vorn::cTime cTimeServer::Now() const { return Utc(m_clock->Now()); }

cStateRows cTimeServer::GetState() const {
  return {
      {"utc", Now().ToISO8601String()},
      {"clock", m_clock->GetKind()},
      {"synchronized", IsClockSynchronized() ? "yes" : "no"},
      {"last-set", Text(m_lastSet)},
      {"wan", !m_wanUp   ? "unknown"
              : *m_wanUp ? "up"
                         : "down"},
      {"wan-since", Text(m_wanSince)},
  };
}

}  // namespace tav::gateway
