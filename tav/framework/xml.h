// SPDX-License-Identifier: Apache-2.0
// Records as XML files, and a DOM reader for XML files. Names and texts given to these functions may be null.
//
// Codes of all of them: 0 success, 10 no such file, others as XMLNode::getError tells.
#pragma once

#include <memory>
#include <string>

#include <tav/framework/export.h>
#include <tav/framework/record.h>

namespace xml {

// Writes a record as XML: complete or not at all (temporary file, fsync, rename). location is the directory, the
// current one when empty; it is never created. root names the document element ("record" for null); pretty breaks and
// indents.
VORN_API int RecordToXmlFile(const vorn::cRecord& record, const std::string& file, const std::string& location,
                             const char* root, bool pretty);
// Reads what RecordToXmlFile wrote: the record is then equal to the one written. Leaves record alone on failure.
VORN_API int RecordFromXmlFile(vorn::cRecord& record, const std::string& file, const std::string& location,
                               const char* root);

}  // namespace xml

struct XMLResults {
  int error = 0;  // 0 none, 10 no such file, else see XMLNode::getError
  int line = 0;   // where the fault was found, from 1; 0 when it has no place
};

// One node of a document: the document itself, or an element. A value; it keeps its document alive.
class VORN_API XMLNode {
 public:
  // No such node.
  XMLNode();
  XMLNode(const XMLNode&);
  XMLNode& operator=(const XMLNode&);
  ~XMLNode();

  // Without a tag the document, whose child is the document element; with one the document element when it has that
  // name, otherwise no node.
  static XMLNode parseFile(const char* file, const char* tag, XMLResults* results);
  // Down the names of a path, the first element of each name; no node where one is missing.
  XMLNode getChildNodeByPath(const char* path, char separator = '/') const;
  // The child elements in order; no node behind the last one.
  XMLNode getChildNode(int index) const;
  XMLNode getChildNode(const char* name) const;

  // Null for no node and for the document.
  const char* getName() const;
  // The first text child, blanks alone are none; null when there is none.
  const char* getText() const;
  // No such node.
  bool isEmpty() const;

  // What a code means; never null.
  static const char* getError(int code);

 private:
  struct cState;
  std::shared_ptr<const cState> m_state;
};
