// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/explain/mbus_explain.h>

#include <utility>

#include <gateway/driver/capture_bytes.h>
#include <gateway/driver/mbus/explain/mbus_document.h>
#include <gateway/driver/mbus/explain/mbus_listing.h>
#include <gateway/driver/mbus/explain/mbus_pieces.h>
#include <gateway/driver/mbus/reader/mbus_reader.h>
#include <tav/record/meter_tav.h>

namespace tav::mbus {

namespace {

class cExplainer {
 public:
  explicit cExplainer(const cMBusNamer& namer) : m_namer(namer) {}

  cExplanation Run(cBytes capture);

 private:
  void OnNothing(cBytes capture);
  void OnFrame(const cMBusPiece& piece);
  void OnAnswer(const cMBusFrame& frame);
  void OnRecords(const cMBusTelegram& telegram);
  cObisNaming Name(const cMBusTelegram& telegram, const cMBusRecord& record) const;
  void Blame(const cMBusFault& fault);

  const cMBusNamer& m_namer;
  cMBusListing m_listing;
  cMBusDocument m_document;
  cMBusReader m_reader;
  cExplanation m_result;
  bool m_hasFrame = false;
  bool m_isGood = true;  // of the telegram at hand
  cMBusFault m_fault;    // the first one, of the telegram at hand
};

cExplanation cExplainer::Run(cBytes capture) {
  cMBusPieces pieces(capture);
  for (cMBusPiece piece; pieces.Next(piece);) {
    if (piece.kind == ePieceNoise) {
      m_result.counts.skippedBytes += piece.frame.bytes.size();
      m_listing.Noise(piece);
    } else {
      OnFrame(piece);
    }
  }
  if (!m_hasFrame && !capture.empty()) OnNothing(capture);
  m_result.listing = m_listing.GetText();
  m_result.json = m_document.ToText(m_result.counts);
  return std::move(m_result);
}

// A capture without a frame is a telegram that is none.
void cExplainer::OnNothing(cBytes capture) {
  cMBusPiece piece;
  piece.kind = ePieceBroken;
  piece.frame.bytes = capture;
  ReadFrame(capture, piece.frame, piece.fault);
  m_document.Begin(piece);
  m_document.End(&piece.fault, false);
  m_listing.Fault(piece.fault);
  ++m_result.counts.bad;
  m_result.firstBad = "at offset 0, " + piece.fault.ToString();
}

void cExplainer::OnFrame(const cMBusPiece& piece) {
  m_isGood = m_hasFrame = true;
  m_listing.BeginFrame(piece);
  m_document.Begin(piece);
  if (piece.kind != ePieceFrame) Blame(piece.fault);
  m_reader.Begin({});
  const bool hasFields = m_isGood || piece.fault.offset >= kDataOffset;
  if (piece.frame.kind == eFrameLong && hasFields) OnAnswer(piece.frame);
  m_listing.EndFrame();
  if (!m_isGood) m_listing.Fault(m_fault);
  if (!m_isGood && m_result.firstBad.empty())
    m_result.firstBad = "at offset " + std::to_string(piece.offset) + ", " + m_fault.ToString();
  m_document.End(m_isGood ? nullptr : &m_fault, m_reader.HasMore());
  ++(m_isGood ? m_result.counts.good : piece.kind == ePieceCut ? m_result.counts.incomplete : m_result.counts.bad);
}

void cExplainer::OnAnswer(const cMBusFrame& frame) {
  cMBusTelegram telegram;
  cMBusFault fault;
  if (!ReadTelegram(frame, telegram, fault)) return Blame(fault);
  m_listing.Header(telegram);
  m_document.Header(telegram);
  if (telegram.HasRecords()) OnRecords(telegram);
}

void cExplainer::OnRecords(const cMBusTelegram& telegram) {
  m_reader.Begin(telegram);
  cMBusRecord record;
  for (std::size_t number = 0; m_reader.Next(record); ++number) {
    const cObisNaming naming = Name(telegram, record);
    m_listing.Record(telegram, record, number, naming);
    m_document.Record(record, number, naming);
  }
  if (m_reader.HasFault()) Blame(m_reader.GetFault());
}

cObisNaming cExplainer::Name(const cMBusTelegram& telegram, const cMBusRecord& record) const {
  if (!m_namer || record.vib.empty()) return {};
  const cMBusHeader& header = telegram.header;
  const std::string medium = header.hasMeter ? cMeterTav::GetMbusMediumText(header.medium) : std::string();
  return m_namer({std::to_string(telegram.address), medium, record.dib, record.vib});
}

void cExplainer::Blame(const cMBusFault& fault) {
  if (m_isGood) m_fault = fault;
  m_isGood = false;
}

}  // namespace

cExplanation ExplainMBus(std::string_view capture, const cMBusNamer& namer) {
  return cExplainer(namer).Run(cCaptureBytes(capture).Get());
}

}  // namespace tav::mbus
