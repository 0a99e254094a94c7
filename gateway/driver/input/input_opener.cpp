// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/input/input_opener.h>

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

namespace tav {

namespace {

const std::string kTcpScheme = "tcp://";
constexpr int kKeepAliveSeconds = 60;  // without a byte, then the peer is asked whether it is there

struct cSpeed {
  unsigned int baud;
  speed_t speed;
};

constexpr cSpeed kSpeeds[] = {
    {300, B300},     {600, B600},     {1200, B1200},   {2400, B2400},     {4800, B4800},     {9600, B9600},
    {19200, B19200}, {38400, B38400}, {57600, B57600}, {115200, B115200}, {230400, B230400},
};

const cSpeed* FindSpeed(unsigned int baud) {
  for (const cSpeed& known : kSpeeds)
    if (known.baud == baud) return &known;
  return nullptr;
}

std::string Reason(const std::string& what) { return what + ": " + std::strerror(errno); }

bool IsTerminalLine(const std::string& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) return path.rfind("/dev/", 0) == 0;  // it may be plugged in later
  return S_ISCHR(info.st_mode) && path != "/dev/stdin" && path != "/dev/null";
}

bool SetSpeed(int line, const cInputSpec& spec, termios& settings, std::string& error) {
  const cSpeed* speed = FindSpeed(spec.baud);
  if (speed != nullptr && cfsetspeed(&settings, speed->speed) == 0 && tcsetattr(line, TCSANOW, &settings) == 0)
    return true;
  error = Reason(spec.path + " cannot be set to " + std::to_string(spec.baud) + " " + spec.framing);
  return false;
}

bool ReadSettings(int line, const cInputSpec& spec, termios& settings, std::string& error) {
  if (tcgetattr(line, &settings) == 0) return true;
  error = Reason(spec.path + " is no serial line");
  return false;
}

bool IsPseudoTerminal(int line) {
  constexpr unsigned int kFirstMajor = 136, kLastMajor = 143;
  struct stat info {};
  return fstat(line, &info) == 0 && major(info.st_rdev) >= kFirstMajor && major(info.st_rdev) <= kLastMajor;
}

// Raw bytes: no line discipline touches them, as a meter sends every value of a byte.
bool SetUpLine(int line, const cInputSpec& spec, std::string& error) {
  termios settings{};
  if (!ReadSettings(line, spec, settings, error)) return false;
  cfmakeraw(&settings);
  settings.c_cflag &= static_cast<tcflag_t>(~(CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS));
  settings.c_cflag |= CLOCAL | CREAD;
  settings.c_cflag |= spec.framing[0] == '7' ? CS7 : CS8;
  if (spec.framing[1] != 'N') settings.c_cflag |= PARENB;
  if (spec.framing[1] == 'O') settings.c_cflag |= PARODD;
  if (spec.framing[2] == '2') settings.c_cflag |= CSTOPB;
  // It has no bits on a wire: the kernel keeps to this, and the C library takes that for a failure.
  if (IsPseudoTerminal(line)) settings.c_cflag = (settings.c_cflag & static_cast<tcflag_t>(~(CSIZE | PARENB))) | CS8;
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  if (!SetSpeed(line, spec, settings, error)) return false;
  tcflush(line, TCIFLUSH);  // what came before the settings is garbage
  return true;
}

int OpenFile(const cInputSpec& spec, std::string& error) {
  const int file = open(spec.path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  struct stat info {};
  if (file >= 0 && fstat(file, &info) == 0 && !S_ISDIR(info.st_mode)) return file;
  if (file >= 0) {
    errno = EISDIR;
    close(file);
  }
  error = Reason("cannot open " + spec.path);
  return -1;
}

// Against those who ask for the lock, and by the terminal's own means against those who do not.
bool Lock(int line, const cInputSpec& spec, std::string& error) {
  if (!spec.exclusive) return true;
  if (flock(line, LOCK_EX | LOCK_NB) == 0) {
    ioctl(line, TIOCEXCL);
    return true;
  }
  error = spec.path + " is in use by another process";
  return false;
}

int OpenSerial(const cInputSpec& spec, std::string& error) {
  const int line = open(spec.path.c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (line < 0) {
    error = errno == EBUSY ? spec.path + " is in use by another process" : Reason("cannot open " + spec.path);
    return -1;
  }
  if (!Lock(line, spec, error)) {
    close(line);
    return -1;
  }
  if (SetUpLine(line, spec, error)) return line;
  CloseInput(spec, line);
  return -1;
}

// We only listen, and would not see that a peer without power is gone.
void KeepAlive(int connection) {
  const auto set = [connection](int level, int option, int value) {
    setsockopt(connection, level, option, &value, sizeof value);
  };
  set(SOL_SOCKET, SO_KEEPALIVE, 1);
  set(IPPROTO_TCP, TCP_KEEPIDLE, kKeepAliveSeconds);
  set(IPPROTO_TCP, TCP_KEEPINTVL, kKeepAliveSeconds / 3);
  set(IPPROTO_TCP, TCP_KEEPCNT, 3);
}

int ConnectTo(const addrinfo& address) {
  const int connection = socket(address.ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, address.ai_protocol);
  if (connection < 0) return -1;
  KeepAlive(connection);
  if (connect(connection, address.ai_addr, address.ai_addrlen) == 0 || errno == EINPROGRESS) return connection;
  const int code = errno;
  close(connection);
  errno = code;
  return -1;
}

int OpenTcp(const cInputSpec& spec, unsigned int attempt, std::string& error) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int code = getaddrinfo(spec.host.c_str(), spec.port.c_str(), &hints, &found);
  if (code != 0) {
    error = "cannot find " + spec.ToString() + ": " + gai_strerror(code);
    return -1;
  }
  const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(found, freeaddrinfo);
  std::vector<const addrinfo*> addresses;
  for (const addrinfo* address = found; address != nullptr; address = address->ai_next) addresses.push_back(address);
  for (std::size_t i = 0; i < addresses.size(); ++i) {
    const int connection = ConnectTo(*addresses[(attempt + i) % addresses.size()]);
    if (connection >= 0) return connection;
  }
  error = Reason("cannot connect to " + spec.ToString());
  return -1;
}

int OpenStandardInput(std::string& error) {
  const int input = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
  if (input < 0) error = Reason("cannot read standard input");
  return input;
}

}  // namespace

// A pseudo terminal keeps what was set, as long as its other side is there.
void CloseInput(const cInputSpec& spec, int descriptor) {
  if (spec.kind == eInputKind::Serial && spec.exclusive) ioctl(descriptor, TIOCNXCL);
  close(descriptor);
}

bool SetLineSpeed(int line, const cInputSpec& spec, std::string& error) {
  termios settings{};
  return ReadSettings(line, spec, settings, error) && SetSpeed(line, spec, settings, error);
}

bool cInputSpec::Parse(const std::string& text, cInputSpec& spec, std::string& error) {
  if (text.empty()) {
    error = "the input is empty; expected a device, a file, '-' or tcp://host:port";
    return false;
  }
  if (text == "-") {
    spec.kind = eInputKind::StandardInput;
    return true;
  }
  if (text.rfind(kTcpScheme, 0) != 0) {
    spec.path = text;
    spec.kind = IsTerminalLine(text) ? eInputKind::Serial : eInputKind::File;
    return true;
  }
  const std::size_t colon = text.rfind(':');
  spec.kind = eInputKind::Tcp;
  spec.host = colon > kTcpScheme.size() ? text.substr(kTcpScheme.size(), colon - kTcpScheme.size()) : std::string();
  spec.port = text.substr(colon + 1);
  if (spec.host.size() > 2 && spec.host.front() == '[' && spec.host.back() == ']')
    spec.host = spec.host.substr(1, spec.host.size() - 2);  // IPv6
  if (!spec.host.empty() && !spec.port.empty() && spec.port.find_first_not_of("0123456789") == std::string::npos &&
      spec.port.size() <= 5 && std::stoul(spec.port) >= 1 && std::stoul(spec.port) <= 65535)
    return true;
  error = "'" + text + "' is no address of the form tcp://host:port";
  return false;
}

bool cInputSpec::ParseLive(const std::string& text, cInputSpec& spec, std::string& error) {
  if (!Parse(text, spec, error)) return false;
  if (!spec.IsLive()) error = "'" + text + "' is no device and no tcp://host:port";
  return spec.IsLive();
}

std::string cInputSpec::ToString() const {
  switch (kind) {
    case eInputKind::StandardInput:
      return "standard input";
    case eInputKind::Tcp:
      return kTcpScheme + (host.find(':') == std::string::npos ? host : "[" + host + "]") + ":" + port;
    case eInputKind::Serial:
      return path + " (" + std::to_string(baud) + " " + framing + ")";
    default:
      return path;
  }
}

bool CheckSerialSettings(const cInputSpec& spec, std::string& error) {
  const std::string& framing = spec.framing;
  if (FindSpeed(spec.baud) == nullptr) {
    error =
        "baud rate " + std::to_string(spec.baud) + " is not supported; possible are 300 to 230400 in the usual steps";
    return false;
  }
  if (framing.size() == 3 && (framing[0] == '7' || framing[0] == '8') &&
      std::string("NEO").find(framing[1]) != std::string::npos && (framing[2] == '1' || framing[2] == '2'))
    return true;
  error =
      "'" + framing + "' is no serial framing; expected data bits 7 or 8, parity N, E or O, stop bits 1 or 2, as 8N1";
  return false;
}

int OpenInput(const cInputSpec& spec, unsigned int attempt, std::string& error) {
  switch (spec.kind) {
    case eInputKind::StandardInput:
      return OpenStandardInput(error);
    case eInputKind::Serial:
      return OpenSerial(spec, error);
    case eInputKind::Tcp:
      return OpenTcp(spec, attempt, error);
    default:
      return OpenFile(spec, error);
  }
}

}  // namespace tav
