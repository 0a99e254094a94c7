// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_master.h>

#include <algorithm>
#include <utility>

#include <gateway/driver/input/descriptor_input.h>
#include <gateway/driver/mbus/master/mbus_timing.h>
#include <gateway/driver/mbus/master/mbus_window.h>
#include <gateway/driver/unit_driver.h>
#include <gateway/host/task.h>

namespace tav::mbus {

namespace {

constexpr std::int64_t kOpeningMs = 10'000;  // a line that is neither open nor lost by then counts as lost
constexpr std::int64_t kMostNoiseMs = 5000;  // a line that never falls silent is not waited for any longer

}  // namespace

class cMBusMaster::cState {
 public:
  cState(cMBusMaster& master, gateway::cServiceHost* host, const cMBusLineSettings& settings)
      : m_master(master),
        m_host(host),
        m_settings(settings),
        m_step(host, [this] { OnStep(); }),
        m_reopen(host, [this] { m_line.OnTimer(); }),
        m_line(host, MakeSpec(settings), MakeEvents(), m_reopen.GetType()) {}

  void Exchange(const cMBusRequest& request, Done done) {
    m_request = request;
    m_done = std::move(done);
    m_attempts = 0;
    m_outcome = eOutcome::Silent;
    m_cause.clear();
    AwaitQuiet();
  }
  void Abandon() {
    if (m_phase == ePhase::Awaiting) m_notBefore = std::max(m_due, m_deadline);  // it may still be answered
    m_phase = ePhase::Idle;
    m_step.Stop();
    m_done = nullptr;
  }
  bool IsBusy() const { return m_phase != ePhase::Idle; }
  void SetBaud(unsigned int baud) { m_settings.input.baud = baud; }
  bool IsOpen() const { return m_line.IsOpen(); }
  const cMBusLineSettings& GetSettings() const { return m_settings; }
  unsigned int LongestAnswerMs() const {
    return m_settings.longestAnswerMs != 0 ? m_settings.longestAnswerMs : Timing().LongestAnswerMs();
  }

 private:
  // Opening: the line never was open nor lost. Quiet: waiting until the line may be used.
  enum class ePhase { Idle, Opening, Quiet, Awaiting, Lost };

  static cInputSpec MakeSpec(const cMBusLineSettings& settings) {
    cInputSpec spec = settings.input;
    spec.exclusive = true;
    return spec;
  }
  cInputEvents MakeEvents();
  std::int64_t Now() const { return m_host->GetClock().Now(); }
  cMBusTiming Timing() const { return {m_settings.input.baud, m_settings.input.kind == eInputKind::Tcp}; }
  unsigned int Retries() const { return m_request.retries != ~0u ? m_request.retries : m_settings.retries; }
  void At(std::int64_t due);
  void OnStep();
  void AwaitQuiet();
  void TrySend();
  std::int64_t QuietAt() const;
  void Send();
  void Conclude();
  bool IsRepeated(eOutcome outcome) const;
  void Fail(eOutcome outcome, const std::string& cause);
  void Finish(const cMBusFrame& frame);
  void OnBytes(cBytes bytes);
  void OnOpen();
  void OnLost(const std::string& reason);

