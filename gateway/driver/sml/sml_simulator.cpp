// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_simulator.h>

#include <algorithm>

#include <gateway/driver/sml/dlms_units.h>
#include <gateway/driver/sml/obis_code.h>
#include <gateway/driver/sml/sml_message.h>

#include <gateway/driver/mix_bits.h>

namespace tav::sml {

namespace {

constexpr std::uint32_t kMinute = 60, kHour = 3600, kDay = 86400, kWeek = 7 * kDay;
constexpr std::uint32_t kZone = kHour;  // the house keeps Central European Time
constexpr std::int64_t kWatt = 1000;    // in milliwatts
constexpr std::int64_t kTenthWatt = 100;
constexpr std::uint64_t kTenthWattHour = 360 * 1000;  // in milliwatt seconds

// What a random number is for; each has its own sequence.
enum eDraw : std::uint32_t {
  eBaseLoad,
  eFridge,
  eFlicker,
  eLunch,
  eDinner,
  eHob,
  eKettle,
  eClouds,
  eVoltage,
  eGrid,
  eKey
};

// Whether a second of the day is within so many of a beginning.
constexpr bool Within(std::uint32_t second, std::uint32_t begin, std::uint32_t duration) {
  return second >= begin && second < begin + duration;
}

// Panels of 8 kW: a parabola from six to eighteen.
std::int64_t Sun(std::uint32_t second) {
  constexpr std::int64_t kPeak = 8000 * kWatt;
  constexpr std::int64_t kSpan = 12 * kHour;
  const std::int64_t since = std::int64_t{second} - 6 * kHour;
  return since <= 0 || since >= kSpan ? 0 : kPeak * 4 * since / kSpan * (kSpan - since) / kSpan;
}

void WriteOctets(cSmlWriter& to, std::uint64_t obis, std::string_view bytes) {
  to.List(7);
  to.Obis(obis);
  for (int i = 0; i < 4; ++i) to.Absent();
  to.Octets(bytes);
  to.Absent();
}

void WriteEnergy(cSmlWriter& to, std::uint64_t obis, std::uint32_t status, std::uint32_t time,
                 std::uint64_t milliwattSeconds) {
  to.List(7);
  to.Obis(obis);
  to.Unsigned(status, 4);
  to.SecIndex(time);
  to.Unsigned(kDlmsWattHour, 1);
  to.Signed(-1, 1);
  to.Unsigned(milliwattSeconds / kTenthWattHour, 8);
  to.Absent();
}

void WriteNumber(cSmlWriter& to, std::uint64_t obis, std::uint8_t unit, int scaler, std::int64_t value,
                 unsigned int width) {
  to.List(7);
  to.Obis(obis);
  to.Absent();
  to.Absent();
  to.Unsigned(unit, 1);
  to.Signed(scaler, 1);
  to.Signed(value, width);
  to.Absent();
}

}  // namespace

cSmlSimulator::cSmlSimulator(const cSmlSimulatorOptions& options)
    : m_options(options), m_meters(std::max(options.meters, 1u)) {
  for (unsigned int i = 0; i < m_meters.size(); ++i) {
    const std::uint32_t serial = options.serial + i;
    m_meters[i].time = options.begin;
    m_meters[i].serverId = std::string("\x0A\x01TAV\0", 6);
    for (int shift = 24; shift >= 0; shift -= 8) m_meters[i].serverId += static_cast<char>(serial >> shift & 0xFF);
  }
}

// Mixed once over all that makes the draw; the slot within the week makes the weeks alike.
std::uint32_t cSmlSimulator::Random(unsigned int meter, std::uint32_t what, std::uint32_t slot) const {
  std::uint64_t x = std::uint64_t{m_options.seed} << 32 | (m_options.serial + meter);
  x ^= (std::uint64_t{what} << 32 | slot) * kMixStep;
  return static_cast<std::uint32_t>(MixBits(MixBits(x)) >> 32);
}

cSmlLoad cSmlSimulator::LoadAt(unsigned int meter, std::uint32_t now) const {
  const std::uint32_t week = (now - now % kStep + kZone) % kWeek;
  const std::uint32_t day = week / kDay, second = week % kDay, minute = week / kMinute;
  const auto draw = [&](eDraw what, std::uint32_t slot, std::uint32_t below) {
    return Random(meter, what, slot) % below;
  };
  cSmlLoad load;
  load.phases[0] = (120 + draw(eBaseLoad, 0, 80)) * kWatt + draw(eFlicker, week / kStep, 10) * kWatt;
  if (Within(second, 17 * kHour, 6 * kHour)) load.phases[0] += 150 * kWatt;  // light
  if (Within(second, 7 * kHour + draw(eKettle, day, kHour), 4 * kMinute)) load.phases[0] += 2000 * kWatt;
  if ((week + draw(eFridge, 0, 2700)) % 2700 < 900) load.phases[1] += 90 * kWatt;
  const bool lunch = Within(second, 11 * kHour + 30 * kMinute + draw(eLunch, day, 20 * kMinute), 45 * kMinute);
  const bool dinner = Within(second, 18 * kHour + draw(eDinner, day, 30 * kMinute), kHour);
  if (dinner) load.phases[1] += 1400 * kWatt;  // oven
  if ((lunch || dinner) && draw(eHob, minute, 10) < 6) load.phases[2] += 1800 * kWatt;
  if (m_options.solar)
    for (std::int64_t& phase : load.phases)
      phase -= Sun(second) * (30 + draw(eClouds, week / (5 * kMinute), 71)) / 300 / kTenthWatt * kTenthWatt;
  return load;
}

void cSmlSimulator::AddEnergy(unsigned int meter, std::uint32_t from, std::uint32_t to, std::uint64_t& imported,
                              std::uint64_t& exported) const {
  while (from < to) {
    const std::uint32_t until = std::min(to, from - from % kStep + kStep);
    const std::int64_t energy = LoadAt(meter, from).Total() * (until - from);
    if (energy >= 0)
      imported += static_cast<std::uint64_t>(energy);
    else
      exported += static_cast<std::uint64_t>(-energy);
    from = until;
  }
}

// Whole weeks at once: since they are alike, one of them tells all.
void cSmlSimulator::Advance(unsigned int meter, std::uint32_t now) {
  cMeter& state = m_meters[meter];
  if (now <= state.time) return;
  const std::uint32_t weeks = (now - state.time) / kWeek;
  if (weeks != 0) {
    std::uint64_t imported = 0, exported = 0;
    AddEnergy(meter, state.time, state.time + kWeek, imported, exported);
    state.imported += weeks * imported;
    state.exported += weeks * exported;
    state.time += weeks * kWeek;
  }
  AddEnergy(meter, state.time, now, state.imported, state.exported);
  state.time = now;
}

std::string cSmlSimulator::Telegram(std::uint32_t now) {
  const unsigned int meter = m_next;
  m_next = (m_next + 1) % static_cast<unsigned int>(m_meters.size());
  Advance(meter, now);
  cMeter& state = m_meters[meter];
  std::uint32_t transaction = 3 * state.telegrams++;
  const auto id = [&transaction] {
    const std::uint32_t number = ++transaction;
    return std::string{static_cast<char>(number >> 24), static_cast<char>(number >> 16 & 0xFF),
                       static_cast<char>(number >> 8 & 0xFF), static_cast<char>(number & 0xFF)};
  };
  cSmlWriter to;
  to.BeginMessage(id(), 0, eSmlOpenResponse);
  to.List(6);
  to.Absent();
  to.Absent();
  to.Octets(id());
  to.Octets(state.serverId);
  to.Absent();
  to.Absent();
  to.EndMessage();
  to.BeginMessage(id(), 0, eSmlGetListResponse);
  WriteList(to, meter);
  to.EndMessage();
  to.BeginMessage(id(), 0, eSmlCloseResponse);
  to.List(1);
  to.Absent();
  to.EndMessage();
  return to.Frame();
}

void cSmlSimulator::WriteList(cSmlWriter& to, unsigned int meter) const {
  constexpr unsigned int kEntries = 12;
  const cMeter& state = m_meters[meter];
  const cSmlLoad load = LoadAt(meter, state.time);
  const std::uint32_t slot = state.time / kStep;
  const std::uint32_t uptime = state.time - m_options.begin;
  to.List(7);
  to.Absent();
  to.Octets(state.serverId);
  to.Octets(std::string_view("\x01\x00\x62\x0A\xFF\xFF", 6));
  to.SecIndex(uptime);
  to.List(kEntries + (m_options.publicKey ? 1 : 0));
  WriteOctets(to, kObisManufacturer, "TAV");
  WriteOctets(to, kObisServerId, state.serverId);
  WriteEnergy(to, PackObis(1, 0, 1, 8, 0), m_options.status, uptime, state.imported);
  WriteEnergy(to, PackObis(1, 0, 2, 8, 0), m_options.status, uptime, state.exported);
  WriteNumber(to, PackObis(1, 0, 16, 7, 0), kDlmsWatt, -1, load.Total() / kTenthWatt, 4);
  for (unsigned int phase = 0; phase < 3; ++phase)
    WriteNumber(to, PackObis(1, 0, 36 + 20 * phase, 7, 0), kDlmsWatt, -1, load.phases[phase] / kTenthWatt, 4);
  for (unsigned int phase = 0; phase < 3; ++phase)
    WriteNumber(to, PackObis(1, 0, 32 + 20 * phase, 7, 0), kDlmsVolt, -1,
                2275 + Random(meter, eVoltage + 16 * phase, slot) % 51, 2);
  WriteNumber(to, PackObis(1, 0, 14, 7, 0), kDlmsHertz, -2, 4997 + Random(meter, eGrid, slot) % 7, 2);
  if (m_options.publicKey) WriteOctets(to, kObisPublicKey, PublicKey(meter));
  to.Absent();
  to.Absent();
}

std::string cSmlSimulator::PublicKey(unsigned int meter) const {
  std::string key;
  for (std::uint32_t i = 0; i < 48; ++i) key += static_cast<char>(Random(meter, eKey, i) & 0xFF);
  return key;
}

}  // namespace tav::sml
