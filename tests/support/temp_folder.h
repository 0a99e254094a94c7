// SPDX-License-Identifier: Apache-2.0
// cTempFolder: a fresh folder that is removed, with all in it, when the object ends.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

class cTempFolder {
 public:
  cTempFolder() {
    m_path = (std::filesystem::temp_directory_path() / "tav-test-XXXXXX").string();
    if (mkdtemp(m_path.data()) == nullptr) throw std::runtime_error("no folder at " + m_path);
  }
  ~cTempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  cTempFolder(const cTempFolder&) = delete;
  cTempFolder& operator=(const cTempFolder&) = delete;

  const std::string& GetPath() const { return m_path; }
  std::string File(const std::string& name) const { return m_path + "/" + name; }

 private:
  std::string m_path;
};
