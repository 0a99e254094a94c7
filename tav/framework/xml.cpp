// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/xml.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <pugixml.hpp>

#include <tav/framework/helper.h>

using vorn::cData;
using vorn::cRecord;
using vorn::cRecordPar;

namespace {

enum eXmlError : int {
  eXmlOk = 0,
  eXmlNoFile = 10,
  eXmlSyntax = 11,
  eXmlNoMemory = 12,
  eXmlRead = 13,
  eXmlWrite = 14,
  eXmlNoRecord = 15,  // well formed, but not what RecordToXmlFile writes
};

struct cErrorText {
  int code;
  const char* text;
};

constexpr cErrorText kErrorTexts[] = {
    {eXmlOk, "no error"},
    {eXmlNoFile, "file not found"},
    {eXmlSyntax, "the file is not well-formed XML"},
    {eXmlNoMemory, "out of memory"},
    {eXmlRead, "the file cannot be read"},
    {eXmlWrite, "the file cannot be written"},
    {eXmlNoRecord, "the file does not hold a record"},
};

struct cTypeName {
  vorn::eParType type;
  const char* name;
};

constexpr cTypeName kTypeNames[] = {
    {vorn::eParText, "text"},     {vorn::eParInt, "int"},   {vorn::eParUInt, "uint"},
    {vorn::eParUInt64, "uint64"}, {vorn::eParBool, "bool"}, {vorn::eParRecord, "record"},
    {vorn::eParTime, "time"},     {vorn::eParUuid, "uuid"}, {vorn::eParData, "data"},
};

// Texts are kept to the letter: no normalising of line ends or blanks.
constexpr unsigned kParseOptions = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_ws_pcdata_single;

std::string PathOf(const std::string& file, const std::string& location) {
  return location.empty() ? file : location + "/" + file;
}

int CodeOf(const pugi::xml_parse_result& result) {
  switch (result.status) {
    case pugi::status_ok:
      return eXmlOk;
    case pugi::status_file_not_found:
      return eXmlNoFile;
    case pugi::status_io_error:
      return eXmlRead;
    case pugi::status_out_of_memory:
      return eXmlNoMemory;
    default:
      return eXmlSyntax;
  }
}

// 0 where the offset is of no use: it counts in UTF-8, whatever the file is written in.
int LineOf(const char* file, const pugi::xml_parse_result& result) {
  if (CodeOf(result) != eXmlSyntax || result.encoding != pugi::encoding_utf8) return 0;
  std::ifstream in(file, std::ios::binary);
  int line = 1;
  char letter = 0;
  for (std::ptrdiff_t at = 0; at < result.offset && in.get(letter); ++at) line += letter == '\n' ? 1 : 0;
  return line;
}

// ---- records to XML

// What XML 1.0 can carry as it stands; the rest goes in hexadecimal digits. A carriage return would come back as a line
// feed from other readers, and some of them strip blanks at the ends.
bool IsPlain(std::string_view text) {
  if (!vorn::detail::IsUtf8(text.data(), text.size())) return false;
  if (!text.empty() && (text.front() <= ' ' || text.back() <= ' ')) return false;
  for (const char c : text)
    if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n') return false;
  return text.find("\xEF\xBF\xBE") == std::string_view::npos && text.find("\xEF\xBF\xBF") == std::string_view::npos;
}

bool IsPlainAttribute(std::string_view text) { return IsPlain(text) && text.find_first_of("\t\n") == text.npos; }

std::string Hex(std::string_view bytes) {
  cData data(bytes.data(), bytes.size());
  data.SetSeparator("");
  return data.ToString(0);
}

void WriteText(pugi::xml_node& node, std::string_view text) {
  if (!IsPlain(text)) node.append_attribute("encoding") = "hex";
  node.append_child(pugi::node_pcdata).set_value(IsPlain(text) ? std::string(text).c_str() : Hex(text).c_str());
}

void WriteRecord(pugi::xml_node& node, const cRecord& record);

void WritePar(pugi::xml_node& parent, const cRecordPar& par) {
  pugi::xml_node node = parent.append_child("par");
  const std::string name = par.GetName();
  if (IsPlainAttribute(name))
    node.append_attribute("name") = name.c_str();
  else
    node.append_attribute("hexname") = Hex(name).c_str();
  node.append_attribute("type") = kTypeNames[par.GetType() - 1].name;
  cRecord nested;
  if (par.GetRecord(nested)) {
    WriteRecord(node, nested);
  } else if (par.IsData()) {
    node.append_child(pugi::node_pcdata).set_value(Hex(par.GetBytesView()).c_str());
  } else if (par.IsTime()) {
    // Seconds since 1970 beside the readable form: the one that is read back.
    node.append_attribute("utc") = par.GetText().c_str();
    node.append_child(pugi::node_pcdata).set_value(std::to_string(par.GetTime().GetSeconds()).c_str());
  } else if (par.IsText() && !par.HasText()) {
    node.append_attribute("none") = "true";
  } else {
    WriteText(node, par.GetText());
  }
}

void WriteRecord(pugi::xml_node& node, const cRecord& record) {
  for (cRecordPar par = record.First(); par.IsValid(); par = par.Next()) WritePar(node, par);
}

// ---- XML to records

// depth: levels of records around this one and it; a file may nest deeper than a stack is.
bool ReadRecord(const pugi::xml_node& node, unsigned int depth, cRecord& record);

bool ReadNumber(const std::string& text, std::uint64_t most, std::uint64_t& number) {
  if (text.empty() || text.size() > 20 || text.find_first_not_of("0123456789") != std::string::npos) return false;
  errno = 0;
  number = std::strtoull(text.c_str(), nullptr, 10);
  return errno == 0 && number <= most;
}

bool ReadInt(const std::string& text, int& value) {
  const bool negative = !text.empty() && text[0] == '-';
  std::uint64_t magnitude = 0;
  if (!ReadNumber(negative ? text.substr(1) : text, 0x7FFFFFFFull + (negative ? 1 : 0), magnitude)) return false;
  const auto signedMagnitude = static_cast<std::int64_t>(magnitude);
  value = static_cast<int>(negative ? -signedMagnitude : signedMagnitude);
  return true;
}

bool ReadHexAttribute(const pugi::xml_node& node, const char* attribute, std::string& text) {
  cData bytes;
  if (node.attribute(attribute).empty() || !cData::FromHex(node.attribute(attribute).value(), bytes)) return false;
  text = bytes.AsText();
  return true;
}

bool ReadText(const pugi::xml_node& node, std::string& text) {
  text = node.child_value();
  if (std::strcmp(node.attribute("encoding").value(), "hex") != 0) return node.attribute("encoding").empty();
  cData bytes;
  if (!cData::FromHex(text, bytes)) return false;
  text = bytes.AsText();
  return true;
}

bool ReadValue(const pugi::xml_node& node, unsigned int depth, vorn::eParType type, const std::string& name,
               cRecord& record) {
  std::string text;
  if (type == vorn::eParRecord) {
    cRecord nested;
    if (!ReadRecord(node, depth + 1, nested)) return false;
    record.AppendRecordPar(name, nested);
    return true;
  }
  if (type == vorn::eParText && node.attribute("none").as_bool()) {
    record.AppendTextPar(name, nullptr);
    return true;
  }
  if (!ReadText(node, text)) return false;
  std::uint64_t number = 0;
  int value = 0;
  vorn::cUuid uuid;
  cData data;
  switch (type) {
    case vorn::eParText:
      record.AppendTextPar(name, text);
      return true;
    case vorn::eParInt:
      if (!ReadInt(text, value)) return false;
      record.AppendIntPar(name, value);
      return true;
    case vorn::eParUInt:
      if (!ReadNumber(text, 0xFFFFFFFF, number)) return false;
      record.AppendUIntPar(name, static_cast<unsigned int>(number));
      return true;
    case vorn::eParUInt64:
      if (!ReadNumber(text, ~std::uint64_t{0}, number)) return false;
      record.AppendUInt64Par(name, number);
      return true;
    case vorn::eParBool:
      if (text != "true" && text != "false") return false;
      record.AppendBoolPar(name, text == "true");
      return true;
    case vorn::eParTime:
      if (!ReadNumber(text, 0xFFFFFFFF, number)) return false;
      record.AppendTimePar(name, vorn::cTime::FromSeconds(static_cast<unsigned int>(number), true));
      return true;
    case vorn::eParUuid:
      if (!uuid.FromString(text)) return false;
      record.AppendUuidPar(name, uuid);
      return true;
    case vorn::eParData:
      if (!cData::FromHex(text, data)) return false;
      record.AppendDataPar(name, data);
      return true;
    default:
      return false;
  }
}

bool ReadPar(const pugi::xml_node& node, unsigned int depth, cRecord& record) {
  std::string name = node.attribute("name").value();
  if (node.attribute("name").empty() && !ReadHexAttribute(node, "hexname", name)) return false;
  const std::string typeName = node.attribute("type").value();
  for (const cTypeName& known : kTypeNames)
    if (typeName == known.name) {
      const std::size_t before = record.GetBytes().size();
      // Nothing appended: name too long or nested too deep, which has been traced.
      return ReadValue(node, depth, known.type, name, record) && record.GetBytes().size() != before;
    }
  return false;
}

bool ReadRecord(const pugi::xml_node& node, unsigned int depth, cRecord& record) {
  if (depth > vorn::detail::kMaxRecordDepth) return false;
  for (const pugi::xml_node& child : node.children()) {
    if (child.type() != pugi::node_element) continue;
    if (std::strcmp(child.name(), "par") != 0 || !ReadPar(child, depth, record)) return false;
  }
  return true;
}

// ---- files

struct cStringWriter : pugi::xml_writer {
  std::string text;
  void write(const void* data, std::size_t size) override { text.append(static_cast<const char*>(data), size); }
};

bool WriteAll(int file, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t written = write(file, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    done += static_cast<std::size_t>(written);
  }
  return true;
}

// The rename is durable once its directory is.
void SyncDirectory(const std::string& location) {
  const int directory = open(location.empty() ? "." : location.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory < 0) return;
  fsync(directory);
  close(directory);
}

int WriteAtomically(const std::string& text, const std::string& path, const std::string& location) {
  const std::string temporary = path + vorn::FormatString(".%d.tmp", getpid());
  const int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0644);
  if (file < 0) return errno == ENOENT ? eXmlNoFile : eXmlWrite;
  bool written = WriteAll(file, text) && fsync(file) == 0;
  if (close(file) != 0) written = false;
  if (!written || rename(temporary.c_str(), path.c_str()) != 0) {
    unlink(temporary.c_str());
    return eXmlWrite;
  }
  SyncDirectory(location);
  return eXmlOk;
}

}  // namespace

