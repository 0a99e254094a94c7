// SPDX-License-Identifier: Apache-2.0
#include <tav/config/firmware_manifest.h>

#include <tav/framework/xml.h>
#include <tav/unit_tav.h>

namespace tav {

bool cFirmwareManifest::initFromFile(const std::string& newFileName) {
  fileName = newFileName;
  valid = false;
  XMLResults results;
  const XMLNode root = XMLNode::parseFile(fileName.c_str(), nullptr, &results);
  if (results.error != 0) {
    vorn::Trace(UnitTAV(), 2, "XML-Error in '", fileName, "' (", XMLNode::getError(results.error), ")");
    return false;
  }
  const XMLNode manifest = root.getChildNodeByPath("Manifest", '/');
  if (manifest.isEmpty()) {
    vorn::Trace(UnitTAV(), 2, "Error in '", fileName, "' (no section <Manifest>)");
    return false;
  }
  int index = 0;
  for (XMLNode fact = manifest.getChildNode(0); !fact.isEmpty(); fact = manifest.getChildNode(++index))
    if (fact.getName() != nullptr && fact.getText() != nullptr) info.Set(fact.getName(), fact.getText());
  valid = true;
  return true;
}

bool CheckFirmwareManifest(const std::string& /*fileName*/, std::string& errorText, cFirmwareManifest& /*manifest*/) {
  errorText.clear();
  return true;
}

}  // namespace tav
