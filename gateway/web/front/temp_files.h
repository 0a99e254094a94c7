// SPDX-License-Identifier: Apache-2.0
// cTempFiles: the directory for what clients send, private to this user; cTempFile: one file in it, gone with its
// object. What an earlier process left there is removed at the start.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <gateway/web/front/descriptor.h>

namespace tav::gateway::web {

class cTempFiles;

class cTempFile {
 public:
  cTempFile(cTempFiles* files, cDescriptor file, std::string path);
  ~cTempFile();
  cTempFile(const cTempFile&) = delete;
  cTempFile& operator=(const cTempFile&) = delete;

  // False: the disk is full, or all files together are too large.
  bool Append(std::string_view bytes);
  // Nothing more will come.
  void Close() { m_file = cDescriptor(); }

  const std::string& GetPath() const { return m_path; }
  std::uint64_t GetSize() const { return m_size; }

 private:
  cTempFiles* m_files;
  cDescriptor m_file;
  std::string m_path;
  std::uint64_t m_size = 0;
};

class cTempFiles {
 public:
  // The directory above is there. most: bytes of all files together.
  cTempFiles(std::string directory, std::uint64_t most);

  // Makes the directory, or empties it. What went wrong, else an empty text.
  std::string Prepare();
  // Null when it cannot be made; a line of trace tells why. It does not outlive this object.
  std::unique_ptr<cTempFile> Make();

  std::uint64_t GetStored() const { return m_stored; }

 private:
  friend class cTempFile;
  bool Reserve(std::uint64_t bytes);

  std::string m_directory;
  std::uint64_t m_most;
  std::uint64_t m_stored = 0;
};

}  // namespace tav::gateway::web
