// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/Eeprom.hpp"

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <numeric>

#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

constexpr uint8_t kEeprom = 0x50;

class EepromTest : public BoardFixture {
 protected:
  void loadEeprom(const std::string& settings) {
    load(
        "{'nets': {'protect': {'level': false, 'pins': ['rom:wp']}}, 'buses': [{'name': 'main', "
        "'chips': [{'label': 'rom', 'model': 'eeprom', 'address': '0x50'" +
        settings + "}]}]}");
  }
  int readLong(uint32_t address, size_t size) {
    return perform({.kind = OperationKind::kReadI2cBlock,
                    .address = kEeprom,
                    .command = address,
                    .commandBytes = 2,
                    .size = size});
  }
  std::string complaint(const std::string& settings) {
    try {
      loadEeprom(settings);
    } catch (const Config::FileError& error) {
      return error.what();
    }
    return "no complaint";
  }
};

TEST_F(EepromTest, AnErasedOneIsFullOfOnes) {
  loadEeprom("");
  EXPECT_EQ(readMany(kEeprom, 0xFE, 3), 0);
  EXPECT_EQ(answer, (Bytes{0xFF, 0xFF, 0xFF}));
}

TEST_F(EepromTest, AReadGoesRoundTheWholeArray) {
  loadEeprom(", 'contents': {'0x00': 'begin', '0xFD': 'end'}");
  EXPECT_EQ(readMany(kEeprom, 0xFD, 8), 0);
  EXPECT_EQ(std::string(answer.begin(), answer.end()), "endbegin");
}

TEST_F(EepromTest, ReceivedBytesFollowEachOther) {
  loadEeprom(", 'contents': {'0x10': 'ab'}");
  EXPECT_EQ(send(kEeprom, 0x10), 0);
  EXPECT_EQ(receive(kEeprom), 0);
  EXPECT_EQ(receive(kEeprom), 0);
  EXPECT_EQ(answer, Bytes{'b'});
}

TEST_F(EepromTest, TwoAddressBytesComeMostSignificantFirst) {
  loadEeprom(", 'addressBytes': 2, 'size': 4096, 'pageSize': 32, 'contents': {'0x0123': [1, 2]}");
  EXPECT_EQ(readLong(0x0123, 2), 0);
  EXPECT_EQ(answer, (Bytes{1, 2}));
}

TEST_F(EepromTest, AWriteStaysInItsPage) {
  loadEeprom(", 'pageSize': 8");
  EXPECT_EQ(write(kEeprom, 0x16, {1, 2, 3}), 0);
  clock.sleep(5ms);
  EXPECT_EQ(readMany(kEeprom, 0x10, 9), 0);
  EXPECT_EQ(answer, (Bytes{3, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 0xFF}));
}

TEST_F(EepromTest, DuringAWriteCycleItDoesNotAnswer) {
  loadEeprom(", 'writeMs': 10");
  EXPECT_EQ(write(kEeprom, 0, {1}), 0);
  EXPECT_EQ(read(kEeprom, 0), ENXIO);
  clock.sleep(9ms);
  EXPECT_EQ(read(kEeprom, 0), ENXIO);
  clock.sleep(1ms);
  EXPECT_EQ(read(kEeprom, 0), 0);
  EXPECT_EQ(answer, Bytes{1});
}

TEST_F(EepromTest, SettingTheAddressStartsNoWriteCycle) {
  loadEeprom("");
  EXPECT_EQ(send(kEeprom, 3), 0);
  EXPECT_EQ(receive(kEeprom), 0);
}

TEST_F(EepromTest, AProtectedOneKeepsWhatItHas) {
  loadEeprom(", 'contents': {'0': 7}");
  EXPECT_EQ(board->set("protect", 1), 0);
  EXPECT_EQ(write(kEeprom, 0, {1}), 0);
  EXPECT_EQ(read(kEeprom, 0), 0);
  EXPECT_EQ(answer, Bytes{7});
}

// The bytes were put together by hand from the format's description, the checksum by zlib.
TEST_F(EepromTest, TlvInfoHasItsHeaderAndChecksum) {
  loadEeprom(", 'tlvInfo': {'0x22': 'PN', '0x23': 'S1'}");
  EXPECT_EQ(readMany(kEeprom, 0, 26), 0);
  EXPECT_EQ(answer, (Bytes{'T', 'l', 'v',  'I', 'n', 'f', 'o',  0, 1,    0,    14,   0x22, 2,
                           'P', 'N', 0x23, 2,   'S', '1', 0xFE, 4, 0xD8, 0xE6, 0xAB, 0xC5, 0xFF}));
}

