// SPDX-License-Identifier: Apache-2.0
// cResultPage: the rows of a result that one answer takes: up to a number, and to what fits a message.
#pragma once

#include <cstddef>
#include <string_view>

#include <tav/framework/record.h>
#include <tav/framework/scm_channel.h>

namespace tav::data {

class cResultPage {
 public:
  // Rows of one answer when the request does not say (0), and at most; bytes of them.
  static constexpr unsigned int kDefaultRows = 100;
  static constexpr unsigned int kMaxRows = 10'000;
  static constexpr std::size_t kMaxBytes = vorn::kMaxFrameSize / 2;

  // Rows are appended to the answer under that name.
  cResultPage(vorn::cRecord& answer, std::string_view name, unsigned int rows)
      : m_answer(answer), m_name(name), m_rows(rows) {}

  // False when the row does not fit any more: then it is not in the page. The first one fits whatever its size is.
  bool Add(const vorn::cRecord& row);
  unsigned int GetCount() const { return m_count; }

 private:
  vorn::cRecord& m_answer;
  std::string_view m_name;
  unsigned int m_rows;
  unsigned int m_count = 0;
};

}  // namespace tav::data
