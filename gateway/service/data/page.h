// SPDX-License-Identifier: Apache-2.0
// cPage: the rows of one answer, up to the number asked for and to what fits a message, and the cursor behind them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <tav/framework/record.h>

namespace tav::data {

class cPage {
 public:
  // Reads "maxlen" of the request: absent or 0 means the default, more than the most the most.
  cPage(const vorn::cRecord& request, vorn::cRecord& answer, unsigned int defaultRows, unsigned int maxRows,
        std::size_t maxBytes);

  // False when the row does not fit any more: then it is not in the page, and the page has a cursor behind the row
  // before.
  bool Add(const vorn::cRecord& row, std::string_view cursor);
  // Ends a page whose source has more although the page is not full.
  void EndAt(std::string_view cursor);

 private:
  vorn::cRecord& m_answer;
  unsigned int m_left;
  std::size_t m_maxBytes;
  std::string m_cursor;  // of the last row
};

}  // namespace tav::data