namespace xml {

int RecordToXmlFile(const cRecord& record, const std::string& file, const std::string& location, const char* root,
                    bool pretty) {
  pugi::xml_document document;
  pugi::xml_node declaration = document.append_child(pugi::node_declaration);
  declaration.append_attribute("version") = "1.0";
  declaration.append_attribute("encoding") = "UTF-8";
  pugi::xml_node node = document.append_child(root != nullptr ? root : "record");
  WriteRecord(node, record);
  cStringWriter writer;
  document.save(writer, "  ", pretty ? pugi::format_indent : pugi::format_raw, pugi::encoding_utf8);
  return WriteAtomically(writer.text, PathOf(file, location), location);
}

int RecordFromXmlFile(cRecord& record, const std::string& file, const std::string& location, const char* root) {
  pugi::xml_document document;
  const int code = CodeOf(document.load_file(PathOf(file, location).c_str(), kParseOptions));
  if (code != eXmlOk) return code;
  const pugi::xml_node node = document.document_element();
  if (std::strcmp(node.name(), root != nullptr ? root : "record") != 0) return eXmlNoRecord;
  cRecord read;
  if (!ReadRecord(node, 1, read)) return eXmlNoRecord;
  record = read;
  return eXmlOk;
}

}  // namespace xml

// ---- XMLNode

