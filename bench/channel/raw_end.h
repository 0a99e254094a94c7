// SPDX-License-Identifier: Apache-2.0
// cRawEnd: one end of a bare socket behind epoll, with the frames of a channel in it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tav::bench {

class cRawEnd {
 public:
  // Takes the descriptor over.
  explicit cRawEnd(int descriptor);
  ~cRawEnd();
  cRawEnd(const cRawEnd&) = delete;
  cRawEnd& operator=(const cRawEnd&) = delete;

  // A frame of that type with the number in it joins the output.
  void Put(unsigned int type, std::uint64_t number);
  // Writes the output; false at the end of the connection.
  bool Write();
  // Waits for input and reads what is there; false at the end of the connection, or when nothing comes for 10 s.
  bool Read();
  // Takes the next whole frame out of the input; false when there is none.
  bool Take(unsigned int& type, std::uint64_t& number);

 private:
  int m_socket;
  int m_epoll;
  // Frames, ready but for type and number.
  const std::string m_reading;
  const std::string m_acknowledgement;
  std::vector<char> m_output;
  std::size_t m_put = 0;
  std::vector<char> m_input;
  std::size_t m_got = 0;
  std::size_t m_taken = 0;
};

}  // namespace tav::bench
