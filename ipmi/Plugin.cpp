// SPDX-License-Identifier: Apache-2.0
//
// Loading this library registers the controllers of the configuration file as HAM types. A
// controller is read from the first time that a device asks for it; all its devices share one
// access method and one thread.
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Ham/IpmiHam.hpp"
#include "Utils/Host.hpp"
#include "ipmi/CachedHam.hpp"
#include "ipmi/Configuration.hpp"
#include "ipmi/FreeIpmiReader.hpp"
#include "ipmi/Poller.hpp"

namespace IpmiPlugin {

namespace {

constexpr const char* kConfigurationVariable = "NIMBO_IPMI_CONFIG";
constexpr const char* kDefaultConfiguration = "/etc/nimbo/ipmi.json";

class Source {
 public:
  Source(const Controller& controller, const Configuration& configuration)
      : controller_(controller), configuration_(configuration) {}

  // Empty when the host has no timer or the system no thread.
  std::shared_ptr<Ham::IpmiHam> ham() {
    if (ham_ == nullptr) {
      start();
    }
    return ham_;
  }

  // Ends the thread and what it runs; the access method stays, with what it holds.
  void stop() { poller_.reset(); }

 private:
  void start() {
    const Clock clock = std::chrono::steady_clock::now;
    const auto mailbox = std::make_shared<Mailbox>();
    auto ham =
        std::make_shared<CachedHam>(controller_.name, mailbox, controller_.staleAfter, clock);
    if (!ham->start()) {
      return;
    }
    poller_ = std::make_unique<Poller>(
        std::make_unique<FreeIpmiReader>(controller_, configuration_, clock), mailbox,
        controller_.interval, clock);
    ham_ = std::move(ham);
  }

  const Controller controller_;
  const Configuration configuration_;
  std::unique_ptr<Poller> poller_;
  std::shared_ptr<CachedHam> ham_;
};

// Never freed: host timers and devices may look at access methods until the very end.
std::vector<std::unique_ptr<Source>>& sources() {
  static auto& all = *new std::vector<std::unique_ptr<Source>>;
  return all;
}

std::shared_ptr<Ham::IpmiHam> make(Source& source) {
  try {
    return source.ham();
  } catch (const std::exception& error) {
    TRACE(0, "Error: IPMI: %s", error.what());
    return nullptr;
  }
}

void registerControllers() {
  const char* named = std::getenv(kConfigurationVariable);
  const Configuration configuration =
      loadConfiguration(named != nullptr && *named != '\0' ? named : kDefaultConfiguration);
  for (const Controller& controller : configuration.controllers) {
    Source* source =
        sources().emplace_back(std::make_unique<Source>(controller, configuration)).get();
    Ham::ipmiHams[controller.name] = [source] { return make(*source); };
  }
}

__attribute__((constructor)) void load() {
  try {
    registerControllers();
  } catch (const std::exception& error) {
    TRACE(0, "Error: IPMI: %s", error.what());
  }
}

__attribute__((destructor)) void unload() {
  for (const auto& source : sources()) {
    source->stop();
  }
}

}  // namespace

}  // namespace IpmiPlugin