struct XMLNode::cState {
  std::shared_ptr<const pugi::xml_document> document;
  pugi::xml_node node;
};

XMLNode::XMLNode() = default;
XMLNode::XMLNode(const XMLNode&) = default;
XMLNode& XMLNode::operator=(const XMLNode&) = default;
XMLNode::~XMLNode() = default;

XMLNode XMLNode::parseFile(const char* file, const char* tag, XMLResults* results) {
  const auto document = std::make_shared<pugi::xml_document>();
  pugi::xml_parse_result parsed;
  if (file != nullptr) parsed = document->load_file(file, kParseOptions);
  const int code = file != nullptr ? CodeOf(parsed) : static_cast<int>(eXmlNoFile);
  if (results != nullptr) {
    results->error = code;
    results->line = file != nullptr ? LineOf(file, parsed) : 0;
  }
  if (code != eXmlOk) return {};
  XMLNode found;
  pugi::xml_node node = *document;
  if (tag != nullptr)
    node = std::strcmp(document->document_element().name(), tag) == 0 ? document->document_element() : pugi::xml_node();
  if (node) found.m_state = std::make_shared<cState>(cState{document, node});
  return found;
}

XMLNode XMLNode::getChildNodeByPath(const char* path, char separator) const {
  XMLNode node = *this;
  if (path == nullptr) return {};
  for (const std::string& name : vorn::cHelper::GetStringTokens(path, std::string(1, separator)))
    node = node.getChildNode(name.c_str());
  return node;
}

XMLNode XMLNode::getChildNode(int index) const {
  XMLNode found;
  if (isEmpty() || index < 0) return found;
  for (const pugi::xml_node& child : m_state->node.children())
    if (child.type() == pugi::node_element && index-- == 0) {
      found.m_state = std::make_shared<cState>(cState{m_state->document, child});
      break;
    }
  return found;
}

XMLNode XMLNode::getChildNode(const char* name) const {
  XMLNode found;
  if (isEmpty() || name == nullptr) return found;
  if (const pugi::xml_node child = m_state->node.child(name))
    found.m_state = std::make_shared<cState>(cState{m_state->document, child});
  return found;
}

const char* XMLNode::getName() const {
  return isEmpty() || m_state->node.type() != pugi::node_element ? nullptr : m_state->node.name();
}

const char* XMLNode::getText() const {
  if (isEmpty()) return nullptr;
  for (const pugi::xml_node& child : m_state->node.children()) {
    if (child.type() != pugi::node_pcdata && child.type() != pugi::node_cdata) continue;
    if (std::strspn(child.value(), " \t\r\n") != std::strlen(child.value())) return child.value();
  }
  return nullptr;
}

bool XMLNode::isEmpty() const { return m_state == nullptr; }

const char* XMLNode::getError(int code) {
  for (const cErrorText& known : kErrorTexts)
    if (known.code == code) return known.text;
  return "unknown error";
}
