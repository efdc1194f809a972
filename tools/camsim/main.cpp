// camsim: network cameras and KEL recorders on loopback (or any address),
// for trying the requester without a real device.
#include <pthread.h>
#include <signal.h>

#include <cstdio>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Control.h"
#include "Device.h"
#include "Models.h"
#include "Options.h"

namespace {

std::mutex printMutex;

void PrintRecord(size_t device, const camsim::RequestRecord& record) {
  std::time_t seconds = std::chrono::system_clock::to_time_t(record.received);
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char when[32];
  std::strftime(when, sizeof when, "%H:%M:%S", &utc);
  std::lock_guard<std::mutex> lock(printMutex);
  std::fprintf(stderr, "camsim: device %zu %s %s \"%s\"\n", device, when, record.peer.c_str(),
               record.requestLine.c_str());
  for (const auto& header : record.headers) {
    std::fprintf(stderr, "camsim:   %s: %s\n", header.first.c_str(), header.second.c_str());
  }
}

void PrintRtpEvent(size_t device, const std::string& event) {
  std::lock_guard<std::mutex> lock(printMutex);
  std::fprintf(stderr, "camsim: device %zu %s\n", device, event.c_str());
}

std::vector<std::unique_ptr<camsim::Device>> StartDevices(const camsim::Options& options) {
  std::vector<std::unique_ptr<camsim::Device>> devices;
  for (size_t i = 0; i < options.devices.size(); ++i) {
    const camsim::DeviceOptions& wanted = options.devices[i];
    std::string error;
    auto device = camsim::Device::Start(wanted.config, &error);
    if (!device) {
      std::fprintf(stderr, "camsim: device %zu on %s port %u: %s\n", i,
                   wanted.config.address.c_str(), wanted.config.port, error.c_str());
      return {};
    }
    for (const auto& fault : wanted.faults) device->AddFault(fault.first, fault.second);
    if (options.verbose) {
      device->SetObserver([i](const camsim::RequestRecord& record) { PrintRecord(i, record); });
      device->SetRtpObserver([i](const std::string& event) { PrintRtpEvent(i, event); });
    }
    devices.push_back(std::move(device));
  }
  return devices;
}

// Only once everything listens: a script must never read the port of a
// program that is about to exit.
void PrintListening(const std::vector<std::unique_ptr<camsim::Device>>& devices,
                    const camsim::Options& options, const camsim::ControlServer& control) {
  for (size_t i = 0; i < devices.size(); ++i) {
    const camsim::Device& device = *devices[i];
    std::printf("camsim: device %zu model %d (%s) listening on %s port %u\n", i, device.Model(),
                camsim::ModelName(device.Model()), device.Address().c_str(), device.Port());
  }
  if (options.control) {
    std::printf("camsim: control listening on %s port %u\n", options.controlAddress.c_str(),
                control.Port());
  }
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  camsim::Options options;
  std::string error;
  if (!camsim::ParseOptions(std::vector<std::string>(argv + 1, argv + argc), &options, &error)) {
    std::fprintf(stderr, "camsim: %s (see --help)\n", error.c_str());
    return 2;
  }
  if (options.help) {
    std::fputs(camsim::UsageText().c_str(), stdout);
    return 0;
  }
  if (options.devices.empty()) {
    std::fprintf(stderr, "camsim: give at least one --listen ADDR:PORT (see --help)\n");
    return 2;
  }
  // Every thread inherits the blocked set; only sigwait below sees them.
  sigset_t signals;
  sigemptyset(&signals);
  for (int number : {SIGINT, SIGTERM, SIGUSR1, SIGUSR2}) sigaddset(&signals, number);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  signal(SIGPIPE, SIG_IGN);

  auto devices = StartDevices(options);
  if (devices.empty()) return 1;
  camsim::ControlServer control;
  if (options.control) {
    std::vector<camsim::Device*> targets;
    for (auto& device : devices) targets.push_back(device.get());
    if (!control.Start(options.controlAddress, options.controlPort, targets, &error)) {
      std::fprintf(stderr, "camsim: control on %s port %u: %s\n", options.controlAddress.c_str(),
                   options.controlPort, error.c_str());
      return 1;
    }
  }
  PrintListening(devices, options, control);
  for (;;) {
    int number = 0;
    if (sigwait(&signals, &number) != 0) continue;
    if (number == SIGINT || number == SIGTERM) break;
    for (auto& device : devices) {
      if (number == SIGUSR1) device->RefuseConnections();
      if (number == SIGUSR2 && !device->AcceptConnections(&error)) {
        std::fprintf(stderr, "camsim: cannot listen again on port %u: %s\n", device->Port(),
                     error.c_str());
      }
    }
  }
  control.Stop();
  for (auto& device : devices) device->Stop();
  std::printf("camsim: stopped\n");
  return 0;
}
