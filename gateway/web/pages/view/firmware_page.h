// SPDX-License-Identifier: Apache-2.0
// cFirmwarePage: what the manifest of a firmware image says. The file is read where the front end has put it; nothing
// is kept and nothing is installed.
#pragma once

#include <string>

#include <gateway/web/pages/core/web_page.h>
#include <tav/config/firmware_manifest.h>

namespace tav::pages {

class cFirmwarePage final : public cWebPage {
 public:
  static constexpr unsigned int kMaxManifest = 256 * 1024;  // bytes

  using cWebPage::cWebPage;

 private:
  void Start() override;
  void Take();
  void Show(unsigned int status, const std::string& fault, const cHtml& facts);
};

// Reads a manifest; false, and in error what is wrong and where, when it is none. name: what people call the file.
bool ReadManifest(const std::string& file, const std::string& name, cFirmwareManifest& manifest, std::string& error);

}  // namespace tav::pages
