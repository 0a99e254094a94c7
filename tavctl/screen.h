// SPDX-License-Identifier: Apache-2.0
// cScreen: a terminal whose whole content is replaced again and again, without flicker.
#pragma once

#include <ostream>
#include <string>

namespace tav::ctl {

class cScreen {
 public:
  // Clears the terminal.
  explicit cScreen(std::ostream& out);
  // Leaves the last picture and puts the terminal back in order.
  ~cScreen();
  cScreen(const cScreen&) = delete;
  cScreen& operator=(const cScreen&) = delete;

  // Lines that do not fit are cut off, on the right and below.
  void Show(const std::string& picture);

 private:
  std::ostream& m_out;
};

}  // namespace tav::ctl
