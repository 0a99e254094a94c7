// SPDX-License-Identifier: Apache-2.0
// The limit of a driver's footprint: a program of C++ that connects to a socket, sends a greeting, reads the answer,
// and then waits for ever. The argument is the socket's path.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string path(argv[1]);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const int server = socket(AF_UNIX, SOCK_STREAM, 0);
  if (connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return 1;
  char byte = 'h';
  if (write(server, &byte, 1) != 1 || read(server, &byte, 1) != 1) return 1;
  while (read(server, &byte, 1) > 0) {
  }
}
