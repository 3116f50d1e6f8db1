// SPDX-License-Identifier: Apache-2.0
//
// A board looked at and changed past its buses, and what it counts on them.
#include <gmock/gmock.h>

#include <cerrno>

#include "smbus/service/board/BoardError.hpp"
#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Row {
  const char* chip;  // its model and keys
  uint32_t number;
  unsigned bits;
  int put;             // what putting 0x5A says
  OperationKind read;  // how it is read over the bus then
};

class RegisterAccessTest : public BoardFixture, public testing::WithParamInterface<Row> {};

TEST_P(RegisterAccessTest, IsTheRegisterOfTheBus) {
  const Row& row = GetParam();
  loadChips(std::string("{'label': 'chip', 'address': '0x20', ") + row.chip + "}");
  ASSERT_TRUE(board->peek("chip", row.number));
  EXPECT_EQ(board->peek("chip", row.number)->bits, row.bits);
  EXPECT_EQ(board->poke("chip", row.number, 0x5A), row.put);
  ASSERT_EQ(perform({.kind = row.read, .address = 0x20, .command = row.number, .size = 2}), 0);
  const uint32_t expected = board->peek("chip", row.number)->value;
  EXPECT_EQ(answer[row.bits == 16 && row.read == OperationKind::kReadI2cBlock ? 1 : 0],
            expected & 0xFF);
  if (row.put == 0) {
    EXPECT_EQ(expected, 0x5Au);
  }
}

constexpr OperationKind kByte = OperationKind::kReadByte;
INSTANTIATE_TEST_SUITE_P(
    Models, RegisterAccessTest,
    testing::Values(
        Row{"'model': 'register', 'size': 16, 'readOnly': [3]", 3, 8, 0, kByte},
        Row{"'model': 'register', 'size': 16, 'width': 16", 3, 16, 0, OperationKind::kReadI2cBlock},
        Row{"'model': 'register', 'size': 16, 'pec': true", 3, 8, 0, kByte},
        Row{"'model': 'eeprom'", 0x80, 8, 0, kByte}, Row{"'model': 'pca9555'", 2, 8, 0, kByte},
        Row{"'model': 'pca9555'", 1, 8, EPERM, kByte}, Row{"'model': 'pca9698'", 0x18, 8, 0, kByte},
        Row{"'model': 'pca9698'", 0x29, 8, 0, kByte}, Row{"'model': 'pca9698'", 0, 8, EPERM, kByte},
        Row{"'model': 'pca9548'", 0, 8, 0, OperationKind::kReceiveByte},
        Row{"'model': 'psoc'", 0x33, 8, 0, kByte},
        Row{"'model': 'psoc', 'fans': [{'maxRpm': 9000}]", 0x40, 8, EPERM, kByte},
        Row{"'model': 'pmbus', 'outputs': [{}]", 0x3B, 16, 0, OperationKind::kReadWord},
        Row{"'model': 'pmbus', 'outputs': [{}]", 0x98, 8, EPERM, kByte}));

class BoardAccessTest : public BoardFixture {};

TEST_F(BoardAccessTest, WhatIsNotThereOrDoesNotFitIsRefused) {
  loadChips("{'label': 'chip', 'model': 'register', 'address': 8, 'size': 4}");
  EXPECT_EQ(board->poke("chip", 4, 0), ENOENT);
  EXPECT_EQ(board->poke("nobody", 0, 0), ENOENT);
  EXPECT_EQ(board->poke("chip", 0, 256), ERANGE);
  EXPECT_FALSE(board->peek("chip", 4));
  EXPECT_FALSE(board->peek("nobody", 0));
}

TEST_F(BoardAccessTest, ChipsAreListedWithTheWayToThem) {
  loadChips(R"({'label': 'm', 'model': 'pca9546', 'address': '0x70', 'channels': [
    {'channel': 3, 'chips': [{'label': 'n', 'model': 'pca9548', 'address': '0x71', 'channels': [
      {'channel': 5, 'chips': [{'label': 'x', 'model': 'psoc', 'address': 9}]}]}]}]})");
  const std::vector<ChipInfo> chips = board->chips();
  ASSERT_EQ(chips.size(), 3u);
  EXPECT_EQ(chips[2].label, "x");
  EXPECT_EQ(chips[2].model, "psoc");
  EXPECT_EQ(chips[2].address, 9);
  EXPECT_EQ(chips[2].bus, "main");
  EXPECT_EQ(chips[2].path, "m.3 n.5");
  EXPECT_EQ(chips[0].path, "");
}

TEST_F(BoardAccessTest, NetsAreListedAndLetGo) {
  load(R"({'buses': [{'name': 'main', 'chips': [
      {'label': 'pins', 'model': 'pca9555', 'address': '0x20'}]}],
    'nets': {'wire': {'level': false, 'pins': ['!pins:IO0_3']}}})");
  ASSERT_EQ(board->set("wire", 1), 0);
  EXPECT_TRUE(board->nets().at(0).level);
  EXPECT_THAT(board->nets()[0].pins, ElementsAre("!pins:IO0_3"));
  EXPECT_TRUE(board->release("wire"));
  EXPECT_FALSE(board->nets()[0].level);
  EXPECT_FALSE(board->release("fire"));
}

