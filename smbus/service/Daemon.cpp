// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Daemon.hpp"

#include <fmt/format.h>
#include <sys/signalfd.h>

#include <csignal>
#include <memory>

#include "smbus/service/BackEnds.hpp"
#include "smbus/service/LimitedLog.hpp"
#include "smbus/service/Server.hpp"
#include "smbus/service/SocketTransport.hpp"
#include "smbus/service/Systemd.hpp"
#include "smbus/service/control/BoardControlSocket.hpp"
#include "smbus/service/recording/Recorder.hpp"

namespace SmbusService {

namespace {

// Readable once the process is asked to stop. Threads made later inherit the blocked signals.
Descriptor stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  return Descriptor(::signalfd(-1, &signals, SFD_CLOEXEC));
}

std::unique_ptr<ListeningSocket> listenAt(const SocketSettings& settings) {
  std::optional<Descriptor> inherited = Systemd::inheritedSocket();
  return inherited ? std::make_unique<ListeningSocket>(std::move(*inherited))
                   : std::make_unique<ListeningSocket>(settings);
}

void tellSystemd(const BusSlot* hung) {
  if (hung == nullptr) {
    Systemd::notifyAlive();
  } else {
    Systemd::notifyHung(hung->name());
  }
}

std::vector<BusKey> busesOf(const Configuration& configuration) {
  std::vector<BusKey> buses;
  for (const BusEntry& entry : configuration.buses) {
    buses.push_back(entry.key);
  }
  return buses;
}

std::unique_ptr<Recording::Recorder> recorderOf(const Configuration& configuration,
                                                std::vector<BusKey> buses,
                                                const std::string& version, Clock& clock,
                                                Log& log) {
  if (configuration.record.empty()) {
    return nullptr;
  }
  return std::make_unique<Recording::Recorder>(
      Recording::RecorderSettings{configuration.record, version, std::move(buses),
                                  configuration.limits.recordBytes,
                                  configuration.limits.recordQueueBytes},
      clock, log, Recording::systemUtc);
}

// A replay needs no file, and none of its buses.
Config::JsonFile fileOf(const DaemonOptions& options) {
  return options.configuration.empty() ? Config::JsonFile::parse("defaults", "{}")
                                       : Config::JsonFile::load(options.configuration);
}

Configuration configurationOf(const DaemonOptions& options, const Config::JsonFile& file) {
  Configuration configuration =
      options.configuration.empty() ? defaultConfiguration() : readConfiguration(file);
  if (!options.replay.empty()) {
    configuration.buses.clear();
    configuration.virtualBoard.clear();
    configuration.control.path.clear();  // there is no board to control
  }
  return configuration;
}

// Everything that serves, in the order in which it is made.
class Daemon {
 public:
  Daemon(const DaemonOptions& options, Log& log)
      : file_(fileOf(options)),
        configuration_(configurationOf(options, file_)),
        log_(log, clock_, configuration_.limits.logLines),
        backEnds_(file_, configuration_, clock_) {
    if (!options.socket.empty()) {
      configuration_.socket.path = options.socket;
    }
    if (!options.record.empty()) {
      configuration_.record = options.record;
    }
    for (const BusEntry& entry : configuration_.buses) {
      (void)buses_.add(entry.key, backEnds_.open(entry), clock_);  // each is there once
    }
    serving_ = fmt::format("serving {} buses", buses_.size());
    recorder_ = recorderOf(configuration_,
                           options.replay.empty() ? busesOf(configuration_) : beginReplay(options),
                           options.version, clock_, log_);
  }

  bool serve(int stop) {
    auto socket = listenAt(configuration_.socket);
    server_ =
        std::make_unique<Server>(Context{buses_, configuration_.limits, configuration_.retries,
                                         clock_, log_, recorder_.get(), replay_.get()},
                                 tellSystemd);
    std::optional<Recording::RecorderThread> writer;  // until serving is over, however it ends
    if (recorder_) {
      writer.emplace(*recorder_, clock_);
    }
    Acceptor acceptor(
        socket->descriptor(), clock_, log_, [this](Descriptor client, const Peer& peer) {
          server_->adopt(std::make_unique<SocketTransport>(std::move(client), clock_), peer);
        });
    openControl();
    log_.line(Level::kNotice, serving_);
    Systemd::notifyReady();
    acceptor.run(stop);
    Systemd::notifyStopping();
    log_.line(Level::kNotice, "stopping");
    socket.reset();
    control_.reset();
    if (backEnds_.board() != nullptr) {
      backEnds_.board()->close();  // a hang that was asked for keeps nobody
    }
    return server_->stop();
  }

 private:
  // Returns the recording's buses.
  std::vector<BusKey> beginReplay(const DaemonOptions& options) {
    Recording::RecordingReader reader(options.replay);
    std::vector<Recording::Record> records = loadRecords(reader, log_);
    serving_ = fmt::format("replaying {} transactions of {}", records.size(), options.replay);
    replay_ = makeReplay(options.replayMode, std::move(records), log_);
    return reader.header().buses;
  }

  // One that nobody has asked for is done without if it cannot be had.
  void openControl() {
    SocketSettings settings = configuration_.control;
    const bool asked = !settings.path.empty();
    if (!asked) {
      if (backEnds_.board() == nullptr) {
        return;
      }
      settings.path = defaultControlPath(configuration_.socket.path);
    }
    try {
      control_ = std::make_unique<BoardControlSocket>(settings, configuration_.limits, clock_, log_,
                                                      backEnds_.board());
    } catch (const ListenError& error) {
      if (asked) {
        throw;
      }
      log_.line(Level::kWarning, fmt::format("no control socket: {}", error.what()));
    }
  }

  SystemClock clock_;
  const Config::JsonFile file_;
  Configuration configuration_;
  LimitedLog log_;
  const BackEnds backEnds_;
  BusSet buses_;
  std::string serving_;
  std::unique_ptr<Recording::Replay> replay_;      // null: the buses are served
  std::unique_ptr<Recording::Recorder> recorder_;  // null: nothing is recorded
  std::unique_ptr<Server> server_;
  std::unique_ptr<BoardControlSocket> control_;
};

}  // namespace

void checkConfiguration(const std::string& path) {
  SystemClock clock;
  const Config::JsonFile file = Config::JsonFile::load(path);
  const Configuration configuration = readConfiguration(file);
  const BackEnds backEnds(file, configuration, clock);
}

bool runDaemon(const DaemonOptions& options, Log& log) {
  const Descriptor stop = stopSignals();
  auto daemon = std::make_unique<Daemon>(options, log);
  const bool ended = daemon->serve(stop.get());
  if (!ended) {
    log.line(Level::kError, "stopped while a bus hangs; its operation is left behind");
    (void)daemon.release();  // stuck threads use it until the process ends
  }
  return ended;
}

}  // namespace SmbusService
