// SPDX-License-Identifier: Apache-2.0
// cLedFolder: a folder that looks like the kernel's LED class.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include <tests/support/temp_folder.h>

class cLedFolder {
 public:
  std::string GetPath() const { return m_folder.GetPath(); }
  void AddLed(const std::string& name, const std::string& maximum = "255") const {
    std::filesystem::create_directory(m_folder.File(name));
    Write(name + "/brightness", "0\n");
    Write(name + "/trigger", "[timer] none\n");
    Write(name + "/max_brightness", maximum + "\n");
  }
  void RemoveLed(const std::string& name) const { std::filesystem::remove_all(m_folder.File(name)); }
  void Write(const std::string& file, const std::string& text) const { std::ofstream(m_folder.File(file)) << text; }
  std::string Read(const std::string& file) const {
    std::ifstream stream(m_folder.File(file));
    std::string line;
    std::getline(stream, line);
    return line;
  }

 private:
  cTempFolder m_folder;
};