  cMBusMaster& m_master;
  gateway::cServiceHost* m_host;
  cMBusLineSettings m_settings;
  ePhase m_phase = ePhase::Idle;
  cMBusRequest m_request;
  Done m_done;
  cMBusWindow m_window;
  unsigned int m_attempts = 0;
  unsigned int m_baud = m_settings.input.baud;  // of the line
  eOutcome m_outcome = eOutcome::Silent;        // of the attempts up to now
  std::string m_cause;
  std::string m_lossReason;  // empty while the line is open or on its way the first time
  std::int64_t m_due = 0;    // of the next step
  std::int64_t m_quietSince = 0;
  std::int64_t m_notBefore = 0;  // the next request
  std::int64_t m_lastByteAt = 0;
  std::int64_t m_sentAt = 0;    // the request's last byte
  std::int64_t m_deadline = 0;  // of the answer's first byte
  std::int64_t m_firstAt = 0;   // which came then
  bool m_isGarbled = false;     // what came last: the line is waited for longer
  bool m_echoTold = false;
  gateway::cTask m_step, m_reopen;
  cDescriptorInput m_line;
};

cInputEvents cMBusMaster::cState::MakeEvents() {
  cInputEvents events;
  events.onBytes = [this](const unsigned char* bytes, std::size_t size) { OnBytes({bytes, size}); };
  events.onOpen = [this] { OnOpen(); };
  events.onLost = [this](const std::string& reason) { OnLost(reason); };
  events.onEnd = [this](const std::string& why) {
    OnLost(why.empty() ? m_settings.input.ToString() + " cannot be asked" : why);
  };
  return events;
}

void cMBusMaster::cState::At(std::int64_t due) {
  m_due = due;
  m_step.Start(static_cast<unsigned int>(std::max<std::int64_t>(due - Now(), 0)));
}

void cMBusMaster::cState::OnStep() {
  switch (m_phase) {
    case ePhase::Idle:
      return;
    case ePhase::Opening:
      return Fail(eOutcome::LineLost, "the line does not open");
    case ePhase::Quiet:
      return TrySend();
    case ePhase::Awaiting:
      return Conclude();
    case ePhase::Lost:
      return Finish({});
  }
}

// ---- asking

void cMBusMaster::cState::AwaitQuiet() {
  m_phase = ePhase::Quiet;
  m_quietSince = Now();
  At(m_quietSince);
}

void cMBusMaster::cState::TrySend() {
  m_line.ReadNow();
  if (m_phase != ePhase::Quiet) return;
  if (!m_line.IsOpen() && !m_lossReason.empty()) {
    Fail(eOutcome::LineLost, m_lossReason);
  } else if (!m_line.IsOpen()) {
    m_phase = ePhase::Opening;
    At(Now() + kOpeningMs);
  } else if (Now() >= QuietAt()) {
    Send();
  } else if (m_lastByteAt - m_quietSince > kMostNoiseMs) {
    Fail(eOutcome::Damaged, "the line does not fall silent");
  } else {
    At(QuietAt());
  }
}

std::int64_t cMBusMaster::cState::QuietAt() const {
  const unsigned int quiet = m_isGarbled ? Timing().GapMs() : Timing().IdleMs();
  return std::max(m_notBefore, m_lastByteAt + quiet);
}

void cMBusMaster::cState::Send() {
  if (std::exchange(m_baud, m_settings.input.baud) != m_settings.input.baud) m_line.SetBaud(m_baud);
  ++m_attempts;
  m_window.Begin(m_request.bytes, m_request.expected, m_settings.echo);
  m_line.Write(m_request.bytes);
  m_sentAt = Now() + Timing().SendMs(m_request.bytes.size());
  m_firstAt = m_sentAt;
  const bool isAnswered = m_request.expected != eExpected::Nothing;
  const unsigned int wait = m_request.answerMs != 0 ? m_request.answerMs : LongestAnswerMs();
  m_deadline = m_sentAt + (isAnswered ? wait : 0);
  m_phase = ePhase::Awaiting;
  At(m_deadline);
  if (m_master.onBytes) m_master.onBytes(true, BytesOf(m_request.bytes));
}

// ---- what comes

void cMBusMaster::cState::OnBytes(cBytes bytes) {
  m_lastByteAt = Now();
  if (m_phase == ePhase::Awaiting && m_request.expected != eExpected::Nothing) {
    const bool isFirst = !m_window.HasBytes();
    m_window.Take(bytes);
    if (isFirst) m_firstAt = std::max(m_lastByteAt, m_sentAt);
    if (!m_window.HasBytes())
      At(m_deadline);
    else if (m_window.IsFull())
      At(m_lastByteAt);
    else
      At(m_lastByteAt + (m_window.IsWhole() ? Timing().IdleMs() : Timing().GapMs()));
  }
  if (m_master.onBytes) m_master.onBytes(false, bytes);
}

void cMBusMaster::cState::Conclude() {
  cMBusFrame frame;
  std::string cause;
  const bool isAnswered = m_request.expected != eExpected::Nothing;
  const eOutcome outcome = isAnswered ? m_window.Judge(frame, cause) : eOutcome::Answered;
  m_isGarbled = outcome == eOutcome::Collision || outcome == eOutcome::Damaged;
  if (m_window.SawEcho() && !m_settings.echo && !std::exchange(m_echoTold, true))
    vorn::Trace(DriverUnit(), 4, m_settings.input.ToString(), " gives back what is sent; set echo");
  // Silence after something worse tells less.
  if (outcome != eOutcome::Silent || m_cause.empty()) {
    m_outcome = outcome;
    m_cause = cause;
  }
  if (IsRepeated(outcome))
    AwaitQuiet();
  else
    Finish(frame);
}

bool cMBusMaster::cState::IsRepeated(eOutcome outcome) const {
  if (outcome == eOutcome::Answered || m_attempts > Retries()) return false;
  return outcome != eOutcome::Collision || m_request.repeatsCollision;
}

void cMBusMaster::cState::Fail(eOutcome outcome, const std::string& cause) {
  m_outcome = outcome;
  m_cause = cause;
  Finish({});
}

// What is called may ask for the next thing, and may end this object.
void cMBusMaster::cState::Finish(const cMBusFrame& frame) {
  m_phase = ePhase::Idle;
  m_step.Stop();
  const Done done = std::exchange(m_done, nullptr);
  done({m_outcome, frame, m_outcome == eOutcome::Answered ? std::string() : m_cause, m_attempts, m_firstAt - m_sentAt});
}

// ---- the line

void cMBusMaster::cState::OnOpen() {
  m_lossReason.clear();
  m_isGarbled = false;
  if (m_phase == ePhase::Opening) AwaitQuiet();
  if (m_master.onOpen) m_master.onOpen();
}

void cMBusMaster::cState::OnLost(const std::string& reason) {
  m_lossReason = reason;
  if (IsBusy()) {
    m_phase = ePhase::Lost;
    m_outcome = eOutcome::LineLost;
    m_cause = reason;
    At(Now());
  }
  if (m_master.onLost) m_master.onLost(reason);
}

cMBusMaster::cMBusMaster(gateway::cServiceHost* host, const cMBusLineSettings& settings)
    : m_state(std::make_unique<cState>(*this, host, settings)) {}

cMBusMaster::~cMBusMaster() = default;

void cMBusMaster::Exchange(const cMBusRequest& request, Done done) { m_state->Exchange(request, std::move(done)); }
void cMBusMaster::Abandon() { m_state->Abandon(); }
bool cMBusMaster::IsBusy() const { return m_state->IsBusy(); }
void cMBusMaster::SetBaud(unsigned int baud) { m_state->SetBaud(baud); }
bool cMBusMaster::IsOpen() const { return m_state->IsOpen(); }
const cMBusLineSettings& cMBusMaster::GetSettings() const { return m_state->GetSettings(); }
unsigned int cMBusMaster::LongestAnswerMs() const { return m_state->LongestAnswerMs(); }

}  // namespace tav::mbus
