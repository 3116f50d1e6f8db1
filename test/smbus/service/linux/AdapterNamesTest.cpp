// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/linux/AdapterNames.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace SmbusService {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const std::map<uint32_t, std::string> kAdapters{
    {0, "SMBus I801 adapter at f000"}, {3, "Synopsys DesignWare"}, {4, "Synopsys DesignWare"}};

std::string messageFor(const std::string& name) {
  try {
    (void)adapterNamed(name, kAdapters);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(AdapterNames, AreReadFromTheFilesOfTheDevices) {
  const std::filesystem::path devices = testing::TempDir() + "adapter_names";
  for (const auto& [entry, name] : {std::pair("i2c-2", "first"), std::pair("i2c-17", "second"),
                                    std::pair("0-0050", "a device"), std::pair("i2c-x", "odd")}) {
    std::filesystem::create_directories(devices / entry);
    std::ofstream(devices / entry / "name") << name << '\n';
  }
  EXPECT_THAT(adapterNames(devices), ElementsAre(Pair(2U, "first"), Pair(17U, "second")));
  std::filesystem::remove_all(devices);
}

TEST(AdapterNames, ASystemWithoutI2cHasNone) {
  EXPECT_THAT(adapterNames("/no/such/directory"), IsEmpty());
}

TEST(AdapterNames, ANameFindsItsNumber) {
  EXPECT_EQ(adapterNamed("SMBus I801 adapter at f000", kAdapters), 0U);
}

TEST(AdapterNames, AMissingNameListsWhatThereIs) {
  EXPECT_EQ(messageFor("nowhere"),
            "there is no i2c adapter named \"nowhere\"; there are: 0 \"SMBus I801 adapter at "
            "f000\", 3 \"Synopsys DesignWare\", 4 \"Synopsys DesignWare\"");
}

TEST(AdapterNames, AnAmbiguousNameAsksForTheNumber) {
  EXPECT_EQ(messageFor("Synopsys DesignWare"),
            "the i2c adapters 3, 4 are all named \"Synopsys DesignWare\"; give the number");
}

}  // namespace
}  // namespace SmbusService
