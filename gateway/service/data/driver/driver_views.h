// SPDX-License-Identifier: Apache-2.0
// What a driver has to know of the configuration, and what it is told when that has changed: the same, compared before
// and after the change. So the driver that a meter has left is told as well, and nobody is told what is no news.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gateway/service/data/config/config_store.h>
#include <tav/framework/record.h>

namespace tav::data {

// Driver and interface, where the interface is of a name that the driver may serve, to the interface's record with
// those of its meters that the driver serves; without their collectors, which are no business of a driver.
using cDriverViews = std::map<std::pair<std::string, std::string>, vorn::cRecord>;

cDriverViews ViewsOf(cConfigStore& config, const std::set<std::string>& drivers);

struct cDriverNotice {
  std::string driver;
  vorn::cRecord record;  // of a notify-driver message
};

std::vector<cDriverNotice> Compare(const cDriverViews& before, const cDriverViews& after);

// The record of a notify-driver message; an empty content is left out.
vorn::cRecord NoticeRecord(const std::string& interfaceName, const std::string& command, const vorn::cRecord& content);

}  // namespace tav::data
