// SPDX-License-Identifier: Apache-2.0
#include <tavctl/live_view.h>

#include <sstream>

#include <gateway/form/time_text.h>
#include <tav/framework/time.h>
#include <tavctl/failure.h>
#include <tavctl/interrupt.h>
#include <tavctl/screen.h>
#include <tavctl/text_rows.h>

namespace tav::ctl {

void cLiveView::Run() {
  cInterrupt interrupt(m_context);
  if (m_context.streams.terminal && !m_context.json)
    RunOnScreen();
  else
    RunInLines();
}

void cLiveView::Repeat(const std::function<void(const Rows&)>& show) {
  bool lost = false;
  for (std::uint64_t looks = 0; !m_context.interrupted;) {
    try {
      show(m_plan.ask());
      lost = false;
    } catch (const cFailure& failure) {
      if (failure.GetExit() != eExitUnreachable) throw;
      if (!lost) m_context.Note(failure.what());
      lost = true;
    }
    if (++looks == m_plan.count) return;
    m_plan.wait();
  }
}

cLiveView::Rows cLiveView::NewOnes(const Rows& rows) {
  Rows fresh;
  for (const vorn::cRecord& row : rows) {
    vorn::cRecord& seen = m_seen[m_plan.key(row)];
    if (seen == row) continue;
    seen = row;
    fresh.push_back(row);
  }
  return fresh;
}

void cLiveView::RunOnScreen() {
  std::unique_ptr<cScreen> screen;
  Repeat([&](const Rows& rows) {
    if (!screen) screen = std::make_unique<cScreen>(m_context.streams.out);
    std::ostringstream picture;
    picture << form::FormatTime(vorn::cTime::Now().GetSeconds()) << "  " << m_plan.title << ", Ctrl-C ends\n\n";
    cTextRows table(picture, m_plan.columns, m_context.streams.bold);
    for (const vorn::cRecord& row : rows) table.Write(row);
    table.End();
    screen->Show(picture.str());
  });
}

void cLiveView::RunInLines() {
  const auto out = m_context.Rows(m_plan.columns);
  Repeat([&](const Rows& rows) {
    for (const vorn::cRecord& row : NewOnes(rows)) out->Write(row);
    out->Flush();
  });
  out->End();
}

}  // namespace tav::ctl
