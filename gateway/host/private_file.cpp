// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/private_file.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace tav::gateway {

namespace {

bool WriteAll(int descriptor, const std::string& content) {
  std::size_t done = 0;
  while (done < content.size()) {
    const ssize_t count = write(descriptor, content.data() + done, content.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    done += static_cast<std::size_t>(count);
  }
  return fsync(descriptor) == 0;
}

// The new name is on the disk once its directory is.
void SyncDirectoryOf(const std::string& file) {
  const std::string directory = std::filesystem::path(file).parent_path().string();
  const int descriptor = open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  fsync(descriptor);
  close(descriptor);
}

}  // namespace

std::string ReplacePrivateFile(const std::string& file, const std::string& content) {
  std::string fresh = file + ".XXXXXX";
  const int descriptor = mkostemp(fresh.data(), O_CLOEXEC);  // mode 0600
  if (descriptor < 0) return "file '" + file + "' cannot be written: " + std::strerror(errno);
  const bool written = WriteAll(descriptor, content);
  int fault = written ? 0 : errno;
  if (close(descriptor) != 0 && fault == 0) fault = errno;
  if (fault == 0 && std::rename(fresh.c_str(), file.c_str()) != 0) fault = errno;
  if (fault != 0) {
    unlink(fresh.c_str());
    return "file '" + file + "' cannot be written: " + std::strerror(fault);
  }
  SyncDirectoryOf(file);
  return {};
}

}  // namespace tav::gateway
