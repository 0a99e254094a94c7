// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/kernel_led.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace tav::gateway {

std::string cKernelLed::Switch(bool lit) {
  std::string fault = m_maximum.empty() ? Prepare() : std::string();
  if (fault.empty()) fault = Write("brightness", lit ? m_maximum : "0");
  if (!fault.empty()) m_maximum.clear();  // it may come back as another one
  return fault;
}

std::string cKernelLed::Prepare() {
  std::error_code error;
  if (!std::filesystem::is_directory(m_directory, error)) return "there is no LED directory " + m_directory;
  // A kernel without triggers has no such file.
  if (std::filesystem::exists(m_directory + "/trigger", error))
    if (std::string fault = Write("trigger", "none"); !fault.empty()) return fault;
  return ReadMaximum();
}

std::string cKernelLed::ReadMaximum() {
  const std::string file = m_directory + "/max_brightness";
  long maximum = 0;
  if (!(std::ifstream(file) >> maximum) || maximum < 1) return file + ": expected a number from 1 on";
  m_maximum = std::to_string(maximum);
  return {};
}

std::string cKernelLed::Write(const char* file, const std::string& text) const {
  const std::string path = m_directory + "/" + file;
  const int descriptor = open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  const bool written =
      descriptor >= 0 && write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  const int code = errno;
  if (descriptor >= 0) close(descriptor);
  return written ? std::string() : path + ": cannot be written: " + std::strerror(code);
}

}  // namespace tav::gateway
