// SPDX-License-Identifier: Apache-2.0
// ehzif: the SML meter driver.
#include <gateway/driver/driver_main.h>
#include <gateway/driver/sml/ehz_driver.h>
#include <gateway/driver/sml/ehz_options.h>

int main(int argc, char** argv) {
  return tav::DriverMain<tav::sml::cEhzOptions, tav::sml::cEhzDriver>("ehzif", argc, argv);
}
