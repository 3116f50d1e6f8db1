// SPDX-License-Identifier: Apache-2.0
//
// smbusd as a process, on a virtual board with one register chip, in a directory of its own.
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "smbus/service/Descriptor.hpp"

namespace SmbusService {

// Where the chip is, and what its register 0x10 reads.
inline constexpr uint32_t kChipBus = 5;  // I2C bus 5
inline constexpr uint8_t kChipAddress = 0x50;
inline constexpr uint8_t kChipRegister = 0x10;
inline constexpr char kChipValue = 'A';

class ServiceProcess {
 public:
  ServiceProcess();
  // Kills the service if it runs.
  ~ServiceProcess();
  ServiceProcess(const ServiceProcess&) = delete;
  ServiceProcess& operator=(const ServiceProcess&) = delete;

  [[nodiscard]] std::string path(const char* name) const { return directory_ / name; }
  [[nodiscard]] std::string socketPath() const { return path("smbus.sock"); }
  [[nodiscard]] std::string configurationPath() const { return path("smbusd.json"); }
  [[nodiscard]] std::string controlPath() const { return socketPath() + ".control"; }
  void writeConfiguration(const std::string& text) const;
  void writeBoard(const std::string& text) const;

  // Starts the service and waits until it says that it is ready. With a listening socket, hands it
  // over as systemd does.
  void start(const Descriptor* activation = nullptr);
  // Starts it and waits for its end; returns the exit status.
  [[nodiscard]] int run(const std::string& option, const std::string& argument);
  void signal(int number) const;
  // Waits for the end. The exit status, or minus the signal that ended it.
  [[nodiscard]] int wait();

  // What the service tells systemd next; nothing, when it says nothing for a minute.
  [[nodiscard]] std::optional<std::string> notification();
  // What it has written to standard error.
  [[nodiscard]] std::string errors() const;

 private:
  void listen();
  void launch(const std::string& option, const std::string& argument, const Descriptor* activation);

  std::filesystem::path directory_;
  Descriptor notifications_;
  // Reads them as they come, as systemd does: the service waits when too many are under way.
  std::thread listener_;
  std::mutex mutex_;  // held for the two below
  std::condition_variable told_;
  std::deque<std::string> heard_;
  pid_t pid_ = 0;
};

}  // namespace SmbusService
