// SPDX-License-Identifier: Apache-2.0
#include "test/ipmi/SimulatedController.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace Doubles {

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint8_t kFan = 4;  // sensor types
constexpr uint8_t kTemperature = 1;
constexpr uint8_t kPowerSupply = 8;
constexpr uint8_t kEntityPresence = 0x25;
constexpr uint8_t kRpm = 18;  // units
constexpr uint8_t kCelsius = 1;

uint16_t freePort() {
  const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  if (fd < 0 || ::bind(fd, general, size) != 0 || ::getsockname(fd, general, &size) != 0) {
    throw std::runtime_error("no free port");
  }
  ::close(fd);
  return ntohs(address.sin_port);
}

std::string hex(const Bytes& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) {
    char word[8];
    std::snprintf(word, sizeof word, " 0x%02x", byte);
    text += word;
  }
  return text;
}

// A text as IPMI records hold it: its length with the mark for Latin-1 in front.
void append(Bytes& record, std::string_view text) {
  record.push_back(static_cast<uint8_t>(0xC0 | text.size()));
  record.insert(record.end(), text.begin(), text.end());
}

// A sensor data record (IPMI 2.0 section 43): header, body, name.
std::string sdr(uint8_t type, Bytes body, std::string_view name) {
  append(body, name);
  Bytes record = {0, 0, 0x51, type, static_cast<uint8_t>(body.size())};
  record.insert(record.end(), body.begin(), body.end());
  return "main_sdr_add 0x20" + hex(record) + "\n";
}

std::string added(uint8_t number, uint8_t type, const char* eventType, const std::string& source) {
  char text[96];
  std::snprintf(text, sizeof text, "sensor_add 0x20 0 %d 0x%x %s", number, type, eventType);
  const std::string nothing(15, '0');
  std::string commands = text + source + "\n";
  std::snprintf(text, sizeof text, "sensor_set_event_support 0x20 0 %d enable scanning per-state",
                number);
  commands += text;
  for (int mask = 0; mask < 4; ++mask) {
    commands += " " + nothing;
  }
  return commands + "\n";
}

// A sensor that measures, with values in units of `factor`.
std::string measuring(uint8_t number, uint8_t type, uint8_t unit, uint8_t factor,
                      std::string_view name, const std::string& source) {
  Bytes body = {0x20, 0, number, type, number, 0x7F, 0x68, type, 1};
  body.resize(42);
  body[16] = unit;
  body[19] = factor;
  body[30] = 0xFF;  // the largest raw value
  return added(number, type, "0x1", source) + sdr(1, body, name);
}

// A sensor of states.
std::string discrete(uint8_t number, uint8_t type, uint8_t states, std::string_view name,
                     const std::string& source) {
  Bytes body = {0x20, 0, number, type, number, 0x7F, 0x40, type, 0x6F};
  body.resize(26);
  body[9] = body[11] = body[13] = states;
  body[15] = 0xC0;
  return added(number, type, "0x6f", source) + sdr(2, body, name);
}

void appendChecksum(Bytes& bytes) {
  bytes.push_back(static_cast<uint8_t>(-std::accumulate(bytes.begin(), bytes.end(), 0)));
}

// FRU information with a product area (Platform Management FRU Information Storage 1.0).
Bytes fruData(std::string_view name, std::string_view part, std::string_view serial) {
  Bytes product = {1, 0, 25};
  for (const std::string_view text : {std::string_view("Maker"), name, part, std::string_view("01"),
                                      serial, std::string_view(), std::string_view()}) {
    append(product, text);
  }
  product.push_back(0xC1);
  while ((product.size() + 1) % 8 != 0) {
    product.push_back(0);
  }
  product[1] = static_cast<uint8_t>((product.size() + 1) / 8);
  appendChecksum(product);
  Bytes all = {1, 0, 0, 0, 1, 0, 0};
  appendChecksum(all);
  all.insert(all.end(), product.begin(), product.end());
  return all;
}

