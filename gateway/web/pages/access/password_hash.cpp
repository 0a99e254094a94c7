// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/password_hash.h>

#include <crypt.h>

#include <array>
#include <memory>

#include <tav/framework/uuid.h>

namespace tav::pages {

namespace {

constexpr const char* kPasswordMethod = "$y$";
constexpr const char* kTokenMethod = "$5$";
constexpr unsigned long kTokenRounds = 1000;

// Empty when the library does not know the method of the setting.
std::string Crypt(const std::string& phrase, const std::string& setting) {
  const auto data = std::make_unique<crypt_data>();
  const char* const hash = crypt_r(phrase.c_str(), setting.c_str(), data.get());
  return hash == nullptr || *hash == '*' ? std::string() : std::string(hash);
}

std::string MakeSetting(const char* method, unsigned long cost) {
  std::array<char, CRYPT_GENSALT_OUTPUT_SIZE> setting{};
  const char* const made = crypt_gensalt_rn(method, cost, nullptr, 0, setting.data(), static_cast<int>(setting.size()));
  return made == nullptr ? std::string() : std::string(made);
}

// A setting to spend the time of a hash with, where there is no account.
const std::string& NobodysHash() {
  static const std::string hash = Crypt(MakeSecret(), MakeSetting(kPasswordMethod, 0));
  return hash;
}

}  // namespace

std::string HashPassword(const std::string& password, std::string& error) {
  if (password.size() < kMinPassword)
    error = "A password has at least " + std::to_string(kMinPassword) + " characters.";
  else if (password.size() > kMaxPassword)
    error = "A password has at most " + std::to_string(kMaxPassword) + " characters.";
  else if (password.find('\0') != std::string::npos)
    error = "A password has no character of the value 0.";
  else if (std::string hash = Crypt(password, MakeSetting(kPasswordMethod, 0)); !hash.empty())
    return hash;
  else
    error = "The system's crypt library makes no yescrypt hashes.";
  return {};
}

bool FitsPassword(const std::string& password, const std::string& hash) {
  const bool canFit = !hash.empty() && password.size() <= kMaxPassword && password.find('\0') == std::string::npos;
  const std::string& setting = canFit ? hash : NobodysHash();
  return AreSame(Crypt(canFit ? password : std::string(), setting), setting) && canFit;
}

std::string MakeSecret() {
  vorn::cUuid bytes;
  vorn::cUuid more;
  bytes.Create();
  more.Create();
  std::string secret;
  for (const char letter : bytes.ToString() + more.ToString())
    if (letter != '-') secret += letter;
  return secret;
}

std::string HashToken(const std::string& secret) { return Crypt(secret, MakeSetting(kTokenMethod, kTokenRounds)); }

bool FitsToken(const std::string& secret, const std::string& hash) {
  return !hash.empty() && secret.find('\0') == std::string::npos && AreSame(Crypt(secret, hash), hash);
}

bool AreSame(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  unsigned int difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    difference |= static_cast<unsigned int>(static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]));
  return difference == 0;
}

}  // namespace tav::pages
