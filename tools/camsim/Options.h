// The camsim program's command line: global options, then one group of
// device options after each --listen.
#ifndef CAMSIM_OPTIONS_H
#define CAMSIM_OPTIONS_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Config.h"
#include "Fault.h"

namespace camsim {

struct DeviceOptions {
  DeviceConfig config;
  std::vector<std::pair<std::string, Fault>> faults;  // path, fault
};

struct Options {
  bool help = false;
  bool verbose = false;
  bool control = false;  // --control given
  std::string controlAddress;
  uint16_t controlPort = 0;
  std::vector<DeviceOptions> devices;
};

// Parses the arguments after the program name. False with *error set on a
// bad option or value.
bool ParseOptions(const std::vector<std::string>& args, Options* options, std::string* error);

// "127.0.0.1:8080", "[::1]:0"; false if not of that form.
bool ParseListen(const std::string& text, std::string* address, uint16_t* port);

// The --help text, listing every option.
std::string UsageText();

}  // namespace camsim

#endif
