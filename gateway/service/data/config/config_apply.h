// SPDX-License-Identifier: Apache-2.0
// cConfigApply: takes the whole configuration of one apply-config message, within the transaction of its caller.
//
// First every record is read and every fault of it told, then all are set: what others need before what needs it.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gateway/service/data/config/config_store.h>

namespace tav::data {

class cConfigApply {
 public:
  cConfigApply(cConfigStore& config, const cPlace& at) : m_config(config), m_at(at) {}

  // False when a record is not as it should be.
  bool Read(const vorn::cRecord& request);
  // What Read has read. What then is wrong between the records is told to the place.
  void Set();

 private:
  // A thing of the message, and its place in it.
  template <typename Thing>
  struct cPlaced {
    cPlace at;
    Thing thing;
  };
  struct cTemplate {
    std::string name;
    vorn::cRecord form;
    std::uint64_t idx = 0;  // 0: the service chooses
  };

  template <typename Thing, typename ReadOne>
  void ReadAll(const vorn::cRecord& request, std::string_view name, std::vector<cPlaced<Thing>>& things,
               const ReadOne& readOne);
  template <typename Thing, typename NameOf>
  void RefuseTwins(const std::vector<cPlaced<Thing>>& things, const NameOf& nameOf);
  void RefuseTwinNumbers();
  void ReadTemplateNumbers(const vorn::cRecord& request);
  void SetTemplate(const cPlace& at, const cTemplate& preset);

  void NumberTargets();
  void DeleteOtherMeters();
  void DeleteOtherCollectors(const cStoredMeter& meter, const cMeterConfig& held);
  void DeleteOtherTargets();
  void DeleteOtherInterfaces();
  void DeleteOtherTemplates();

  cConfigStore& m_config;
  cPlace m_at;
  bool m_replace = false;
  bool m_good = true;
  std::vector<cPlaced<cInterfaceRecord>> m_interfaces;
  std::vector<cPlaced<cMeterConfig>> m_meters;
  std::vector<cPlaced<cPushTarget>> m_targets;
  std::vector<cPlaced<cTemplate>> m_templates;
  cRemoved m_removed;
};

}  // namespace tav::data
