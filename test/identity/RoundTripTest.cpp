// SPDX-License-Identifier: Apache-2.0
//
// Images of random values: what is built is read again, and what is damaged is found.
#include <gtest/gtest.h>

#include <random>

#include "test/identity/Images.hpp"

namespace {

using namespace TestSupport;
using Identity::readImage;
using Identity::TlvRecord;

class RoundTrip : public testing::Test {
 protected:
  unsigned below(unsigned limit) { return std::uniform_int_distribution(0u, limit - 1)(random_); }

  // Types that the standard gives no length.
  TlvRecord record() {
    TlvRecord record{static_cast<uint8_t>(0x30 + below(0xFD - 0x30)), Bytes(below(40))};
    for (uint8_t& byte : record.value) {
      byte = static_cast<uint8_t>(below(256));
    }
    return record;
  }
  std::vector<TlvRecord> records() {
    std::vector<TlvRecord> records(below(8));
    for (TlvRecord& each : records) {
      each = record();
    }
    return records;
  }
  std::string text() {
    constexpr std::string_view kCharacters = "ABCxyz 019-_./";
    std::string text(2 + below(62), ' ');
    for (char& c : text) {
      c = kCharacters[below(kCharacters.size())];
    }
    return text;
  }

  std::mt19937 random_{20261121};
};

std::vector<TlvRecord> recordsOf(const Image& image) {
  std::vector<TlvRecord> records;
  for (const Identity::Field& field : image.fields) {
    records.push_back({static_cast<uint8_t>(std::stoul(field.key, nullptr, 16)), field.bytes});
  }
  return records;
}

TEST_F(RoundTrip, ATlvInfoSaysWhatItWasBuiltFrom) {
  for (int i = 0; i < 500; ++i) {
    const std::vector<TlvRecord> given = records();
    const auto image = readImage(Identity::buildTlvInfo(given));
    ASSERT_TRUE(image);
    EXPECT_EQ(faultsOf(*image), "");
    EXPECT_EQ(recordsOf(*image), given);
  }
}

TEST_F(RoundTrip, AFruSaysWhatItWasBuiltFrom) {
  for (int i = 0; i < 500; ++i) {
    std::string fields;
    std::string board;
    std::string words;
    std::string boardWords;
    const auto give = [&](const std::string& key, std::string& json, std::string& shown,
                          const std::string& prefix) {
      if (below(3) == 0) {
        return;
      }
      const std::string value = text();
      json += (json.empty() ? "'" : ", '") + key + "': '" + value + "'";
      shown += (shown.empty() ? "" : " ") + prefix + key + "=" + value;
    };
    for (const char* key : {"manufacturer", "name", "serial", "part", "fileId"}) {
      give(key, board, boardWords, "board.");
    }
    for (const char* key :
         {"manufacturer", "name", "part", "version", "serial", "asset", "fileId"}) {
      give(key, fields, words, "");
    }
    const std::string comma = fields.empty() ? "" : ", ";
    const auto image = readImage(fru("{" + fields + comma + "'board': {" + board + "}}"));
    ASSERT_TRUE(image);
    EXPECT_EQ(faultsOf(*image), "");
    EXPECT_EQ(fieldsOf(*image),
              boardWords + (boardWords.empty() || words.empty() ? "" : " ") + words);
  }
}

TEST_F(RoundTrip, ABoardsDateIsShownAsItWasGiven) {
  EXPECT_EQ(fieldsOf(*readImage(fru("{'board': {'date': '2026-11-21T08:40Z'}}"))),
            "board.date=2026-11-21T08:40Z");
}

// With and without the rest of an EEPROM behind it.
TEST_F(RoundTrip, AnyOtherByteInATlvInfoIsFound) {
  for (const size_t behind : {0u, 300u}) {
    Bytes bytes = Identity::buildTlvInfo({record(), record(), record()});
    const size_t size = bytes.size();
    bytes.resize(size + behind, 0xFF);
    for (size_t at = 0; at < size; ++at) {
      for (unsigned change = 1; change < 256; ++change) {
        bytes[at] = static_cast<uint8_t>(bytes[at] ^ change);
        const auto image = readImage(bytes);
        EXPECT_TRUE(!image || !image->faults.empty()) << at << " ^ " << change;
        bytes[at] = static_cast<uint8_t>(bytes[at] ^ change);
      }
    }
  }
}

TEST_F(RoundTrip, AnyOtherByteInAFruIsFound) {
  Bytes bytes = fru("{'name': 'DPS550AB', 'serial': 'S1', 'board': {'part': 'P1'}}");
  for (size_t at = 0; at < bytes.size(); ++at) {
    for (unsigned change = 1; change < 256; ++change) {
      bytes[at] = static_cast<uint8_t>(bytes[at] ^ change);
      const auto image = readImage(bytes);
      EXPECT_TRUE(!image || !image->faults.empty()) << at << " ^ " << change;
      bytes[at] = static_cast<uint8_t>(bytes[at] ^ change);
    }
  }
}

}  // namespace
