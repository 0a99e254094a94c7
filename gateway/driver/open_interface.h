// SPDX-License-Identifier: Apache-2.0
// What a driver's process and its open interfaces know of each other.
#pragma once

#include <string>

#include <gateway/host/status_publisher.h>
#include <tav/framework/record.h>
#include <tav/record/meter_record.h>

namespace tav {

// What an interface asks of the process it belongs to.
class cInterfaceHost {
 public:
  // Room for a reading of an input that can wait.
  virtual bool HasRoom() const = 0;
  virtual void Deliver(const cMeterRecord& reading) = 0;
  // A reading has come; light is the interface's for meter data.
  virtual void OnReading(unsigned int light) = 0;
  virtual void Report(const vorn::cRecord& event) = 0;
  // The input waits because there is no room.
  virtual void OnHeld() = 0;
  // Everything of it is read; nothing comes any more.
  virtual void OnEnded() = 0;
  // The input cannot be read; why.
  virtual void OnFailed(const std::string& why) = 0;

 protected:
  ~cInterfaceHost() = default;
};

class cOpenInterface {
 public:
  virtual ~cOpenInterface() = default;

  // For messages: the name, and what its input is.
  virtual std::string Describe() const = 0;
  // Goes on with what waits, as long as there is room.
  virtual void Feed() = 0;
  virtual void OnTimer() {}
  // What is not read yet will not be.
  virtual void Abandon() = 0;
  // How it is, for operators; named "interface.value".
  virtual void Collect(gateway::cStatusValues& values) const = 0;
  virtual bool CanWait() const = 0;
  virtual bool IsReadToEnd() const = 0;
};

// The record that tells the service what happened to an interface now; without a reason when that is empty.
vorn::cRecord MakeInterfaceEvent(const std::string& driver, const std::string& interfaceName, const std::string& event,
                                 const std::string& reason);

}  // namespace tav
