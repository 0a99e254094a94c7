// SPDX-License-Identifier: Apache-2.0
// cStatusProxy: named status values, text to text, that a process publishes and that others publish, channel "status".
//
// The local copy is the truth for the process: a change is made there first and then sent, once, whatever becomes of
// it. After every (re)connection the whole copy is sent, so that the service can be rebuilt from its clients. All calls
// belong to the thread of the owning service.
#pragma once

#include <list>
#include <string>

#include <tav/export.h>
#include <tav/framework/map.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_service_io.h>

namespace tav {

class TAV_API cStatusProxy : public vorn::cScmServiceIO {
 public:
  explicit cStatusProxy(vorn::cScmService* service);
  ~cStatusProxy() override;

  void OnConnect() override;
  void OnClose() override;
  bool DispatchMessage(const vorn::cMsg& msg) override;
  // "name=value" lines in the order of the names, without a break behind the last.
  std::string ToString() const override;

  // Sends nothing when the value is there already.
  void SingleSet(const std::string& name, const std::string& value);
  // Sends all of them, changed or not.
  void MultiSet(vorn::cMap<std::string, std::string> values);
  // "*": all values.
  void SingleRemove(const std::string& name);
  // Here "*" is a name like any other; names in a text are separated by commas.
  void MultiRemove(std::list<std::string>& names);
  void MultiRemove(const std::string& names);
  void Clear();

  // False, and value left alone, when there is none of that name.
  bool Get(const std::string& name, std::string& value) const;
  // Copies the values whose name has more than one part and prefix as its first, parts being what separator parts; all
  // without a prefix. How many there are.
  unsigned int GetValues(const std::string& prefix, vorn::cMap<std::string, std::string>& out,
                         const std::string& separator);
  vorn::cMap<std::string, std::string>& GetAllValues() { return m_values; }

  vorn::cMap<std::string, std::string> m_values;
  bool m_synced = false;  // the service has sent its values since the channel is up

 private:
  void SendChange(const vorn::cRecord& change);
  vorn::cMsg MakeFullSet(unsigned int type) const;
  void Merge(const vorn::cRecord& values);
};

}  // namespace tav
