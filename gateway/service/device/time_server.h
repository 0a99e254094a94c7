// SPDX-License-Identifier: Apache-2.0
// cTimeServer: the service of the gateway's clock and of the state of its link to the wide area network, channel
// "time-service".
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <gateway/service/device/device_server.h>
#include <gateway/service/device/wall_clock.h>
#include <tav/framework/time.h>

namespace tav::gateway {

// Section [time] of the configuration; docs/devices.md is the list for people.
struct cTimeOptions {
  std::string clock = "simulated";  // or "kernel"

  // Empty, or what is wrong with them, beginning with the name of the key.
  std::string Check() const;
};

class cTimeServer final : public cDeviceServer {
 public:
  // No gateway of this release has run before 2024; what comes from further away than 2099 is a fault of its sender.
  static constexpr unsigned int kEarliest = 1'704'067'200;  // 2024-01-01T00:00:00Z
  static constexpr unsigned int kLatest = 4'102'444'799;    // 2099-12-31T23:59:59Z

  using Policy = std::function<bool(const vorn::cScmPeer& peer)>;
  using OnStep = std::function<void(const vorn::cTime& before, const vorn::cTime& after)>;

  // Ask IsListening for the outcome. Options that are wrong count as "simulated". clock: in place of theirs, for tests.
  explicit cTimeServer(cServiceHost* host, const cTimeOptions& options = {},
                       std::unique_ptr<cWallClock> clock = nullptr);

  // Who may set the clock; by default root and the user of this process.
  void SetPolicy(Policy policy) { m_maySet = std::move(policy); }
  // Called behind each change of the clock.
  void SetOnStep(OnStep onStep) { m_onStep = std::move(onStep); }

  // Rows utc, clock ("simulated" or "kernel"), synchronized ("yes" or "no": what the kernel says), last-set, wan ("up",
  // "down" or "unknown"), wan-since; times are ISO 8601 in UTC, "never" when there was none.
  cStateRows GetState() const override;

 private:
  static bool MaySet(const vorn::cScmPeer& peer);

  void SetTime(const vorn::cMsg& request);
  std::string Step(const vorn::cTime& to);
  void SetWan(const vorn::cMsg& request, bool up);
  vorn::cTime Now() const;

  std::unique_ptr<cWallClock> m_clock;
  Policy m_maySet = MaySet;
  OnStep m_onStep;
  std::optional<vorn::cTime> m_lastSet;
  std::optional<bool> m_wanUp;
  std::optional<vorn::cTime> m_wanSince;
};

}  // namespace tav::gateway
