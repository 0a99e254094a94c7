// SPDX-License-Identifier: Apache-2.0
#include <tavctl/context.h>

#include <algorithm>
#include <chrono>

#include <tavctl/json_rows.h>
#include <tavctl/text_rows.h>

namespace tav::ctl {

std::unique_ptr<cRowWriter> cContext::Rows(Columns columns) const {
  if (json) return std::make_unique<cJsonRows>(streams.out, columns);
  return std::make_unique<cTextRows>(streams.out, columns, streams.bold);
}

void cContext::Note(const std::string& text) const { streams.err << "tavctl: " << text << std::endl; }

bool cContext::Await(const std::function<bool()>& holds, unsigned int milliseconds) const {
  using namespace std::chrono;
  const auto end = steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (!holds()) {
    const auto left = ceil<std::chrono::milliseconds>(end - steady_clock::now()).count();
    if (left <= 0 || interrupted) return false;
    service.Poll(static_cast<unsigned int>(left));
  }
  return true;
}

}  // namespace tav::ctl
