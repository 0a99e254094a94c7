// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/firmware_page.h>

#include <filesystem>

#include <gateway/web/pages/core/form_parts.h>
#include <tav/framework/xml.h>

namespace tav::pages {

namespace {

std::string PlaceOf(const std::string& name, int line) {
  return "\"" + name + "\"" + (line > 0 ? ", line " + std::to_string(line) : std::string());
}

cHtml Facts(const cFirmwareManifest& manifest) {
  if (manifest.info.empty()) return cHtml().Put("<p class=\"empty\">The manifest says nothing.</p>\n");
  cHtml rows;
  for (const auto& [name, text] : manifest.info)
    rows.Put("<tr><th scope=\"row\">{}</th><td>{}</td></tr>\n", name, text);
  return Table({"Name", "Text"}, rows);
}

}  // namespace

bool ReadManifest(const std::string& file, const std::string& name, cFirmwareManifest& manifest, std::string& error) {
  XMLResults results;
  const XMLNode document = XMLNode::parseFile(file.c_str(), nullptr, &results);
  if (results.error != 0) {
    error = PlaceOf(name, results.line) + ": " + XMLNode::getError(results.error);
    return false;
  }
  if (document.getChildNodeByPath("Manifest").isEmpty() || !manifest.initFromFile(file)) {
    error = PlaceOf(name, 0) + ": expected a document <Manifest>";
    return false;
  }
  if (CheckFirmwareManifest(file, error, manifest)) return true;
  error = PlaceOf(name, 0) + ": " + error;
  return false;
}

void cFirmwarePage::Start() {
  if (IsPost()) return Take();
  Show(200, {}, {});
}

void cFirmwarePage::Take() {
  cHttpRequest request = GetRequest();
  cHttpUploadFile file;
  if (!request.GetPostFile("manifest", file) || file.fileName.empty()) return Show(400, "Choose a file first.", {});
  std::error_code fault;
  const std::uintmax_t size = std::filesystem::file_size(file.tmpFileName, fault);
  if (fault) return Show(500, "\"" + file.fileName + "\" cannot be read: " + fault.message(), {});
  if (size > kMaxManifest)
    return Show(413,
                "\"" + file.fileName + "\" has " + std::to_string(size) + " bytes; a manifest has at most " +
                    std::to_string(kMaxManifest) + ".",
                {});
  cFirmwareManifest manifest;
  std::string error;
  if (!ReadManifest(file.tmpFileName, file.fileName, manifest, error)) return Show(400, error, {});
  Show(200, {}, cHtml().Put("<h2>{}</h2>\n{}", file.fileName, Facts(manifest)));
}

void cFirmwarePage::Show(unsigned int status, const std::string& fault, const cHtml& facts) {
  cHtml body = ErrorNote(fault);
  body.Put("<p>Shows what the manifest of a firmware image says. Nothing is installed.</p>\n");
  if (GetVisitor().MayChange())
    body.Put(
        "<form class=\"entry\" method=\"post\" action=\"/firmware\" enctype=\"multipart/form-data\">{}\n"
        "<div class=\"field\"><label for=\"manifest\">Manifest</label>"
        "<input id=\"manifest\" name=\"manifest\" type=\"file\" accept=\".xml,application/xml,text/xml\" required>"
        "<p class=\"hint\">An XML file of at most {} KiB.</p></div>\n"
        "<div class=\"actions\"><button>Check</button></div></form>\n",
        CsrfField(), kMaxManifest / 1024);
  ShowPage("Firmware", body.Put(facts), status);
}

}  // namespace tav::pages
