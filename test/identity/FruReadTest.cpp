// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

#include "test/identity/Images.hpp"

namespace {

using namespace TestSupport;
using Identity::readFru;
using testing::HasSubstr;
using testing::StartsWith;

// A header and an area at 8, by hand; both checksums are filled in.
Bytes withArea(uint8_t offsetAt, Bytes area) {
  Bytes image = {1, 0, 0, 0, 0, 0, 0, 0};
  image[offsetAt] = 1;
  const auto close = [](Bytes& bytes) {
    bytes.back() = static_cast<uint8_t>(-std::accumulate(bytes.begin(), bytes.end(), 0));
  };
  close(image);
  close(area);
  image.insert(image.end(), area.begin(), area.end());
  return image;
}
Bytes product(Bytes area) { return withArea(4, std::move(area)); }

std::string faults(const Bytes& bytes) { return faultsOf(readFru(bytes)); }

const Bytes kProduct = product({1, 1, 0, 0xC2, 'M', 'F', 0xC1, 0});

Bytes with(size_t at, uint8_t value) {
  Bytes bytes = kProduct;
  bytes.at(at) = value;
  return bytes;
}

TEST(FruRead, AGoodImageHasFieldsWithTheirPlacesAndNames) {
  const Image image = readFru(kProduct);
  EXPECT_EQ(faultsOf(image), "");
  ASSERT_EQ(image.fields.size(), 1u);
  EXPECT_EQ(image.fields[0].offset, 11u);
  EXPECT_EQ(image.fields[0].name, "Manufacturer Name");
  EXPECT_EQ(fieldsOf(image), "manufacturer=MF");
}

TEST(FruRead, WrongChecksumsAreToldWithTheRightOnes) {
  EXPECT_EQ(faults(with(7, 0)),
            "0x0007: checksum of the common header: 0xFE expected, 0x00 found\n");
  EXPECT_EQ(faults(with(15, 7)),
            "0x000F: checksum of the product info area: 0xE8 expected, 0x07 found\n");
}

TEST(FruRead, TheHeaderIsThatOfTheStandard) {
  EXPECT_THAT(faults(with(0, 2)),
              StartsWith("0x0000: format version of the common header: 0x01 expected, 0x02"));
  EXPECT_THAT(faults(with(6, 5)), StartsWith("0x0006: padding of the common header: 0x00 "));
  EXPECT_THAT(faults(with(8, 3)),
              HasSubstr("0x0008: format version of the product info area: 0x01 expected, 0x03"));
}

TEST(FruRead, AnAreaBeyondTheEndIsNotRead) {
  EXPECT_THAT(faults(with(4, 2)), HasSubstr("0x0004: the product info area is cut off: it begins "
                                            "at 0x0010, the image ends at 0x0010\n"));
  EXPECT_THAT(faults(with(1, 200)), HasSubstr("0x0001: the internal use area is cut off"));
  EXPECT_THAT(faults(with(5, 200)), HasSubstr("0x0005: the multirecord area is cut off"));
}

TEST(FruRead, AnAreaThatIsCutOffIsReadAsFarAsItIsThere) {
  const Image image = readFru(with(9, 2));
  EXPECT_EQ(faultsOf(image),
            "0x0009: the product info area is cut off: 16 bytes expected, 8 found\n");
  EXPECT_EQ(fieldsOf(image), "manufacturer=MF");
}

TEST(FruRead, AnAreaHasALength) {
  EXPECT_EQ(faults(with(9, 0)),
            "0x0009: length of the product info area: at least 8 bytes expected, 0 found\n");
}

TEST(FruRead, AFieldBeyondTheAreaIsNotRead) {
  EXPECT_EQ(faults(product({1, 1, 0, 0xC2, 'M', 'F', 0xC2, 0})),
            "0x000E: a field of the product info area is cut off: 2 bytes expected, 0 found\n");
}

TEST(FruRead, TheFieldsHaveAnEnd) {
  EXPECT_EQ(faults(product({1, 1, 0, 0xC3, 'M', 'F', 'R', 0})),
            "0x000F: the end of the fields (0xC1) expected, the end of the product info area "
            "found\n");
}

TEST(FruRead, FieldsAreShownByTheirEncoding) {
  const Bytes image = product({1, 2, 0, 0x02, 0x00, 0x1B,             // binary
                               0x42, 0x12, 0xBD,                      // BCD plus
                               0x83, 0x6E, 0xDA, 0x8A, 0xC1, 0, 0});  // 6-bit ASCII
  EXPECT_EQ(fieldsOf(readFru(image)), "manufacturer=00 1b name=12-? part=NIMB");
  EXPECT_EQ(faults(image), "");
}

TEST(FruRead, TextsOfOtherLanguagesThanEnglishAreWide) {
  constexpr uint8_t kEnglish = 25;
  constexpr uint8_t kGerman = 4;
  EXPECT_EQ(fieldsOf(readFru(product({1, 1, kEnglish, 0xC2, 'M', 'F', 0xC1, 0}))),
            "manufacturer=MF");
  EXPECT_EQ(fieldsOf(readFru(product(
                {1, 2, kGerman, 0xC4, 'M', 0, 0xFC, 0, 0x42, 0x10, 0xA2, 0xC1, 0, 0, 0, 0}))),
            "manufacturer=M? name=10 2");
}

TEST(FruRead, BoardAndChassisHaveKeysOfTheirOwn) {
  EXPECT_EQ(fieldsOf(readFru(
                withArea(3, {1, 2, 0, 0, 0, 0, 0xC0, 0xC0, 0xC2, 'S', '1', 0xC1, 0, 0, 0, 0}))),
            "board.serial=S1");
  EXPECT_EQ(fieldsOf(readFru(withArea(
                2, {1, 2, 23, 0xC2, 'P', '1', 0xC0, 0xC2, 'X', 'Y', 0xC1, 0, 0, 0, 0, 0}))),
            "chassis.part=P1 chassis.custom1=XY");
}

TEST(FruRead, EveryTruncationIsToldAtItsPlace) {
  for (size_t size = 0; size < kProduct.size(); ++size) {
    const Image image = readFru(Identity::View(kProduct).first(size));
    ASSERT_FALSE(image.faults.empty()) << size;
    EXPECT_EQ(image.faults[0].offset, size < 8 ? size : size == 8 ? 4 : 9) << size;
    EXPECT_THAT(image.faults[0].message, HasSubstr("is cut off")) << size;
  }
}

}  // namespace
