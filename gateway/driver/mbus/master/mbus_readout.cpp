// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_readout.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <gateway/driver/mbus/master/mbus_requests.h>
#include <gateway/driver/mbus/reader/mbus_reader.h>

namespace tav::mbus {

namespace {

// Of the deviation and the mean that each answer counts (RFC 6298 has found them good for the like).
constexpr double kDeviationShare = 0.25;
constexpr double kMeanShare = 0.125;
constexpr double kDeviations = 4;

bool HasMore(const cMBusTelegram& telegram) {
  cMBusReader reader;
  reader.Begin(telegram);
  for (cMBusRecord record; reader.Next(record);) {
  }
  return reader.HasMore();
}

std::string MeterText(const cMBusHeader& header) { return cMBusAddress::Of(header).ToString(); }

}  // namespace

// ---- what is learned of a meter

unsigned int cMBusLink::WaitMs(unsigned int longestMs) const {
  if (answerMs <= 0) return longestMs;
  const double wait = std::ceil(answerMs + kDeviations * deviationMs);
  return std::min(longestMs, std::max(kLeastWaitMs, static_cast<unsigned int>(std::min(wait, 1e9))));
}

void cMBusLink::Learn(std::int64_t newMs) {
  const double measured = std::max(1.0, static_cast<double>(newMs));
  if (answerMs <= 0) {
    answerMs = measured;
    deviationMs = measured / 2;
    return;
  }
  deviationMs += (std::abs(measured - answerMs) - deviationMs) * kDeviationShare;
  answerMs += (measured - answerMs) * kMeanShare;
}

// ---- a reading

class cMBusReadout::cState {
 public:
  cState(cMBusMaster& master, cMBusLink& link, const cMBusAddress& address, Done done)
      : m_master(master), m_link(link), m_address(address), m_done(std::move(done)) {}
  ~cState() {
    if (m_isAsking) m_master.Abandon();
  }

  void Start();

 private:
  using Step = void (cState::*)(const cMBusAnswer&);

  void Ask(const std::string& bytes, eExpected expected, Step next, unsigned int answerMs = 0,
           unsigned int retries = ~0u);
  void OnLost(const cMBusAnswer& answer);
  void OnInitialised(const cMBusAnswer& answer);
  void OnFree(const cMBusAnswer& answer);
  void OnSelected(const cMBusAnswer& answer);
  void AskData();
  void OnData(const cMBusAnswer& answer);
  void TakeTelegram(const cMBusFrame& frame);
  bool IsForeign(const cMBusTelegram& telegram, std::string& who) const;
  void End(eOutcome outcome, const std::string& cause);
  void OnEnd(const cMBusAnswer&) { Finish(); }
  void Finish();

