// SPDX-License-Identifier: Apache-2.0
// What the web front end can be told.
#pragma once

#include <cstdint>
#include <string>

#include <gateway/web/front/web_limits.h>

namespace tav::gateway::web {

struct cWebOptions {
  std::string listen = "127.0.0.1:8080";
  std::string certificate;  // files in PEM form; both or none
  std::string key;
  std::string staticDirectory;  // of the files below /static/
  std::string chart;            // the file /static/chart.js
  std::string tempDirectory;    // for what clients send; made, and emptied at the start
  std::uint64_t maxBodyBytes = kMaxBodyBytes;

  // What is wrong with them; empty when nothing is.
  std::string Check() const;
};

// Where static files lie beside this program: share/tav/web of the same prefix, else the one it was built for.
std::string FindStaticDirectory();
// The Debian package's file of Chart.js.
std::string FindChart();

}  // namespace tav::gateway::web
