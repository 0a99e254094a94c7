// SPDX-License-Identifier: Apache-2.0
// cDriverRegistry: which drivers are there just now, and over which channel each is reached.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <tav/framework/scm_channel.h>

namespace tav::data {

class cDriverRegistry {
 public:
  using Channel = std::shared_ptr<vorn::cScmChannel>;

  // A channel has one driver: its last name holds.
  void Register(const Channel& channel, const std::string& driver);
  void Remove(const vorn::cScmChannel& channel);

  // Where to send what one process is to do: the one that registered last under that name. Null when there is none.
  Channel Find(const std::string& driver) const;
  // Where to send what everybody of that name has to know.
  std::vector<Channel> FindAll(const std::string& driver) const;
  // Empty for a channel without a driver.
  std::string NameOf(const vorn::cScmChannel* channel) const;
  std::set<std::string> GetNames() const;
  std::size_t GetCount() const { return m_drivers.size(); }

 private:
  struct cDriver {
    Channel channel;
    std::string name;
  };

  std::vector<cDriver> m_drivers;  // in the order in which they came
};

}  // namespace tav::data
