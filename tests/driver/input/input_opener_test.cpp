// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/input/input_opener.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <tests/support/temp_folder.h>

#include "pseudo_line.h"

namespace tav {
namespace {

using testing::HasSubstr;

cInputSpec Parsed(const std::string& text) {
  cInputSpec spec;
  std::string error;
  EXPECT_TRUE(cInputSpec::Parse(text, spec, error)) << text << ": " << error;
  return spec;
}

std::string ParseError(const std::string& text) {
  cInputSpec spec;
  std::string error;
  EXPECT_FALSE(cInputSpec::Parse(text, spec, error)) << text;
  return error;
}

std::string SettingsError(unsigned int baud, const std::string& framing) {
  cInputSpec spec;
  spec.baud = baud;
  spec.framing = framing;
  std::string error;
  const bool usable = CheckSerialSettings(spec, error);
  EXPECT_EQ(usable, error.empty());
  return error;
}

std::string OpenError(const cInputSpec& spec) {
  std::string error;
  EXPECT_EQ(OpenInput(spec, 0, error), -1);
  return error;
}

// The settings of a line after it was opened so.
termios SettingsOf(unsigned int baud, const std::string& framing) {
  const cTempFolder folder;
  const cPseudoLine line(folder.File("line"));
  cInputSpec spec = Parsed(folder.File("line"));
  spec.baud = baud;
  spec.framing = framing;
  std::string error;
  const int opened = OpenInput(spec, 0, error);
  EXPECT_GE(opened, 0) << error;
  const termios settings = line.GetSettings();
  close(opened);
  return settings;
}

}  // namespace

// ---- what the text names

TEST(InputSpec, ADashIsStandardInput) {
  const cInputSpec spec = Parsed("-");
  EXPECT_EQ(spec.kind, eInputKind::StandardInput);
  EXPECT_EQ(spec.ToString(), "standard input");
  EXPECT_FALSE(spec.IsLive());
}

TEST(InputSpec, APathIsAFile) {
  const cTempFolder folder;
  std::ofstream(folder.File("capture.bin")) << "x";
  for (const std::string& text : {folder.File("capture.bin"), folder.File("missing"), std::string("sim.bin"),
                                  std::string("/dev/null"), std::string("tcp:/meter:7000")}) {
    const cInputSpec spec = Parsed(text);
    EXPECT_EQ(spec.kind, eInputKind::File) << text;
    EXPECT_EQ(spec.ToString(), text);
    EXPECT_FALSE(spec.IsLive()) << text;
  }
}

TEST(InputSpec, ATerminalLineIsASerialDevice) {
  const cTempFolder folder;
  const cPseudoLine line(folder.File("line"));
  const cInputSpec spec = Parsed(folder.File("line"));
  EXPECT_EQ(spec.kind, eInputKind::Serial);
  EXPECT_EQ(spec.ToString(), folder.File("line") + " (9600 8N1)");
  EXPECT_TRUE(spec.IsLive());
}

TEST(InputSpec, ADeviceThatIsNotThereYetIsASerialDevice) {
  EXPECT_EQ(Parsed("/dev/ttyOfNobody").kind, eInputKind::Serial);
}

TEST(InputSpec, AnAddressHasHostAndPort) {
  const struct {
    const char* text;
    const char* host;
    const char* port;
  } kCases[] = {
      {"tcp://meter:7000", "meter", "7000"},
      {"tcp://192.168.1.2:1", "192.168.1.2", "1"},
      {"tcp://meter.example.com:65535", "meter.example.com", "65535"},
      {"tcp://[::1]:7000", "::1", "7000"},
      {"tcp://[fe80::1%eth0]:7000", "fe80::1%eth0", "7000"},
  };
  for (const auto& [text, host, port] : kCases) {
    const cInputSpec spec = Parsed(text);
    EXPECT_EQ(spec.kind, eInputKind::Tcp) << text;
    EXPECT_EQ(spec.host, host);
    EXPECT_EQ(spec.port, port);
    EXPECT_EQ(spec.ToString(), text);
    EXPECT_TRUE(spec.IsLive());
  }
}

TEST(InputSpec, RefusesWhatIsNoAddress) {
  for (const std::string text : {"tcp://", "tcp://meter", "tcp://meter:", "tcp://:7000", "tcp://meter:0",
                                 "tcp://meter:65536", "tcp://meter:100000", "tcp://meter:99999999999999999999",
                                 "tcp://meter:70x", "tcp://meter:-1", "tcp://meter:7000/", "tcp://meter: 7000"})
    EXPECT_EQ(ParseError(text), "'" + text + "' is no address of the form tcp://host:port");
}

TEST(InputSpec, MayHaveToBeOneThatCanBeAsked) {
  cInputSpec spec;
  std::string error;
  EXPECT_TRUE(cInputSpec::ParseLive("/dev/ttyOfNobody", spec, error)) << error;
  EXPECT_TRUE(cInputSpec::ParseLive("tcp://meter:4000", spec, error)) << error;
  for (const char* text : {"-", "capture.bin"}) {
    EXPECT_FALSE(cInputSpec::ParseLive(text, spec, error));
    EXPECT_EQ(error, std::string("'") + text + "' is no device and no tcp://host:port");
  }
  EXPECT_FALSE(cInputSpec::ParseLive("tcp://meter", spec, error));
  EXPECT_EQ(error, "'tcp://meter' is no address of the form tcp://host:port");
}

TEST(InputSpec, RefusesAnEmptyText) {
  EXPECT_EQ(ParseError(""), "the input is empty; expected a device, a file, '-' or tcp://host:port");
}

// ---- serial settings

TEST(SerialSettings, AreAllThatMetersUse) {
  for (const unsigned int baud : {300u, 600u, 1200u, 2400u, 4800u, 9600u, 19200u, 38400u, 57600u, 115200u, 230400u})
    EXPECT_EQ(SettingsError(baud, "8N1"), "");
  for (const char* framing : {"8N1", "7E1", "7O1", "8E1", "8O2", "7N2"}) EXPECT_EQ(SettingsError(9600, framing), "");
}

TEST(SerialSettings, RefuseABaudRateThatNoLineHas) {
  for (const unsigned int baud : {0u, 1u, 299u, 9601u, 1000000u, 4294967295u})
    EXPECT_EQ(SettingsError(baud, "8N1"),
              "baud rate " + std::to_string(baud) + " is not supported; possible are 300 to 230400 in the usual steps");
}

TEST(SerialSettings, RefuseAFramingThatIsNone) {
  for (const std::string framing : {"", "8", "8N", "8N11", "9N1", "6N1", "8n1", "8M1", "8N0", "8N3", "N81"})
    EXPECT_EQ(SettingsError(9600, framing), "'" + framing +
                                                "' is no serial framing; expected data bits 7 or 8, parity N, E or O, "
                                                "stop bits 1 or 2, as 8N1");
}

TEST(SerialSettings, AreSetOnTheLineWithAllBytesRaw) {
  const termios settings = SettingsOf(9600, "8N1");
  EXPECT_EQ(cfgetispeed(&settings), B9600);
  EXPECT_EQ(cfgetospeed(&settings), B9600);
  EXPECT_EQ(settings.c_cflag & (CSIZE | PARENB | CSTOPB), static_cast<tcflag_t>(CS8));
  EXPECT_EQ(settings.c_cflag & (CREAD | CLOCAL), static_cast<tcflag_t>(CREAD | CLOCAL));
  EXPECT_EQ(settings.c_cflag & CRTSCTS, 0u);
  EXPECT_EQ(settings.c_iflag & (BRKINT | ICRNL | IGNCR | INLCR | INPCK | ISTRIP | IXON | PARMRK), 0u);
  EXPECT_EQ(settings.c_lflag & (ECHO | ECHONL | ICANON | IEXTEN | ISIG), 0u);
  EXPECT_EQ(settings.c_oflag & OPOST, 0u);
}

// A pseudo terminal takes neither seven bits nor a parity bit, but the rest shows.
TEST(SerialSettings, AreThoseAskedFor) {
  const termios odd = SettingsOf(300, "8O2");
  EXPECT_EQ(cfgetispeed(&odd), B300);
  EXPECT_NE(odd.c_cflag & PARODD, 0u);
  EXPECT_NE(odd.c_cflag & CSTOPB, 0u);
  const termios even = SettingsOf(115200, "8E1");
  EXPECT_EQ(cfgetispeed(&even), B115200);
  EXPECT_EQ(even.c_cflag & (PARODD | CSTOPB), 0u);
}

// ---- opening

TEST(OpenInput, GivesADescriptorThatDoesNotBlockAndEndsWithTheProcess) {
  const cTempFolder folder;
  std::ofstream(folder.File("capture")) << "bytes";
  std::string error;
  const int file = OpenInput(Parsed(folder.File("capture")), 0, error);
  ASSERT_GE(file, 0) << error;
  EXPECT_NE(fcntl(file, F_GETFL) & O_NONBLOCK, 0);
  EXPECT_NE(fcntl(file, F_GETFD) & FD_CLOEXEC, 0);
  close(file);
}

TEST(OpenInput, NamesTheFileAndTheFault) {
  const cTempFolder folder;
  EXPECT_EQ(OpenError(Parsed(folder.File("missing"))),
            "cannot open " + folder.File("missing") + ": No such file or directory");
  EXPECT_EQ(OpenError(Parsed(folder.GetPath())), "cannot open " + folder.GetPath() + ": Is a directory");
  EXPECT_EQ(OpenError(Parsed("/dev/ttyOfNobody")), "cannot open /dev/ttyOfNobody: No such file or directory");
}

TEST(OpenInput, SaysWhenADeviceIsNoSerialLine) {
  cInputSpec spec;
  spec.kind = eInputKind::Serial;
  spec.path = "/dev/null";
  EXPECT_EQ(OpenError(spec), "/dev/null is no serial line: Inappropriate ioctl for device");
}

// A name that no server has to be asked about: its only label is too long.
TEST(OpenInput, SaysWhenAHostCannotBeFound) {
  const std::string host(64, 'x');
  EXPECT_THAT(OpenError(Parsed("tcp://" + host + ":1")), HasSubstr("cannot find tcp://" + host + ":1: "));
}

}  // namespace tav
