// SPDX-License-Identifier: Apache-2.0
// cPseudoLine: a serial line whose meter the test plays; a path to it that outlives it, as that of a device that is
// unplugged.
#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

class cPseudoLine {
 public:
  // link: where the line stands; replaced when there is one.
  explicit cPseudoLine(const std::string& link)
      : m_link(link), m_master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
    char name[64];
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0 ||
        ptsname_r(m_master, name, sizeof name) != 0)
      throw std::runtime_error("no pseudo terminal");
    unlink(link.c_str());
    if (symlink(name, link.c_str()) != 0) throw std::runtime_error("no link " + link);
  }
  ~cPseudoLine() { Vanish(); }
  cPseudoLine(const cPseudoLine&) = delete;
  cPseudoLine& operator=(const cPseudoLine&) = delete;

  // The device goes, and its name with it.
  void Vanish() {
    if (m_master < 0) return;
    unlink(m_link.c_str());
    close(m_master);
    m_master = -1;
  }
  // The device hangs up, its name stays.
  void HangUp() {
    close(m_master);
    m_master = -1;
  }
  bool Write(const std::string& bytes) const {
    return write(m_master, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  }
  // What was written to the line and not read yet.
  std::string Read() const {
    std::string bytes;
    char block[4096];
    for (ssize_t size = 0; (size = read(m_master, block, sizeof block)) > 0;)
      bytes.append(block, static_cast<std::size_t>(size));
    return bytes;
  }
  termios GetSettings() const {
    termios settings{};
    if (tcgetattr(m_master, &settings) != 0) throw std::runtime_error("no settings");
    return settings;
  }

 private:
  std::string m_link;
  int m_master;
};
