// SPDX-License-Identifier: Apache-2.0
// cHeaderBlock: reads the header block that a page's output begins with: the CGI form (RFC 3875, 6.2), up to the first
// empty line. It may come in pieces. Only the fields of one table go on to the client; the rest is dropped.
//
// Pages write one line without a break of its own: in the value of Content-Type, "Cache-Control:", "Pragma:" and
// "Connection:" begin a new field, as in "Content-Type: text/htmlCache-Control: no-cache,no-store".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <gateway/web/front/http_text.h>

namespace tav::gateway::web {

class cHeaderBlock {
 public:
  enum class eState { Open, Done, Broken };

  // How many of the bytes belong to the block; what is behind them is the body. Broken takes all.
  std::size_t Take(std::string_view bytes);

  eState GetState() const { return m_state; }
  // Why it is broken.
  const std::string& GetError() const { return m_error; }

  unsigned int GetStatus() const { return m_status; }
  // What is passed on, in the page's order; names as the page wrote them.
  const std::vector<cHeaderField>& GetFields() const { return m_fields; }
  // Names of what is not.
  const std::vector<std::string>& GetDropped() const { return m_dropped; }
  // The value of the first field of that name, lower case; empty when there is none.
  std::string_view Find(std::string_view name) const;

 private:
  bool EndsHere() const;
  void Break(const std::string& error);
  void ReadLines();
  void ReadLine(std::string_view line);
  void ReadContentType(std::string_view value);
  void TakeStatus(std::string_view value);
  void TakeField(std::string_view name, std::string_view value);

  eState m_state = eState::Open;
  std::string m_text;
  std::string m_error;
  unsigned int m_status = 0;
  std::vector<cHeaderField> m_fields;
  std::vector<std::string> m_dropped;
};

}  // namespace tav::gateway::web
