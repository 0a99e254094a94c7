// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/temp_files.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include <gateway/web/front/unit_web.h>
#include <tav/framework/uuid.h>

namespace tav::gateway::web {

namespace fs = std::filesystem;

namespace {

constexpr mode_t kPrivateDirectory = 0700;
constexpr mode_t kPrivateFile = 0600;

bool WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t size = write(file, bytes.data(), bytes.size());
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(size));
  }
  return true;
}

}  // namespace

// ---- one file

cTempFile::cTempFile(cTempFiles* files, cDescriptor file, std::string path)
    : m_files(files), m_file(std::move(file)), m_path(std::move(path)) {}

cTempFile::~cTempFile() {
  unlink(m_path.c_str());  // a page may have moved it away
  m_files->m_stored -= m_size;
}

bool cTempFile::Append(std::string_view bytes) {
  if (!m_files->Reserve(bytes.size())) return false;
  m_size += bytes.size();
  if (WriteAll(m_file.Get(), bytes)) return true;
  vorn::Trace(UnitWeb(), 2, "web: ", m_path, " cannot be written: ", std::strerror(errno));
  return false;
}

// ---- the directory

cTempFiles::cTempFiles(std::string directory, std::uint64_t most) : m_directory(std::move(directory)), m_most(most) {}

std::string cTempFiles::Prepare() {
  struct stat found {};
  if (mkdir(m_directory.c_str(), kPrivateDirectory) != 0 && errno != EEXIST)
    return "directory '" + m_directory + "' cannot be made: " + std::strerror(errno);
  if (lstat(m_directory.c_str(), &found) != 0 || !S_ISDIR(found.st_mode) || found.st_uid != geteuid())
    return "'" + m_directory + "' is no directory of this user";
  chmod(m_directory.c_str(), kPrivateDirectory);
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(m_directory, error))
    if (!entry.is_directory(error)) fs::remove(entry.path(), error);
  return {};
}

std::unique_ptr<cTempFile> cTempFiles::Make() {
  vorn::cUuid name;
  name.Create();
  std::string path = m_directory + "/" + name.ToString();
  cDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kPrivateFile));
  if (file.IsOpen()) return std::make_unique<cTempFile>(this, std::move(file), std::move(path));
  vorn::Trace(UnitWeb(), 2, "web: ", path, " cannot be made: ", std::strerror(errno));
  return nullptr;
}

bool cTempFiles::Reserve(std::uint64_t bytes) {
  if (bytes > m_most - m_stored) return false;
  m_stored += bytes;
  return true;
}

}  // namespace tav::gateway::web
