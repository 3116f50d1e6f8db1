// SPDX-License-Identifier: Apache-2.0
#include "ipmi/Configuration.hpp"

#include <gmock/gmock.h>

#include <string>

#include "config/FileError.hpp"
#include "test/ipmi/Directory.hpp"

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace IpmiPlugin {

namespace {

using namespace std::chrono_literals;
using std::filesystem::perms;

class ConfigurationFile : public testing::Test {
 protected:
  ConfigurationFile() : access(directory.write("access", "username u\npassword p\n")) {}

  Configuration load(const std::string& text) {
    return loadConfiguration(directory.write("ipmi.json", text));
  }

  // A file with this one controller.
  std::string one(const std::string& members) const {
    return R"({"controllers": {"bmc": {)" + members + "}}}";
  }

  std::string remote(const std::string& furtherMembers = "") const {
    return one(R"("host": "10.0.0.2", "accessFile": ")" + access + "\"" + furtherMembers);
  }

  std::string failure(const std::string& text) {
    try {
      load(text);
      return "it is fine";
    } catch (const Config::FileError& error) {
      return error.what();
    }
  }

  Doubles::Directory directory;
  const std::string access;
};

TEST_F(ConfigurationFile, RemoteControllerHasDefaults) {
  const Configuration configuration = load(remote());
  EXPECT_EQ(configuration.toolDirectory, "/usr/sbin");
  EXPECT_EQ(configuration.cacheDirectory, "/var/cache/nimbo-ipmi");
  ASSERT_EQ(configuration.controllers.size(), 1u);
  const Controller& bmc = configuration.controllers[0];
  EXPECT_EQ(bmc.name, "bmc");
  EXPECT_EQ(bmc.host, "10.0.0.2");
  EXPECT_EQ(bmc.port, 623);
  EXPECT_EQ(bmc.driver, "LAN_2_0");
  EXPECT_EQ(bmc.device, "");
  EXPECT_EQ(bmc.interval, 5s);
  EXPECT_EQ(bmc.fruInterval, 60s);
  EXPECT_EQ(bmc.timeout, 10s);
  EXPECT_EQ(bmc.staleAfter, 30s);
  EXPECT_THAT(bmc.fruDevices, IsEmpty());
  EXPECT_EQ(bmc.airflow.size(), 4u);
}

TEST_F(ConfigurationFile, EveryKeyIsTaken) {
  const Configuration configuration = load(
      R"({"toolDirectory": "/opt/bin", "cacheDirectory": "/tmp/cache", "controllers": {"a": {
      "driver": "OPENIPMI", "device": "/dev/ipmi1", "interval": 0.5, "fruInterval": 7,
      "timeout": 4, "staleAfter": 9.5, "fruDevices": [3, 1], "airflow": {"X": "up"}}}})");
  EXPECT_EQ(configuration.toolDirectory, "/opt/bin");
  EXPECT_EQ(configuration.cacheDirectory, "/tmp/cache");
  const Controller& a = configuration.controllers.at(0);
  EXPECT_EQ(a.driver, "OPENIPMI");
  EXPECT_EQ(a.device, "/dev/ipmi1");
  EXPECT_EQ(a.interval, 500ms);
  EXPECT_EQ(a.fruInterval, 7s);
  EXPECT_EQ(a.timeout, 4s);
  EXPECT_EQ(a.staleAfter, 9500ms);
  EXPECT_THAT(a.fruDevices, ElementsAre(3, 1));
  ASSERT_EQ(a.airflow.size(), 1u);
  EXPECT_EQ(a.airflow[0].mark, "X");
  EXPECT_EQ(a.airflow[0].direction, "up");
}

TEST_F(ConfigurationFile, LocalControllerNeedsNothing) {
  const Controller local = load(one("")).controllers.at(0);
  EXPECT_EQ(local.host, "");
  EXPECT_EQ(local.driver, "");
}

TEST_F(ConfigurationFile, MissingFileIsNamed) {
  EXPECT_THROW(loadConfiguration(directory.path("none")), Config::FileError);
}

TEST_F(ConfigurationFile, PasswordHasNoPlaceInIt) {
  EXPECT_THAT(failure(one(R"("password": "x")")), HasSubstr(R"(unknown key "password")"));
}

TEST_F(ConfigurationFile, HostIsOneHost) {
  EXPECT_THAT(failure(one(R"("host": "a,b")")), EndsWith("(a host's name or address)"));
  EXPECT_THAT(failure(one(R"("host": "-h")")), EndsWith("(a host's name or address)"));
}

TEST_F(ConfigurationFile, HostNeedsAnAccessFile) {
  EXPECT_THAT(failure(one(R"("host": "10.0.0.2")")),
              EndsWith("ipmi.json:1:25: \"host\" needs an \"accessFile\" with the user and the "
                       "password"));
}

TEST_F(ConfigurationFile, AccessFileIsItsOwnersAlone) {
  std::filesystem::permissions(access, perms::group_read, std::filesystem::perm_options::add);
  EXPECT_THAT(failure(remote()), EndsWith(access + " holds a password and must be a file of its "
                                                   "owner's alone; make it so with \"chmod 600\""));
}

TEST_F(ConfigurationFile, AccessFileMustBeThere) {
  std::filesystem::remove(access);
  EXPECT_THAT(failure(remote()), EndsWith(access + " cannot be found: No such file or directory"));
}

TEST_F(ConfigurationFile, DriverFitsTheWayToTheController) {
  EXPECT_THAT(failure(remote(R"(, "driver": "KCS")")), HasSubstr("the \"driver\" is LAN"));
  EXPECT_THAT(failure(one(R"("driver": "LAN")")), HasSubstr("the \"driver\" is LAN"));
}

TEST_F(ConfigurationFile, ValuesMustLiveLongerThanTheInterval) {
  EXPECT_THAT(failure(one(R"("interval": 5, "staleAfter": 5)")),
              HasSubstr("\"staleAfter\" must be longer than \"interval\""));
}

TEST_F(ConfigurationFile, TimesAreInRange) {
  EXPECT_THAT(failure(one(R"("interval": 0)")), HasSubstr("seconds"));
  EXPECT_THAT(failure(one(R"("timeout": 1)")), HasSubstr("seconds, 3 at least"));
}

}  // namespace

}  // namespace IpmiPlugin