std::string fru(uint8_t number, std::string_view name, const Bytes& data) {
  const Bytes body = {0x20, number, 0x80, 0, 0, 0x10, 0, 0x1D, number, 0};
  return "mc_add_fru_data 0x20 " + std::to_string(number) + " " + std::to_string(data.size()) +
         " data" + hex(data) + "\n" + (number == 0 ? "" : sdr(0x11, body, name));
}

}  // namespace

SimulatedController::SimulatedController() : port_(freePort()) {
  // The simulator says less than FreeIPMI wants about privileges before a session is open.
  directory_.write("access",
                   "username ipmiusr\npassword secret\ncipher-suite-id 3\n"
                   "workaround-flags opensesspriv\n");
  setFan1Rpm(5400);
  setFan2Present(true);
  directory_.write("fan2", "6000");
  writeConfiguration();
  writeCommands();
  start();
}

SimulatedController::~SimulatedController() { kill(); }

void SimulatedController::writeConfiguration() {
  std::string text = "name \"simulated\"\nstartlan 1\naddr 127.0.0.1 " + std::to_string(port_) +
                     "\npriv_limit admin\n";
  for (const char* level : {"callback", "user", "operator", "admin"}) {
    text += std::string("allowed_auths_") + level + " none md2 md5 straight\n";
  }
  directory_.write("lan.conf", text +
                                   "guid a123456789abcdefa123456789abcdef\nendlan\n"
                                   "user 1 true \"\" \"secret\" user 10 none md2 md5 straight\n"
                                   "user 2 true \"ipmiusr\" \"secret\" admin 10 none md2 md5 "
                                   "straight\n");
}

void SimulatedController::writeCommands() {
  const auto polled = [&](const char* file, const char* further = "") {
    return " poll 50 file \"" + directory_.path(file) + "\" " + further;
  };
  directory_.write(
      "commands",
      "mc_setbmc 0x20\n"
      "mc_add 0x20 0 no-device-sdrs 0x23 9 8 0x9f 0x1291 0xf02\n"
      "sel_enable 0x20 1000 0x0a\n" +
          measuring(1, kFan, kRpm, 100, "FAN1", polled("fan1", "div=100")) +
          discrete(3, kEntityPresence, 3, "FAN2_PRS", polled("fan2-present")) +
          measuring(2, kFan, kRpm, 100, "FAN2", polled("fan2", "div=100 depends=0x20,0,3,0")) +
          measuring(4, kTemperature, kCelsius, 1, "Inlet Temp", "") +
          "sensor_set_value 0x20 0 4 42 0\n" + discrete(5, kPowerSupply, 0xF, "PSU1_OK", "") +
          "sensor_set_bit 0x20 0 5 0 1 0\n" + fru(0, "", fruData("Switch", "SW-1", "SW0001")) +
          fru(1, "Fan tray", fruData("Tray", "FT-1-R", "FT0001")) +
          fru(2, "PSU1", fruData("Supply", "PS-460-F", "PS0001")) + "mc_enable 0x20\n");
}

void SimulatedController::start() {
  const std::string state = directory_.path("state");
  std::filesystem::remove_all(state);
  std::filesystem::create_directory(state);
  const std::string configuration = directory_.path("lan.conf");
  const std::string commands = directory_.path("commands");
  const std::string log = directory_.path("log");
  pid_ = ::fork();
  if (pid_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int out = ::open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(out, STDERR_FILENO);
    ::execlp("ipmi_sim", "ipmi_sim", "-n", "-c", configuration.c_str(), "-f", commands.c_str(),
             "-s", state.c_str(), nullptr);
    ::_exit(127);
  }
  if (pid_ < 0) {
    throw std::runtime_error("no process for ipmi_sim");
  }
}

// A process that did not start has no number of its own: 0 and -1 stand for many others.
void SimulatedController::signal(int number) const {
  if (pid_ > 0) {
    ::kill(pid_, number);
  }
}

void SimulatedController::kill() {
  if (pid_ > 0) {
    signal(SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    pid_ = 0;
  }
}

}  // namespace Doubles
