// SPDX-License-Identifier: Apache-2.0
#include <tavctl/input_file.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <tavctl/failure.h>

namespace tav::ctl {

namespace {

[[noreturn]] void Fail(const std::string& name, const char* what) {
  throw cFailure(eExitFile, name + ": cannot be " + what + ": " + std::strerror(errno));
}

std::string ReadAll(std::istream& in, const std::string& name, std::size_t most) {
  std::string bytes;
  char block[1 << 16];
  while (in.read(block, sizeof block) || in.gcount() > 0) {
    bytes.append(block, static_cast<std::size_t>(in.gcount()));
    if (bytes.size() > most) throw cFailure(eExitFile, name + ": more than " + std::to_string(most) + " bytes");
  }
  if (in.bad()) Fail(name, "read");
  return bytes;
}

bool WriteWhole(int file, const std::string& bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const ssize_t written = write(file, bytes.data() + at, bytes.size() - at);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    at += static_cast<std::size_t>(written);
  }
  return fsync(file) == 0;
}

}  // namespace

std::string ReadInput(const std::string& name, std::istream& in, std::size_t most) {
  if (name == "-") return ReadAll(in, "standard input", most);
  std::error_code ignored;
  if (std::filesystem::is_directory(name, ignored)) throw cFailure(eExitFile, name + ": is a directory");
  std::ifstream file(name, std::ios::binary);
  if (!file) Fail(name, "read");
  return ReadAll(file, name, most);
}

std::string ReadValue(const std::string& name, std::istream& in, std::size_t most) {
  std::string text = ReadInput(name, in, most);
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

void WriteFile(const std::string& name, const std::string& bytes) {
  const std::string fresh = name + ".new";
  const int file = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (file < 0) Fail(fresh, "written");
  const bool whole = WriteWhole(file, bytes);
  const int code = errno;
  close(file);
  if (whole && std::rename(fresh.c_str(), name.c_str()) == 0) return;
  if (!whole) errno = code;
  const int fault = errno;
  unlink(fresh.c_str());
  errno = fault;
  Fail(name, "written");
}

}  // namespace tav::ctl
