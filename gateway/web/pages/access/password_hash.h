// SPDX-License-Identifier: Apache-2.0
// Passwords and tokens as they are kept: salted, by the system's own crypt library (yescrypt for passwords; tokens are
// random themselves and need no slow hash).
#pragma once

#include <string>

namespace tav::pages {

constexpr std::size_t kMinPassword = 8;  // bytes
constexpr std::size_t kMaxPassword = 256;

// Empty when it cannot be a password, with why in error.
std::string HashPassword(const std::string& password, std::string& error);
// Takes as long for a wrong password as for a right one. An empty hash fits none, and takes as long too.
bool FitsPassword(const std::string& password, const std::string& hash);

// A random text of 64 hexadecimal digits, 244 bits.
std::string MakeSecret();
std::string HashToken(const std::string& secret);
bool FitsToken(const std::string& secret, const std::string& hash);
// Compares without telling by time where they differ.
bool AreSame(const std::string& a, const std::string& b);

}  // namespace tav::pages