  cMBusMaster& m_master;
  cMBusLink& m_link;
  cMBusAddress m_address;
  Done m_done;
  cMBusReadoutResult m_result;
  bool m_isAsking = false;
};

void cMBusReadout::cState::Start() {
  if (m_address.IsSecondary())
    Ask(MakeInitialise(kSecondary), eExpected::Ack, &cState::OnFree, 0, 0);
  else if (!m_link.initialised)
    Ask(MakeInitialise(m_address.primary), eExpected::Ack, &cState::OnInitialised);
  else
    AskData();
}

void cMBusReadout::cState::Ask(const std::string& bytes, eExpected expected, Step next, unsigned int answerMs,
                               unsigned int retries) {
  m_isAsking = true;
  m_master.Exchange({bytes, expected, answerMs, retries}, [this, next](const cMBusAnswer& answer) {
    m_isAsking = false;
    const bool isLost = answer.outcome == eOutcome::LineLost && next != &cState::OnEnd;
    (this->*(isLost ? &cState::OnLost : next))(answer);
  });
}

void cMBusReadout::cState::OnLost(const cMBusAnswer& answer) {
  m_link.initialised = false;
  m_result.outcome = answer.outcome;
  m_result.cause = answer.cause;
  Finish();
}

// Some meters do not know the request, and are asked all the same.
void cMBusReadout::cState::OnInitialised(const cMBusAnswer& answer) {
  m_link.fcb = true;
  m_link.initialised = answer.outcome == eOutcome::Answered;
  AskData();
}

void cMBusReadout::cState::OnFree(const cMBusAnswer&) {
  Ask(MakeSelection(m_address), eExpected::Ack, &cState::OnSelected);
}

void cMBusReadout::cState::OnSelected(const cMBusAnswer& answer) {
  if (answer.outcome != eOutcome::Answered) {
    End(answer.outcome, "the selection: " + answer.cause);
    return;
  }
  m_link.fcb = true;  // the selection has begun anew
  AskData();
}

void cMBusReadout::cState::AskData() {
  Ask(MakeReadoutRequest(m_address.primary, m_link.fcb), eExpected::Data, &cState::OnData,
      m_link.WaitMs(m_master.LongestAnswerMs()));
}

void cMBusReadout::cState::OnData(const cMBusAnswer& answer) {
  if (answer.outcome == eOutcome::Answered) {
    if (answer.attempts == 1) m_link.Learn(answer.answerMs);  // else nobody knows which request it answers
    TakeTelegram(answer.frame);
    return;
  }
  m_link.answerMs = m_link.deviationMs = 0;  // it may have become slower
  m_link.initialised = false;
  End(answer.outcome, answer.cause);
}

void cMBusReadout::cState::TakeTelegram(const cMBusFrame& frame) {
  if (frame.kind == eFrameAck) return End(eOutcome::Damaged, "the meter has no data: it answers without any");
  cMBusTelegram telegram;
  cMBusFault fault;
  const bool isReadable = ReadTelegram(frame, telegram, fault);
  std::string who;
  if (isReadable && IsForeign(telegram, who)) return End(eOutcome::Collision, who + " has answered");
  m_link.fcb = !m_link.fcb;
  m_link.initialised = true;
  m_result.frames.emplace_back(frame.bytes.begin(), frame.bytes.end());
  if (!isReadable) return End(eOutcome::Damaged, fault.ToString());
  if (telegram.information == eCiError) {
    const std::uint8_t code = telegram.data.empty() ? std::uint8_t{0} : telegram.data[0];
    End(eOutcome::Damaged, std::string("the meter reports an error: ") + ApplicationErrorText(code));
  } else if (!HasMore(telegram)) {
    End(eOutcome::Answered, {});
  } else if (m_result.frames.size() == kMostTelegrams) {
    End(eOutcome::Damaged, "the meter has more than " + std::to_string(kMostTelegrams) + " telegrams");
  } else {
    AskData();
  }
}

// An address of its own tells who answers; of a selection its header, where it has one.
bool cMBusReadout::cState::IsForeign(const cMBusTelegram& telegram, std::string& who) const {
  if (m_address.IsSecondary()) {
    who = "the meter " + MeterText(telegram.header);
    return telegram.header.hasMeter && !m_address.Matches(telegram.header);
  }
  who = "address " + std::to_string(telegram.address);
  return m_address.primary <= kLastPrimary && telegram.address != m_address.primary;
}

void cMBusReadout::cState::End(eOutcome outcome, const std::string& cause) {
  m_result.outcome = outcome;
  m_result.cause = cause;
  if (m_address.IsSecondary())
    Ask(MakeInitialise(kSecondary), eExpected::Ack, &cState::OnEnd, 0, 0);
  else
    Finish();
}

// What is called may end this object.
void cMBusReadout::cState::Finish() {
  const cMBusReadoutResult result = std::exchange(m_result, {});
  const Done done = std::exchange(m_done, nullptr);
  done(result);
}

cMBusReadout::cMBusReadout(cMBusMaster& master, cMBusLink& link, const cMBusAddress& address, Done done)
    : m_state(std::make_unique<cState>(master, link, address, std::move(done))) {}

cMBusReadout::~cMBusReadout() = default;

void cMBusReadout::Start() { m_state->Start(); }

}  // namespace tav::mbus
