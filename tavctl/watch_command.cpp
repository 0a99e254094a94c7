// SPDX-License-Identifier: Apache-2.0
#include <tavctl/watch_command.h>

#include <sstream>

#include <tav/framework/helper.h>
#include <tav/framework/time.h>
#include <tavctl/failure.h>
#include <tavctl/interrupt.h>
#include <tavctl/options.h>
#include <tavctl/screen.h>
#include <tavctl/text_rows.h>
#include <tavctl/time_text.h>
#include <tavctl/value_columns.h>

namespace tav::ctl {

void cWatchCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "METER", m_meter, "Identifier of the meter", eNeed::Optional);
  AddSeconds(app, "--interval", m_intervalMs, "Seconds between two looks (default 2)");
  AddNumber(app, "--count", m_count, "End after so many looks, 0: never (default 0)");
}

eExit cWatchCommand::Run(cContext& context) {
  cInterrupt interrupt(context);
  if (context.streams.terminal && !context.json)
    RunOnScreen(context);
  else
    RunInLines(context);
  return eExitDone;
}

// A service that goes away is waited for, once it was there.
void cWatchCommand::Repeat(cContext& context, const std::function<void(const Rows&)>& show) {
  cDataQuery data(context);
  bool lost = false;
  for (std::uint64_t looks = 0; !context.interrupted;) {
    try {
      show(Ask(data));
      lost = false;
    } catch (const cFailure& failure) {
      if (failure.GetExit() != eExitUnreachable) throw;
      if (!lost) context.Note(failure.what());
      lost = true;
    }
    if (++looks == m_count) return;
    context.Await([] { return false; }, m_intervalMs);
  }
}

cWatchCommand::Rows cWatchCommand::Ask(cDataQuery& data) const {
  cDbCtrlRequest request;
  request.m_meterID = m_meter;
  Rows rows;
  data.Select(db_ctrl::eGetLastValues, request, 0, [&](const vorn::cRecord& row) { rows.push_back(row); });
  return rows;
}

cWatchCommand::Rows cWatchCommand::NewOnes(const Rows& rows) {
  Rows fresh;
  for (const vorn::cRecord& row : rows) {
    vorn::cRecord& seen = m_seen[row.GetTextPar(db_ctrl::kMeterId) + '\n' + row.GetTextPar(db_ctrl::kObisId)];
    if (seen == row) continue;
    seen = row;
    fresh.push_back(row);
  }
  return fresh;
}

void cWatchCommand::RunOnScreen(cContext& context) {
  std::unique_ptr<cScreen> screen;
  Repeat(context, [&](const Rows& rows) {
    if (!screen) screen = std::make_unique<cScreen>(context.streams.out);
    std::ostringstream picture;
    picture << FormatTime(vorn::cTime::Now().GetSeconds()) << "  "
            << vorn::FormatString("every %g s, Ctrl-C ends", m_intervalMs / 1000.0) << "\n\n";
    cTextRows table(picture, kLastValueColumns, context.streams.bold);
    for (const vorn::cRecord& row : rows) table.Write(row);
    table.End();
    screen->Show(picture.str());
  });
}

void cWatchCommand::RunInLines(cContext& context) {
  const auto out = context.Rows(kLastValueColumns);
  Repeat(context, [&](const Rows& rows) {
    for (const vorn::cRecord& row : NewOnes(rows)) out->Write(row);
    out->Flush();
  });
  out->End();
}

}  // namespace tav::ctl
