// SPDX-License-Identifier: Apache-2.0
// cFirmwareManifest: the facts about a firmware image, read from an XML file whose document element is <Manifest>: one
// element a fact, its name and its text.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/map.h>

namespace tav {

class TAV_API cFirmwareManifest {
 public:
  // False, with a line of trace that says why, for a file that cannot be read or has no <Manifest>; info is unchanged
  // then. What is read is added to earlier facts, in place of one of the same name; elements without a text are not.
  bool initFromFile(const std::string& newFileName);
  // False, value left alone, when there is no such fact. Asks info only, whether the last file could be read or not.
  bool GetInfo(const std::string& name, std::string& value) const { return info.Get(name, value); }

  bool valid = false;  // the last file had a <Manifest>
  vorn::cMap<std::string, std::string> info;
  std::string fileName;  // the last one asked for
};

// Where a manifest file is to be checked before its image is taken. Every manifest is accepted: true, no error text,
// the file not read and the manifest not looked at.
TAV_API bool CheckFirmwareManifest(const std::string& fileName, std::string& errorText, cFirmwareManifest& manifest);

}  // namespace tav
