// SPDX-License-Identifier: Apache-2.0
#include "Drivers/DeviceMemory.hpp"

#include <gmock/gmock.h>

#include <random>

#include "test/support/Check.hpp"
#include "test/support/Host.hpp"
#include "test/support/Identification.hpp"
#include "test/support/MemoryHam.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using Doubles::byte;
using Doubles::fruField;
using Doubles::fruMemory;
using Doubles::host;
using Doubles::MemoryHam;
using Doubles::ScriptedHam;
using Doubles::tlvBody;
using Doubles::tlvHeader;
using Doubles::tlvInfo;
using Doubles::Trace;
using Drivers::MemoryCursor;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/DeviceMemory";

// What a reader gives of a memory.
struct Found {
  pl_status status = -1;
  std::string serial;
  std::string model;

  bool operator==(const Found&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Found& found) {
  return out << found.status << " '" << found.serial << "' '" << found.model << "'";
}

using Reader = pl_status (*)(Ham::Ham&, std::string&, std::string&);

Found foundBy(Reader reader, Ham::Ham& ham) {
  Found found;
  found.status = reader(ham, found.serial, found.model);
  return found;
}

Found tlvOf(const std::string& memory, MemoryHam::AtEnd atEnd = MemoryHam::AtEnd::kFails) {
  MemoryHam ham(memory, atEnd);
  return foundBy(Drivers::readTlvInfo, ham);
}

Found fruOf(const std::string& memory, MemoryHam::AtEnd atEnd = MemoryHam::AtEnd::kFails) {
  MemoryHam ham(memory, atEnd);
  return foundBy(Drivers::readFruProduct, ham);
}

// The cursor.

TEST(MemoryCursor, MovesWithWhatItReadsAndSkips) {
  MemoryHam ham("abcdefgh");
  MemoryCursor cursor(ham, 1);
  std::string bytes;
  EXPECT_EQ(cursor.read(2, bytes), 0);
  EXPECT_EQ(bytes, "bc");
  cursor.skip(3);
  EXPECT_EQ(cursor.position(), 6u);
  EXPECT_EQ(cursor.read(2, bytes), 0);
  EXPECT_EQ(bytes, "gh");
}

TEST(MemoryCursor, AsksForNothingToReadNothing) {
  MemoryHam ham("");
  MemoryCursor cursor(ham, 1);
  std::string bytes = "old";
  EXPECT_EQ(cursor.read(0, bytes), 0);
  EXPECT_THAT(bytes, IsEmpty());
  EXPECT_EQ(ham.reads(), 0u);
}

TEST(MemoryCursor, GivesTheStatusOfAReadThatFails) {
  MemoryHam ham("ab");
  MemoryCursor cursor(ham, 1);
  std::string bytes;
  EXPECT_EQ(cursor.read(2, bytes), 6);
}

TEST(MemoryCursor, TakesNoAnswerOfAnotherLength) {
  MemoryHam ham("ab", MemoryHam::AtEnd::kShort);
  MemoryCursor cursor(ham, 1);
  std::string bytes;
  EXPECT_EQ(cursor.read(2, bytes), 4);
  ScriptedHam talkative;
  talkative.expect({Op::read(0, 2).gives("abc")});
  EXPECT_EQ(MemoryCursor(talkative, 0).read(2, bytes), 4);
}

// TlvInfo.

TEST(TlvInfo, GivesSerialNumberAndModel) {
  EXPECT_EQ(tlvOf(tlvInfo({{0x21, "Supply"}, {0x23, "SN1"}, {0x22, "M1"}})),
            (Found{0, "SN1", "M1"}));
}

TEST(TlvInfo, IsReadRecordByRecordAndNoFurtherThanNeeded) {
  ScriptedHam ham;
  ham.expect({Op::read(0, 11).gives(tlvHeader(40))});
  ham.expect({Op::read(11, 2).gives("\x22\x02")});
  ham.expect({Op::read(13, 2).gives("M1")});
  ham.expect({Op::read(15, 2).gives("\x24\x06")});
  ham.expect({Op::read(23, 2).gives("\x23\x03")});
  ham.expect({Op::read(25, 3).gives("SN1")});
  EXPECT_EQ(foundBy(Drivers::readTlvInfo, ham), (Found{0, "SN1", "M1"}));
}

TEST(TlvInfo, TakesTheLastOfARepeatedRecordBeforeTheOther) {
  EXPECT_EQ(tlvOf(tlvInfo({{0x23, "old"}, {0x23, "new"}, {0x22, "M"}, {0x23, "late"}})),
            (Found{0, "new", "M"}));
}

TEST(TlvInfo, IsSearchedOnBehindAnEmptyRecord) {
  EXPECT_EQ(tlvOf(tlvInfo({{0x23, ""}, {0x22, "M"}, {0x23, "SN"}})), (Found{0, "SN", "M"}));
  EXPECT_EQ(tlvOf(tlvInfo({{0x23, ""}, {0x22, "M"}})).status, 1);
}

TEST(TlvInfo, KeepsItsTextsAsTheyAre) {
  const std::string serial(" \t\0'{}\xFF ", 8);
  EXPECT_EQ(tlvOf(tlvInfo({{0x22, " M "}, {0x23, serial}})), (Found{0, serial, " M "}));
}

TEST(TlvInfo, HoldsTextsOf255Bytes) {
  const std::string model(255, 'm');
  const std::string serial(255, 's');
  EXPECT_EQ(tlvOf(tlvInfo({{0x22, model}, {0x23, serial}})), (Found{0, serial, model}));
}

TEST(TlvInfo, IsReadUpToItsEndOnly) {
  // Both records fit in 9 bytes; the second begins at byte 15 and ends at byte 19.
  const std::string body = tlvBody({{0x22, "M1"}, {0x23, "SN1"}});
  EXPECT_EQ(tlvOf(tlvHeader(9) + body).status, 0);
  EXPECT_EQ(tlvOf(tlvHeader(5) + body).status, 0);
  EXPECT_EQ(tlvOf(tlvHeader(4) + body), (Found{1, "", "M1"}));
  EXPECT_EQ(tlvOf(tlvHeader(0) + body), (Found{1, "", ""}));
}

// The end as the header's last two bytes give it, each taken as signed, for lengths of which one
// byte or both are 80 or more.
TEST(TlvInfo, TakesTheBytesOfItsLengthAsSigned) {
  struct Row {
    uint8_t high;
    uint8_t low;
    size_t end;
  };
  constexpr Row kRows[] = {
      {0x00, 0x7F, 137},   {0x01, 0x80, 138},   {0x01, 0x00, 266},
      {0x00, 0x80, 65418},  // -128 in 16 bits, and 10
      {0x00, 0xFF, 65545},  // -1
      {0x80, 0x00, 32778}, {0xFF, 0x00, 65290}, {0x01, 0xFF, 265},
  };
  for (const auto& [high, low, end] : kRows) {
    SCOPED_TRACE(end);
    // Records of 257 bytes, and at last one without a text, up to the record whose first byte is
    // at the end. The one behind it is not seen.
    const auto memory = [&, high = high, low = low](size_t last) {
      std::string bytes = std::string("TlvInfo\0\x01", 9) + byte(high) + byte(low);
      while (bytes.size() < last) {
        const size_t length = std::min<size_t>(last - bytes.size() - 2, 255);
        const bool leavesOne = last - bytes.size() - 2 - length == 1;
        bytes += byte(0x24) + byte(leavesOne ? length - 2 : length) +
                 std::string(leavesOne ? length - 2 : length, 'x');
      }
      return bytes + tlvBody({{0x22, "M"}}) + tlvBody({{0x23, "S"}});
    };
    // The model's record begins at the end, the serial number's behind it.
    EXPECT_EQ(tlvOf(memory(end)), (Found{1, "", "M"}));
    EXPECT_EQ(tlvOf(memory(end - 3)), (Found{0, "S", "M"}));
    EXPECT_EQ(tlvOf(memory(end + 1)), (Found{1, "", ""}));
  }
}

TEST(TlvInfo, IsEmptyWhenItCannotBeRead) {
  EXPECT_EQ(tlvOf(""), (Found{1, "", ""}));
  EXPECT_EQ(tlvOf(tlvHeader(0).substr(0, 10)), (Found{1, "", ""}));
  EXPECT_EQ(tlvOf(tlvHeader(0).substr(0, 10), MemoryHam::AtEnd::kShort), (Found{1, "", ""}));
  EXPECT_EQ(tlvOf(tlvInfo({{0x22, "Model"}}).substr(0, 15)).status, 1);
  EXPECT_EQ(tlvOf(tlvInfo({{0x22, "Model"}}).substr(0, 15), MemoryHam::AtEnd::kShort).status, 1);
  EXPECT_THAT(host().traces, IsEmpty());
}

TEST(TlvInfo, StopsOnAHeaderThatIsNone) {
  std::string memory = tlvInfo({{0x22, "M"}, {0x23, "S"}});
  const auto with = [&](size_t at, char c) {
    std::string bytes = memory;
    bytes[at] = c;
    return bytes;
  };
  EXPECT_CHECK(tlvOf(with(0, 't')), kUnit, "header.substr( 0, 7 ) == \"TlvInfo\"");
  EXPECT_CHECK(tlvOf(with(6, 'O')), kUnit, "header.substr( 0, 7 ) == \"TlvInfo\"");
  EXPECT_CHECK(tlvOf(std::string(64, '\xFF')), kUnit, "header.substr( 0, 7 ) == \"TlvInfo\"");
  EXPECT_CHECK(tlvOf(with(7, ' ')), kUnit, "header[ 7 ] == '\\0'");
  EXPECT_CHECK(tlvOf(with(8, '\x02')), kUnit, "header[ 8 ] == '\\x01'");
}

TEST(TlvInfo, StopsOnARecordThatCannotBeRead) {
  EXPECT_CHECK(tlvOf(tlvHeader(40) + tlvBody({{0x22, "M"}})), kUnit, "res == PL_STATUS_OK");
  EXPECT_CHECK(tlvOf(tlvHeader(40) + "\x22", MemoryHam::AtEnd::kShort), kUnit,
               "res == PL_STATUS_OK");
}

TEST(TlvInfo, EndsWithRecordsThatHoldNothing) {
  MemoryHam ham(tlvHeader(0x7F00) + std::string(70000, '\0'));
  EXPECT_EQ(foundBy(Drivers::readTlvInfo, ham).status, 1);
  EXPECT_EQ(ham.reads(), 1 + 0x7F00 / 2u);
}

// FRU.

TEST(FruProduct, GivesItsSecondAndItsFifthField) {
  EXPECT_EQ(fruOf(fruMemory({fruField("Maker"), fruField("DPS550AB6A"), fruField("PN1"),
                             fruField("V1"), fruField("SN1")})),
            (Found{0, "SN1", "DPS550AB6A"}));
}

TEST(FruProduct, IsReadByteByByteAndOnlyWhatCounts) {
  ScriptedHam ham;
  ham.expect({Op::read8(4).gives(2)});
  ham.expect({Op::read8(19).gives(0xC4)});
  ham.expect({Op::read8(24).gives(0xC5)});
  ham.expect({Op::read(25, 5).gives("Model")});
  ham.expect({Op::read8(30).gives(0x03)});  // of any type: it is skipped
  ham.expect({Op::read8(34).gives(0x40)});
  ham.expect({Op::read8(35).gives(0xC6)});
  ham.expect({Op::read(36, 6).gives("Serial")});
  EXPECT_EQ(foundBy(Drivers::readFruProduct, ham), (Found{0, "Serial", "Model"}));
}

TEST(FruProduct, TrimsItsModelAlone) {
  EXPECT_EQ(fruOf(fruMemory({fruField(""), fruField(" \tDPS550AB6A\t "), fruField(""), fruField(""),
                             fruField(" S ")})),
            (Found{0, " S ", "DPS550AB6A"}));
}

TEST(FruProduct, MayHaveEmptyTexts) {
  EXPECT_EQ(fruOf(fruMemory({"\xC0", "\xC0", "\xC0", "\xC0", "\xC0"})), (Found{0, "", ""}));
}

TEST(FruProduct, HoldsTextsOf63Bytes) {
  const std::string model(63, 'm');
  const std::string serial(63, 's');
  EXPECT_EQ(fruOf(fruMemory(
                {fruField(""), fruField(model), fruField(""), fruField(""), fruField(serial)})),
            (Found{0, serial, model}));
}

TEST(FruProduct, WrapsItsRegistersAt256) {
  // Offset 32 is byte 256: the area begins at byte 0, and its fields at byte 3. The byte that says
  // so is the manufacturer's first character.
  std::string memory(256, '\0');
  memory.replace(3, 1, "\xC1");
  memory[4] = 32;
  memory.replace(5, 2, "\xC1M");
  memory.replace(7, 2, std::string("\xC0\xC0", 2));
  memory.replace(9, 2, "\xC1S");
  EXPECT_EQ(fruOf(memory), (Found{0, "S", "M"}));
}

TEST(FruProduct, GoesOnAtTheMemorysStart) {
  // The area begins at byte 248; its version field is 63 bytes long and ends at byte 62.
  std::string memory(512, '\0');
  memory[4] = 31;
  memory.replace(251, 1, "\xC0");
  memory.replace(252, 2, "\xC1M");
  memory.replace(254, 1, "\xC0");
  memory.replace(255, 1, "\xFF");
  memory.replace(63, 2, "\xC1S");
  EXPECT_EQ(fruOf(memory), (Found{0, "S", "M"}));
}

TEST(FruProduct, ReportsAnOffsetThatCannotBeRead) {
  ScriptedHam ham;
  ham.expect({Op::read8(4)}).fails(6);
  EXPECT_EQ(foundBy(Drivers::readFruProduct, ham), (Found{6, "", ""}));
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Error reading product info offset"}));
}

TEST(FruProduct, ReportsAFieldThatCannotBeRead) {
  const std::string memory = fruMemory(
      {fruField("Maker"), fruField("Model"), fruField("PN"), fruField("V"), fruField("Serial")});
  // Cut within each type/length byte and each text; what is skipped is not missed.
  for (const auto& [size, text] : {std::pair{11u, "Error reading type/length byte"},
                                   {17u, "Error reading type/length byte"},
                                   {20u, "Error reading product info field"},
                                   {23u, "Error reading type/length byte"},
                                   {26u, "Error reading type/length byte"},
                                   {28u, "Error reading type/length byte"},
                                   {30u, "Error reading product info field"}}) {
    host().traces.clear();
    EXPECT_EQ(fruOf(memory.substr(0, size)).status, 6) << size;
    EXPECT_THAT(host().traces, ElementsAre(Trace{0, text})) << size;
  }
}

TEST(FruProduct, ReportsATextThatIsShort) {
  EXPECT_EQ(fruOf(fruMemory({fruField("Maker"), "\xC9short"}), MemoryHam::AtEnd::kShort).status, 4);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Error reading product info field"}));
}

TEST(FruProduct, StopsOnAWantedTextOfAnotherType) {
  constexpr const char* kText = "type == 3 && \"Expected type code 3 (8-bit ASCII)\"";
  for (unsigned type = 0; type < 3; ++type) {
    const std::string field = Doubles::printed("Type code %u (val 0x%02x) at offset ", type,
                                               static_cast<unsigned>(type << 6 | 2));
    const std::string name = fruMemory({fruField("Mak"), fruField("ab", type)});
    EXPECT_CHECK_AFTER(fruOf(name), (Trace{0, field + "15"}), kUnit, kText);
    const std::string serial = fruMemory(
        {fruField(""), fruField("M"), fruField("", 0), fruField("", 1), fruField("ab", type)});
    EXPECT_CHECK_AFTER(fruOf(serial), (Trace{0, field + "16"}), kUnit, kText);
  }
}

// PMBus manufacturer registers.

TEST(PmbusIdentity, IsReadCountsFirstAndThenBlocks) {
  ScriptedHam ham;
  ham.expect({Op::read8(0x9A).gives(10), Op::read8(0x9E).gives(5)});
  ham.expect({Op::read(0x9A, 11).gives("\x0A"
                                       "DPS550AB6A"),
              Op::read(0x9E, 6).gives("\x05SN123")});
  EXPECT_EQ(foundBy(Drivers::readPmbusIdentity, ham), (Found{0, "SN123", "DPS550AB6A"}));
  EXPECT_THAT(ham.blockLengths, ElementsAre(11u, 6u));
}

TEST(PmbusIdentity, TrimsItsModelAlone) {
  ScriptedHam ham;
  ham.expect({Op::read8(0x9A).gives(13), Op::read8(0x9E).gives(4)});
  ham.expect({Op::read(0x9A, 14).gives("\x0D  DPS550AB6A\t"), Op::read(0x9E, 5).gives("\x04 S  ")});
  EXPECT_EQ(foundBy(Drivers::readPmbusIdentity, ham), (Found{0, " S  ", "DPS550AB6A"}));
}

TEST(PmbusIdentity, LosesOneByteOfWhateverIsAnswered) {
  ScriptedHam ham;
  ham.expect({Op::read8(0x9A).gives(255), Op::read8(0x9E).gives(0)});
  ham.expect({Op::read(0x9A, 256).gives("xM"), Op::read(0x9E, 1).gives("")});
  EXPECT_EQ(foundBy(Drivers::readPmbusIdentity, ham), (Found{0, "", "M"}));
}

TEST(PmbusIdentity, ReportsABatchThatFails) {
  ScriptedHam counts;
  counts.expect({Op::read8(0x9A), Op::read8(0x9E)}).fails(6);
  EXPECT_EQ(foundBy(Drivers::readPmbusIdentity, counts), (Found{6, "", ""}));
  ScriptedHam blocks;
  blocks.expect({Op::read8(0x9A).gives(1), Op::read8(0x9E).gives(1)});
  blocks.expect({Op::read(0x9A, 2), Op::read(0x9E, 2)}).fails(4);
  EXPECT_EQ(foundBy(Drivers::readPmbusIdentity, blocks), (Found{4, "", ""}));
}

// Memories of chance. A FRU area's fields are of one type here, so that it stops nothing.

TEST(DeviceMemory, OfChanceIsReadInFewSteps) {
  std::mt19937 random(1);
  std::uniform_int_distribution<int> bytes(0, 255);
  std::uniform_int_distribution<size_t> sizes(0, 600);
  for (int i = 0; i < 2000; ++i) {
    std::string memory(sizes(random), '\0');
    for (char& c : memory) {
      c = static_cast<char>(bytes(random) | 0xC0);
    }
    MemoryHam fru(memory, i % 2 == 0 ? MemoryHam::AtEnd::kShort : MemoryHam::AtEnd::kFails);
    const Found found = foundBy(Drivers::readFruProduct, fru);
    ASSERT_LE(fru.reads(), 8u);
    ASSERT_LE(found.serial.size(), 63u);
    ASSERT_LE(found.model.size(), 63u);
  }
}

}  // namespace
