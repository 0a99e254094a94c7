// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/accounts.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include <gateway/form/utf8.h>
#include <gateway/host/private_file.h>
#include <gateway/web/pages/access/password_hash.h>

namespace tav::pages {

namespace {

using cJson = nlohmann::ordered_json;

constexpr std::string_view kTokenMark = "tav_";
constexpr std::size_t kTokenId = 8;
constexpr unsigned int kVersion = 1;

bool IsName(const std::string& name) {
  return !name.empty() && name.size() <= cAccounts::kMaxName &&
         name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-@") ==
             std::string::npos;
}

cJson ToJson(const std::vector<cAccount>& accounts, const std::vector<cToken>& tokens) {
  cJson document = {{"version", kVersion}, {"accounts", cJson::array()}, {"tokens", cJson::array()}};
  for (const cAccount& account : accounts)
    document["accounts"].push_back({{"name", account.name}, {"role", RoleText(account.role)}, {"hash", account.hash}});
  for (const cToken& token : tokens)
    document["tokens"].push_back({{"id", token.id}, {"note", token.note}, {"hash", token.hash}});
  return document;
}

// Throws what the JSON library throws.
void FromJson(const cJson& document, std::vector<cAccount>& accounts, std::vector<cToken>& tokens) {
  if (document.at("version").get<unsigned int>() != kVersion) throw std::runtime_error("unknown version");
  for (const cJson& entry : document.at("accounts")) {
    cAccount account{entry.at("name").get<std::string>(), eRole::Viewer, entry.at("hash").get<std::string>()};
    if (!ReadRole(entry.at("role").get<std::string>(), account.role)) throw std::runtime_error("unknown role");
    accounts.push_back(std::move(account));
  }
  for (const cJson& entry : document.at("tokens"))
    tokens.push_back(
        {entry.at("id").get<std::string>(), entry.at("note").get<std::string>(), entry.at("hash").get<std::string>()});
}

bool HasAdmin(const std::vector<cAccount>& accounts, std::string& error) {
  if (std::any_of(accounts.begin(), accounts.end(), [](const cAccount& a) { return a.role == eRole::Admin; }))
    return true;
  error = "There has to be an account that may change things.";
  return false;
}

template <typename Entries>
auto FindNamed(Entries& entries, const std::string& name) {
  return std::find_if(entries.begin(), entries.end(), [&](const cAccount& account) { return account.name == name; });
}

}  // namespace

std::string RoleText(eRole role) { return role == eRole::Admin ? "admin" : "viewer"; }

bool ReadRole(const std::string& text, eRole& role) {
  if (text != "admin" && text != "viewer") return false;
  role = text == "admin" ? eRole::Admin : eRole::Viewer;
  return true;
}

bool cAccounts::Load(std::string& error) {
  std::ifstream in(m_file);
  if (!in) {
    if (errno == ENOENT) return true;
    error = "accounts file '" + m_file + "' cannot be read: " + std::strerror(errno);
    return false;
  }
  try {
    std::vector<cAccount> accounts;
    std::vector<cToken> tokens;
    FromJson(cJson::parse(in), accounts, tokens);
    m_accounts = std::move(accounts);
    m_tokens = std::move(tokens);
    return true;
  } catch (const std::exception& fault) {
    error = "accounts file '" + m_file + "' is damaged: " + fault.what();
    return false;
  }
}

const cAccount* cAccounts::Find(const std::string& name) const {
  const auto at = FindNamed(m_accounts, name);
  return at != m_accounts.end() ? &*at : nullptr;
}

bool cAccounts::Save(const std::vector<cAccount>& accounts, const std::vector<cToken>& tokens, std::string& error) {
  error = gateway::ReplacePrivateFile(
      m_file, ToJson(accounts, tokens).dump(1, ' ', false, cJson::error_handler_t::replace) + "\n");
  if (!error.empty()) return false;
  m_accounts = accounts;
  m_tokens = tokens;
  return true;
}

// ---- changes

bool cAccounts::Set(const std::string& name, eRole role, const std::string& password, std::string& error) {
  if (!IsName(name)) {
    error = "A name has 1 to " + std::to_string(kMaxName) + " letters, digits or . _ - @.";
    return false;
  }
  const std::string hash = HashPassword(password, error);
  if (hash.empty()) return false;
  std::vector<cAccount> accounts = m_accounts;
  if (const auto at = FindNamed(accounts, name); at != accounts.end())
    *at = {name, role, hash};
  else if (accounts.size() < kMaxAccounts)
    accounts.push_back({name, role, hash});
  else {
    error = "There are " + std::to_string(kMaxAccounts) + " accounts: remove one first.";
    return false;
  }
  return HasAdmin(accounts, error) && Save(accounts, m_tokens, error);
}

bool cAccounts::Remove(const std::string& name, std::string& error) {
  std::vector<cAccount> accounts = m_accounts;
  const auto at = FindNamed(accounts, name);
  if (at == accounts.end()) {
    error = "There is no account '" + name + "'.";
    return false;
  }
  accounts.erase(at);
  return HasAdmin(accounts, error) && Save(accounts, m_tokens, error);
}

bool cAccounts::AddToken(const std::string& given, std::string& token, std::string& error) {
  const std::string note = form::ToUtf8(given);
  if (note.empty() || note.size() > kMaxName) {
    error = "Say in 1 to " + std::to_string(kMaxName) + " characters what the token is for.";
    return false;
  }
  if (m_tokens.size() >= kMaxTokens) {
    error = "There are " + std::to_string(kMaxTokens) + " tokens: remove one first.";
    return false;
  }
  const std::string id = MakeSecret().substr(0, kTokenId);
  const std::string secret = MakeSecret();
  std::vector<cToken> tokens = m_tokens;
  tokens.push_back({id, note, HashToken(secret)});
  if (!Save(m_accounts, tokens, error)) return false;
  token = std::string(kTokenMark) + id + "_" + secret;
  return true;
}

bool cAccounts::RemoveToken(const std::string& id, std::string& error) {
  std::vector<cToken> tokens = m_tokens;
  if (std::erase_if(tokens, [&](const cToken& token) { return token.id == id; }) == 0) {
    error = "There is no token '" + id + "'.";
    return false;
  }
  return Save(m_accounts, tokens, error);
}

bool cAccounts::KnowsToken(const std::string& token) const {
  if (!token.starts_with(kTokenMark) || token.size() <= kTokenMark.size() + kTokenId + 1) return false;
  const std::string id = token.substr(kTokenMark.size(), kTokenId);
  const std::string secret = token.substr(kTokenMark.size() + kTokenId + 1);
  for (const cToken& known : m_tokens)
    if (known.id == id) return FitsToken(secret, known.hash);
  return false;
}

}  // namespace tav::pages
