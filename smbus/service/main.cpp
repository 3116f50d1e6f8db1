// SPDX-License-Identifier: Apache-2.0
//
// smbusd, the SMBus service.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

#include "config/FileError.hpp"
#include "smbus/service/Daemon.hpp"

namespace {

constexpr const char* kDefaultConfiguration = "/etc/nimbo/smbusd.json";

const std::map<std::string, SmbusService::Recording::ReplayMode> kReplayModes = {
    {"strict", SmbusService::Recording::ReplayMode::kStrict},
    {"loose", SmbusService::Recording::ReplayMode::kLoose}};

// Exit codes beside 0.
constexpr int kFailed = 1;
constexpr int kWrongConfiguration = 2;

int check(const std::string& path) {
  SmbusService::checkConfiguration(path);
  std::cout << path << ": no errors\n";
  return EXIT_SUCCESS;
}

int serve(const SmbusService::DaemonOptions& options) {
  static SmbusService::StandardErrorLog log;
  if (!SmbusService::runDaemon(options, log)) {
    std::_Exit(kFailed);  // without destructors: a stuck thread may still run
  }
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  SmbusService::DaemonOptions options;
  options.configuration = kDefaultConfiguration;
  options.version = NIMBO_VERSION;
  std::string replayMode = "strict";
  std::string checked;
  CLI::App app("The SMBus service: performs transactions on a board's buses for its clients.",
               "smbusd");
  const CLI::Option* config =
      app.add_option("--config", options.configuration, "configuration file")
          ->capture_default_str();
  app.add_option("--socket", options.socket, "path of the socket, in place of the configured one");
  app.add_option("--record", options.record,
                 "record every transaction in this file, in place of the configured one");
  CLI::Option* replay =
      app.add_option("--replay", options.replay,
                     "serve this recording in place of the buses; needs no configuration");
  app.add_option("--replay-mode", replayMode,
                 "strict: expect the recorded transactions in their order (default);\n"
                 "loose: answer any, register by register")
      ->check(CLI::IsMember(kReplayModes))
      ->needs(replay)
      ->type_name("strict|loose");
  app.add_option("--check", checked, "check a configuration file, open nothing, and end");
  app.set_version_flag("--version", "smbusd " NIMBO_VERSION);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? EXIT_SUCCESS : kFailed;
  }
  options.replayMode = kReplayModes.at(replayMode);
  if (!options.replay.empty() && config->count() == 0) {
    options.configuration.clear();
  }
  try {
    return checked.empty() ? serve(options) : check(checked);
  } catch (const Config::FileError& error) {
    std::cerr << error.what() << '\n';
    return kWrongConfiguration;
  } catch (const std::exception& error) {
    std::cerr << "smbusd: " << error.what() << '\n';
    return kFailed;
  }
}
