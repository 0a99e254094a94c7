// SPDX-License-Identifier: Apache-2.0
// mbif: the meter driver for wired M-Bus.
#include <gateway/driver/driver_main.h>
#include <gateway/driver/mbus/mbif/mbus_driver.h>
#include <gateway/driver/mbus/mbif/mbus_options.h>

int main(int argc, char** argv) {
  return tav::DriverMain<tav::mbus::cMBusOptions, tav::mbus::cMBusDriver>("mbif", argc, argv);
}
