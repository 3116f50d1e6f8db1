// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "test/identity/Images.hpp"

namespace {

using namespace TestSupport;
using Identity::readTlvInfo;

// Put together by hand from the format's description, the checksum by zlib.
const Bytes kImage = {'T', 'l', 'v',  'I', 'n', 'f', 'o',  0, 1,    0,    14,   0x22, 2,
                      'P', 'N', 0x23, 2,   'S', '1', 0xFE, 4, 0xD8, 0xE6, 0xAB, 0xC5};

std::string faults(const Bytes& bytes) { return faultsOf(readTlvInfo(bytes)); }

Bytes with(size_t at, uint8_t value) {
  Bytes bytes = kImage;
  bytes.at(at) = value;
  return bytes;
}

TEST(TlvRead, AGoodImageHasFieldsWithTheirPlacesAndNames) {
  const Image image = readTlvInfo(kImage);
  EXPECT_EQ(faultsOf(image), "");
  ASSERT_EQ(image.fields.size(), 2u);
  EXPECT_EQ(image.fields[0].offset, 11u);
  EXPECT_EQ(image.fields[0].name, "Part Number");
  EXPECT_EQ(image.fields[1].bytes, (Bytes{'S', '1'}));
  EXPECT_EQ(fieldsOf(image), "0x22=PN 0x23=S1");
}

TEST(TlvRead, BytesBehindTheImageAreLeftAlone) {
  Bytes bytes = kImage;
  bytes.resize(256, 0xFF);
  EXPECT_EQ(faults(bytes), "");
}

TEST(TlvRead, AWrongChecksumIsToldWithTheRightOne) {
  EXPECT_EQ(faults(with(21, 0)),
            "0x0015: checksum (CRC-32): 0xD8E6ABC5 expected, 0x00E6ABC5 found\n");
}

TEST(TlvRead, TheVersionIsOne) {
  EXPECT_EQ(faults(with(8, 2)).substr(0, 44), "0x0008: version: 0x01 expected, 0x02 found\n0");
}

TEST(TlvRead, ARecordBeyondTheEndIsNotRead) {
  const Image image = readTlvInfo(with(16, 9));
  EXPECT_EQ(faultsOf(image), "0x0010: record 0x23 is cut off: 9 bytes expected, 8 found\n");
  EXPECT_EQ(fieldsOf(image), "0x22=PN");
}

TEST(TlvRead, AChecksumHasFourBytes) {
  EXPECT_EQ(faults(with(20, 3)), "0x0014: length of the checksum record: 4 expected, 3 found\n");
}

TEST(TlvRead, WithoutAChecksumSomethingIsMissing) {
  EXPECT_EQ(faults(with(19, 0x22)),
            "0x0019: a checksum record (type 0xFE) expected, the end of the records found\n");
}

TEST(TlvRead, TheChecksumIsTheLastRecord) {
  Bytes bytes = with(10, 16);
  bytes.insert(bytes.end(), {0x22, 0});
  EXPECT_EQ(faults(bytes),
            "0x0015: checksum (CRC-32): 0x24664408 expected, 0xD8E6ABC5 found\n"
            "0x0019: the end of the records expected behind the checksum, 2 more bytes found\n");
}

TEST(TlvRead, LengthsAreThoseOfTheStandard) {
  EXPECT_EQ(faults(Identity::buildTlvInfo({{0x24, Bytes(5)}, {0x26, Bytes(1)}, {0xFD, Bytes(2)}})),
            "0x000C: length of Base MAC Address (0x24): 6 expected, 5 found\n"
            "0x0016: length of Vendor Extension (0xFD): 4 to 255 expected, 2 found\n");
}

TEST(TlvRead, ValuesAreShownByTheirType) {
  EXPECT_EQ(fieldsOf(readTlvInfo(tlvInfo("{'0x24': [2, 10, 12, 0, 1, 255], '0x2A': [1, 2], "
                                         "'0xFD': [0, 0, 1, 2], '0x50': [27, 65], '0x51': 'A'}"))),
            "0x24=02:0a:0c:00:01:ff 0x2A=258 0xFD=00 00 01 02 0x50=1b 41 0x51=A");
}

TEST(TlvRead, EveryTruncationIsToldAtItsPlace) {
  for (size_t size = 0; size < kImage.size(); ++size) {
    const Image image = readTlvInfo(Identity::View(kImage).first(size));
    ASSERT_FALSE(image.faults.empty()) << size;
    EXPECT_EQ(image.faults[0].offset, size < 11 ? size : 9) << size;
    EXPECT_NE(image.faults[0].message.find("is cut off"), std::string::npos) << size;
  }
}

}  // namespace
