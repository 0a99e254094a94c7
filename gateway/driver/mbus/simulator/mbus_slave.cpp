// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/simulator/mbus_slave.h>

#include <iterator>

#include <gateway/driver/mbus/master/mbus_requests.h>

namespace tav::mbus {

namespace {

std::string Ack() { return {static_cast<char>(kAck)}; }

bool IsReadout(const cMBusFrame& request) {
  return request.kind == eFrameShort && (request.control & ~kFcb) == (eReqUd2 & ~kFcb);
}
bool IsSending(const cMBusFrame& request) {
  return request.kind == eFrameLong && (request.control & ~kFcb) == (eSndUd & ~kFcb);
}

bool IsAddressSetting(const cMBusFrame& request) {
  return request.information == eCiSendData && request.data.size() == 3 && request.data[0] == kPrimaryAddress[0] &&
         request.data[1] == kPrimaryAddress[1];
}

bool IsSelection(const cMBusFrame& request) {
  return IsSending(request) && request.address == kSecondary && request.information == eCiSelect &&
         request.data.size() >= kSelectionSize;
}

cMBusAddress MaskOf(cBytes data) {
  cMBusAddress mask;
  mask.id = data[0] | std::uint32_t{data[1]} << 8 | std::uint32_t{data[2]} << 16 | std::uint32_t{data[3]} << 24;
  mask.manufacturer = static_cast<std::uint16_t>(data[4] | data[5] << 8);
  mask.version = data[6];
  mask.medium = data[7];
  return mask;
}

}  // namespace

std::optional<std::string> cMBusSlave::Answer(const cMBusFrame& request, unsigned int baud, std::uint32_t now) {
  if (baud != m_baud) return std::nullopt;
  if (IsSelection(request)) return Select(request);
  if (!IsMeant(request.address)) return std::nullopt;
  std::optional<std::string> answer;
  if (request.kind == eFrameShort && request.control == eSndNke) {
    Initialise(request.address);
    answer = Ack();
  } else if (IsReadout(request)) {
    answer = Data((request.control & kFcb) != 0, now);
  } else if (IsSending(request)) {
    Take(request);
    answer = Ack();
  }
  if (request.address == kBroadcast) answer.reset();
  return answer;
}

bool cMBusSlave::IsMeant(std::uint8_t address) const {
  return address == m_primary || address == kBroadcast || address == kBroadcastReply ||
         (address == kSecondary && m_isSelected);
}

void cMBusSlave::Initialise(std::uint8_t address) {
  m_latest.clear();
  m_next = 0;
  if (address == kSecondary) m_isSelected = false;
}

std::optional<std::string> cMBusSlave::Select(const cMBusFrame& request) {
  m_isSelected = MaskOf(request.data).Matches(m_meter.GetHeader());
  if (!m_isSelected) return std::nullopt;
  m_latest.clear();
  m_next = 0;
  return Ack();
}

std::optional<std::string> cMBusSlave::Data(bool fcb, std::uint32_t now) {
  if (!m_latest.empty() && fcb == m_latestFcb) return m_latest;
  m_latestFcb = fcb;
  m_latest = m_meter.Telegram(m_next, m_primary, ++m_access, now);
  m_next = (m_next + 1) % m_meter.CountTelegrams();
  return m_latest;
}

// Settings that the meter does not have are acknowledged and change nothing, as meters do.
void cMBusSlave::Take(const cMBusFrame& request) {
  const unsigned int code = request.information;
  if (code == eCiReset) {
    m_next = 0;
    m_latest.clear();
  } else if (code >= eCiFirstBaud && code < eCiFirstBaud + std::size(kBauds)) {
    m_baud = kBauds[code - eCiFirstBaud];
  } else if (IsAddressSetting(request)) {
    m_primary = request.data[2];
  }
}

}  // namespace tav::mbus
