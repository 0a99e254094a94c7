// SPDX-License-Identifier: Apache-2.0
#include <tavctl/screen.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <sstream>

namespace tav::ctl {

namespace {

// Control sequences of ECMA-48 and of the DEC private modes.
constexpr const char* kClear = "\x1b[2J";
constexpr const char* kHome = "\x1b[H";
constexpr const char* kClearLine = "\x1b[K";
constexpr const char* kClearBelow = "\x1b[J";
constexpr const char* kCutLines = "\x1b[?7l";
constexpr const char* kWrapLines = "\x1b[?7h";

constexpr unsigned int kUsualRows = 24;

unsigned int CountRows() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row != 0 ? size.ws_row : kUsualRows;
}

}  // namespace

cScreen::cScreen(std::ostream& out) : m_out(out) { m_out << kCutLines << kClear; }

cScreen::~cScreen() { m_out << kWrapLines << std::flush; }

void cScreen::Show(const std::string& picture) {
  std::istringstream lines(picture);
  std::string line;
  m_out << kHome;
  // The cursor needs the last row.
  for (unsigned int row = 1; row < CountRows() && std::getline(lines, line); ++row) m_out << line << kClearLine << '\n';
  m_out << kClearBelow << std::flush;
}

}  // namespace tav::ctl
