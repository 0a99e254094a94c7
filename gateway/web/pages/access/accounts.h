// SPDX-License-Identifier: Apache-2.0
// cAccounts: who may see the pages, and the tokens of programs, as one file (JSON, mode 0600). Every change is written
// before it counts: a fresh file takes the old one's place.
#pragma once

#include <string>
#include <vector>

#include <gateway/web/pages/core/visitor.h>

namespace tav::pages {

struct cAccount {
  std::string name;
  eRole role = eRole::Viewer;
  std::string hash;
};

// What a program shows to read the interface for programs: "tav_<id>_<secret>". Read only, always.
struct cToken {
  std::string id;
  std::string note;  // what it is for
  std::string hash;
};

class cAccounts {
 public:
  static constexpr std::size_t kMaxTokens = 32;
  static constexpr std::size_t kMaxAccounts = 32;
  static constexpr std::size_t kMaxName = 64;  // bytes of a name and of a note

  explicit cAccounts(std::string file) : m_file(std::move(file)) {}

  // False, and in error why, when there is a file that cannot be read. No file: no accounts.
  bool Load(std::string& error);
  bool IsEmpty() const { return m_accounts.empty(); }
  const std::vector<cAccount>& GetAccounts() const { return m_accounts; }
  const std::vector<cToken>& GetTokens() const { return m_tokens; }
  // Null when there is none of that name.
  const cAccount* Find(const std::string& name) const;

  // ---- changes; false, and in error why, when it could not be written: then nothing has changed
  // There is always an account that may change things: the last one keeps its role and is not removed.
  bool Set(const std::string& name, eRole role, const std::string& password, std::string& error);
  bool Remove(const std::string& name, std::string& error);
  // The token is told this once.
  bool AddToken(const std::string& note, std::string& token, std::string& error);
  bool RemoveToken(const std::string& id, std::string& error);

  // Whether a token is one of ours.
  bool KnowsToken(const std::string& token) const;

 private:
  bool Save(const std::vector<cAccount>& accounts, const std::vector<cToken>& tokens, std::string& error);

  std::string m_file;
  std::vector<cAccount> m_accounts;
  std::vector<cToken> m_tokens;
};

// "admin" and "viewer".
std::string RoleText(eRole role);
bool ReadRole(const std::string& text, eRole& role);

}  // namespace tav::pages