TEST_F(EepromTest, ATextThatLooksLikeANumberIsStillAText) {
  loadEeprom(", 'contents': {'0': '0042', '4': 42, '5': ['0x2A', 7]}");
  EXPECT_EQ(readMany(kEeprom, 0, 7), 0);
  EXPECT_EQ(answer, (Bytes{'0', '0', '4', '2', 42, 42, 7}));
  loadEeprom(", 'tlvInfo': {'0x23': '12345'}");
  EXPECT_EQ(readMany(kEeprom, 11, 7), 0);
  EXPECT_EQ(answer, (Bytes{0x23, 5, '1', '2', '3', '4', '5'}));
}

TEST_F(EepromTest, AFruHasItsProductArea) {
  loadEeprom(", 'fru': {'manufacturer': 'ACME', 'name': 'PS-1', 'part': '12', 'serial': 'S123'}");
  EXPECT_EQ(readMany(kEeprom, 0, 40), 0);
  const Bytes header(answer.begin(), answer.begin() + 8);
  const Bytes area(answer.begin() + 8, answer.begin() + 40);
  EXPECT_EQ(header, (Bytes{1, 0, 0, 0, 1, 0, 0, 0xFE}));
  EXPECT_EQ(area[1] * 8u, area.size());
  EXPECT_EQ(std::accumulate(area.begin(), area.end(), 0) % 256, 0);
  const Bytes fields = {0xC4, 'A', 'C',  'M',  'E', 0xC4, 'P', 'S', '-',  '1',  0xC2,
                        '1',  '2', 0xC0, 0xC4, 'S', '1',  '2', '3', 0xC0, 0xC0, 0xC1};
  EXPECT_EQ(Bytes(area.begin() + 3, area.begin() + 3 + 22), fields);
}

TEST_F(EepromTest, AFileIsFoundBesideTheBoardFile) {
  const auto directory = std::filesystem::temp_directory_path() / "EepromTest";
  std::filesystem::create_directories(directory);
  std::ofstream(directory / "rom.bin", std::ios::binary) << "bytes";
  std::ofstream(directory / "board.json")
      << R"({"buses": [{"name": "main", "chips": [{"label": "rom", "model": "eeprom",
             "address": 80, "file": "rom.bin"}]}]})";
  board = VirtualBoard::load((directory / "board.json").string(), clock);
  std::filesystem::remove_all(directory);
  EXPECT_EQ(readMany(kEeprom, 0, 6), 0);
  EXPECT_EQ(answer, (Bytes{'b', 'y', 't', 'e', 's', 0xFF}));
}

TEST_F(EepromTest, WrongContentsAreRefusedWithARemedy) {
  EXPECT_THAT(complaint(", 'file': 'none.bin'"),
              HasSubstr("none.bin: cannot be read: No such file or directory"));
  EXPECT_THAT(complaint(", 'file': '/tmp'"), HasSubstr("/tmp: cannot be read: Is a directory"));
  EXPECT_THAT(complaint(", 'file': '/dev/zero'"), HasSubstr("/dev/zero: more than 256 bytes"));
  EXPECT_THAT(complaint(", 'contents': {'0xFF': 'ab'}"), HasSubstr("2 bytes at \"0xFF\""));
  EXPECT_THAT(complaint(", 'contents': {'end': 'ab'}"), HasSubstr("\"end\" is no offset"));
  EXPECT_THAT(complaint(", 'contents': {}, 'fru': {}"), HasSubstr("there is \"contents\" already"));
  EXPECT_THAT(complaint(", 'fru': {'name': 'x'}"), HasSubstr("2 to 63 characters"));
  EXPECT_THAT(complaint(", 'fru': {'model': 'x'}"), HasSubstr("\"model\" is not known"));
  EXPECT_THAT(complaint(", 'tlvInfo': {'name': 'x'}"), HasSubstr("\"name\" is no type"));
  EXPECT_THAT(complaint(", 'size': 16, 'tlvInfo': {'0x22': 'abc'}"),
              HasSubstr("bytes; the EEPROM has 16"));
  EXPECT_THAT(complaint(", 'size': 20"), HasSubstr("whole number of pages"));
  EXPECT_THAT(complaint(", 'size': 512"), HasSubstr("from 1 to 256"));
}

}  // namespace
}  // namespace SmbusService::Board
