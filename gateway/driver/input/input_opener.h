// SPDX-License-Identifier: Apache-2.0
// What the text of an input option names, and how to open it.
#pragma once

#include <string>

namespace tav {

enum class eInputKind { File, StandardInput, Serial, Tcp };

struct cInputSpec {
  eInputKind kind = eInputKind::File;
  std::string path;  // of a file or device
  std::string host;  // of "tcp://host:port"
  std::string port;
  // Serial line: bits per second, then data bits, parity (N, E, O) and stop bits.
  unsigned int baud = 9600;
  std::string framing = "8N1";
  bool exclusive = false;  // a device that is asked: nobody else may use it meanwhile

  // "tcp://host:port", "-", a device (a terminal line) or any other file. False and the reason in error for a text that
  // is none.
  static bool Parse(const std::string& text, cInputSpec& spec, std::string& error);
  // The same of what may come back (IsLive): a device or a connection, which can be asked.
  static bool ParseLive(const std::string& text, cInputSpec& spec, std::string& error);
  // The text it came from, for messages.
  std::string ToString() const;
  // A device or a connection may come back; a file has an end.
  bool IsLive() const { return kind == eInputKind::Serial || kind == eInputKind::Tcp; }

  friend bool operator==(const cInputSpec&, const cInputSpec&) = default;
};

// Whether the serial settings can be used; the reason in error.
bool CheckSerialSettings(const cInputSpec& spec, std::string& error);

// A descriptor for the caller to own, to be read when it is ready; -1 and the reason in error. A connection may still
// be under way: it is up when the descriptor can be written, and if it fails then, the next attempt takes the host's
// next address. A host's name is looked up on the spot.
int OpenInput(const cInputSpec& spec, unsigned int attempt, std::string& error);
// Closes what was opened; a device is free for others.
void CloseInput(const cInputSpec& spec, int descriptor);
// Another rate of an open device, spec's; false and the reason in error.
bool SetLineSpeed(int line, const cInputSpec& spec, std::string& error);

}  // namespace tav
