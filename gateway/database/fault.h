// SPDX-License-Identifier: Apache-2.0
// What stands in the way of the database, told by what can be done about it, and a text for people.
#pragma once

#include <string>

namespace SQLite {
class Exception;
}

namespace tav::data {

enum class eFault {
  None,
  Busy,      // another process holds the write lock: try again
  Full,      // disk, quota or size limit: try again when there is room
  ReadOnly,  // file or file system: try again when it is writable
  Io,        // the system refuses to read, write or open
  Moved,     // no longer where it was: to be put back
  Corrupt,   // damaged, or no database: a person has to look at it
  Foreign,   // a database of another program
  Newer,     // written by a later version of this program
  Internal,  // anything else SQLite reports
};

struct cFault {
  eFault kind = eFault::None;
  std::string text;  // names the file and what was found

  explicit operator bool() const { return kind != eFault::None; }
};

// The fault behind an exception of the database in file.
cFault FaultOf(const SQLite::Exception& exception, const std::string& file);

}  // namespace tav::data
