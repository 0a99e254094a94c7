// SPDX-License-Identifier: Apache-2.0
// A household's electricity meter, simulated down to its bytes: SML telegrams as a real one pushes them.
//
// It has no clock: the caller says what time it is. The same options and times give the same bytes on every machine.
// All arithmetic is on whole numbers, and the energy registers are exactly the sum of the powers since the beginning,
// so that a simulator started anew goes on where the last one was. Every week is like the other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gateway/driver/sml/sml_writer.h>

namespace tav::sml {

struct cSmlSimulatorOptions {
  std::uint32_t seed = 1;    // what tells one household from another
  std::uint32_t serial = 1;  // of the first meter; the others count on
  unsigned int meters = 1;   // which take turns, one telegram each
  bool solar = false;        // panels on the roof: exports at noon
  bool publicKey = false;    // sends 129-129:199.130.5*255
  std::uint32_t status = 0;  // status word sent with the energies; 0 means that all is well
  // When the meters were installed, in seconds since 1970-01-01 UTC; 2025-01-01. Their registers start at zero then.
  std::uint32_t begin = 1735689600;

  friend bool operator==(const cSmlSimulatorOptions&, const cSmlSimulatorOptions&) = default;
};

// What the house takes and gives at a moment, in milliwatts.
struct cSmlLoad {
  std::array<std::int64_t, 3> phases{};  // positive: from the grid
  std::int64_t Total() const { return phases[0] + phases[1] + phases[2]; }
};

class cSmlSimulator {
 public:
  explicit cSmlSimulator(const cSmlSimulatorOptions& options);

  // The next telegram, a transport frame. now: seconds since 1970-01-01 UTC; a time before that of the meter's last
  // telegram is taken for that time.
  std::string Telegram(std::uint32_t now);
  // The ten bytes by which the telegrams of a meter are known (DIN 43863-5): 0A 01 'T' 'A' 'V' and the serial number.
  const std::string& GetServerId(unsigned int meter) const { return m_meters[meter].serverId; }

  // The load of a meter's house at a time, constant over kStep seconds.
  static constexpr std::uint32_t kStep = 10;
  cSmlLoad LoadAt(unsigned int meter, std::uint32_t now) const;

 private:
  // Registers in milliwatt seconds.
  struct cMeter {
    std::uint32_t time = 0;
    std::uint64_t imported = 0;
    std::uint64_t exported = 0;
    std::uint32_t telegrams = 0;
    std::string serverId;
  };

  void Advance(unsigned int meter, std::uint32_t now);
  void AddEnergy(unsigned int meter, std::uint32_t from, std::uint32_t to, std::uint64_t& imported,
                 std::uint64_t& exported) const;
  void WriteList(cSmlWriter& to, unsigned int meter) const;
  std::string PublicKey(unsigned int meter) const;
  std::uint32_t Random(unsigned int meter, std::uint32_t what, std::uint32_t slot) const;

  cSmlSimulatorOptions m_options;
  std::vector<cMeter> m_meters;
  unsigned int m_next = 0;
};

}  // namespace tav::sml