TEST_F(BoardAccessTest, QuantitiesSayWhetherTheyCanBeSet) {
  loadChips("{'label': 'x', 'model': 'psoc', 'address': 9, 'fans': [{'maxRpm': 9000}]}");
  const auto quantities = board->quantities("x");
  ASSERT_EQ(quantities.size(), 4u);
  EXPECT_EQ(quantities[0].name, "ambient");
  EXPECT_TRUE(quantities[0].canBeSet);
  EXPECT_EQ(quantities[3].name, "fan1.rpm");
  EXPECT_FALSE(quantities[3].canBeSet);
  EXPECT_THAT(board->quantities("y"), IsEmpty());
}

TEST_F(BoardAccessTest, BusTimeIsCountedByChipAndKind) {
  loadChips(R"({'label': 'm', 'model': 'pca9546', 'address': '0x70', 'channels': [
    {'channel': 0, 'chips': [{'label': 'x', 'model': 'register', 'address': 9}]}]})");
  ASSERT_EQ(send(0x70, 1), 0);
  ASSERT_EQ(read(9, 0), 0);
  ASSERT_EQ(read(9, 1), 0);
  ASSERT_EQ(send(0x70, 0), 0);
  EXPECT_EQ(read(9, 0), ENXIO);
  const TransferCount reads{.transfers = 2, .failed = 0, .bits = 78};
  EXPECT_EQ(board->countsOf("x").of(OperationKind::kReadByte), reads);
  EXPECT_EQ(board->countsOf("x").total(), reads);
  EXPECT_EQ(board->countsOf("m").of(OperationKind::kSendByte).bits, 40u);
  const BusCounts counts = main().counts();
  EXPECT_EQ(counts.all.total(), (TransferCount{.transfers = 5, .failed = 1, .bits = 129}));
  EXPECT_EQ(counts.unanswered.total(), (TransferCount{.transfers = 1, .failed = 1, .bits = 11}));
}

TEST_F(BoardAccessTest, EachTransferIsToldWithItsBits) {
  loadChips("{'label': 'x', 'model': 'register', 'address': 9}");
  ASSERT_EQ(read(9, 0), 0);
  clock.sleep(std::chrono::seconds(2));
  EXPECT_EQ(send(10, 0), ENXIO);
  const std::vector<Transfer> transfers = main().lastTransfers(5);
  ASSERT_EQ(transfers.size(), 2u);
  EXPECT_EQ(transfers[0].number, 1u);
  EXPECT_EQ(transfers[0].chip, "x");
  EXPECT_EQ(transfers[0].kind, OperationKind::kReadByte);
  EXPECT_EQ(transfers[0].bits, 39u);
  EXPECT_EQ(transfers[0].error, 0);
  EXPECT_EQ(transfers[1].at - transfers[0].at, std::chrono::seconds(2));
  EXPECT_EQ(transfers[1].chip, "");
  EXPECT_EQ(transfers[1].address, 10);
  EXPECT_EQ(transfers[1].bits, 11u);
  EXPECT_EQ(transfers[1].error, ENXIO);
}

TEST_F(BoardAccessTest, TheLastTransfersAreKept) {
  loadChips("{'label': 'x', 'model': 'register', 'address': 9}");
  EXPECT_THAT(main().lastTransfers(5), IsEmpty());
  for (size_t i = 0; i < TransferLog::kKept + 3; ++i) {
    ASSERT_EQ(read(9, 0), 0);
  }
  EXPECT_EQ(main().lastTransfers(1).front().number, TransferLog::kKept + 3);
  const std::vector<Transfer> all = main().lastTransfers(SIZE_MAX);
  ASSERT_EQ(all.size(), TransferLog::kKept);
  EXPECT_EQ(all.front().number, 4u);
  EXPECT_EQ(all.back().number, TransferLog::kKept + 3);
}

TEST_F(BoardAccessTest, WhatNeverReachesTheWireTakesNoBits) {
  loadChips("{'label': 'x', 'model': 'register', 'address': 9}");
  ASSERT_EQ(read(9, 0), 0);
  EXPECT_EQ(perform({.kind = OperationKind::kWriteBlock, .address = 9}), EPROTO);
  EXPECT_EQ(main().lastTransfers(1).back().bits, 0u);
  EXPECT_EQ(main().counts().all.total().bits, 39u);
}

TEST(UnknownName, NamesWhatIsNear) {
  EXPECT_EQ(unknownName("chip", "PSoc1", {"PSoC", "Mux1"}),
            "there is no chip \"PSoc1\"; did you mean \"PSoC\"?");
}

TEST(UnknownName, ListsWhatThereIsWhenNothingIsNear) {
  EXPECT_EQ(unknownName("event", "tray", {"psu 1 pull", "psu 2 pull"}),
            "there is no event \"tray\"; there are \"psu 1 pull\", \"psu 2 pull\"");
  EXPECT_EQ(unknownName("event", "tray", {}), "there is no event \"tray\"; the board has none");
}

}  // namespace
}  // namespace SmbusService::Board
