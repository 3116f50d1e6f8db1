// SPDX-License-Identifier: Apache-2.0
//
// The PCA9555 and the PCA9698 against their data sheets.
#include <cerrno>

#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

constexpr uint8_t kChip = 0x20;

class ExpanderTest : public BoardFixture {
 protected:
  explicit ExpanderTest(const char* model) {
    load(std::string(R"({'nets': {
        'present': {'pins': ['chip:IO0_4']},
        'led': {'level': false, 'pins': ['chip:IO1_7']},
        'alarm': {'pins': ['!chip:IO0_0']}},
      'buses': [{'name': 'main', 'chips': [
        {'label': 'chip', 'address': '0x20', 'model': ')") +
         model + "'}]}]}");
  }
};

class Pca9555Test : public ExpanderTest {
 protected:
  Pca9555Test() : ExpanderTest("pca9555") {}
};

TEST_F(Pca9555Test, RegistersHaveTheirFirstValues) {
  const std::vector<Bytes> first = {{0xFE, 0x7F}, {0xFF, 0xFF}, {0x00, 0x00}, {0xFF, 0xFF}};
  for (unsigned pair = 0; pair < first.size(); ++pair) {
    EXPECT_EQ(readWord(kChip, 2 * pair), 0);
    EXPECT_EQ(answer, first[pair]) << pair;
  }
}

TEST_F(Pca9555Test, ATransferAlternatesWithinThePair) {
  EXPECT_EQ(write(kChip, 3, {0x11, 0x22, 0x33}), 0);
  EXPECT_EQ(readMany(kChip, 2, 4), 0);
  EXPECT_EQ(answer, (Bytes{0x22, 0x33, 0x22, 0x33}));
}

TEST_F(Pca9555Test, AReceivedByteComesFromTheOtherOfThePair) {
  EXPECT_EQ(write(kChip, 4, {0x0F, 0xF0}), 0);
  EXPECT_EQ(read(kChip, 4), 0);
  EXPECT_EQ(answer, Bytes{0x0F});
  EXPECT_EQ(receive(kChip), 0);
  EXPECT_EQ(answer, Bytes{0xF0});
}

TEST_F(Pca9555Test, AnInputShowsItsNet) {
  EXPECT_EQ(board->set("present", 0), 0);
  EXPECT_EQ(read(kChip, 0), 0);
  EXPECT_EQ(answer, Bytes{0xEE});
}

TEST_F(Pca9555Test, AnInvertedConnectionShowsTheOpposite) {
  EXPECT_EQ(board->set("alarm", 0), 0);
  EXPECT_EQ(read(kChip, 0), 0);
  EXPECT_EQ(answer, Bytes{0xFF});
}

TEST_F(Pca9555Test, PolarityInvertsWhatIsReadAtAnInput) {
  EXPECT_EQ(write(kChip, 4, {0x11}), 0);
  EXPECT_EQ(read(kChip, 0), 0);
  EXPECT_EQ(answer, Bytes{0xFE ^ 0x11});
}

TEST_F(Pca9555Test, AnOutputPinReadsBackAndDrivesItsNet) {
  EXPECT_EQ(board->get("led"), 0);
  EXPECT_EQ(write(kChip, 7, {0x7F}), 0);  // IO1_7 is an output; its bit is 1 at first
  EXPECT_EQ(board->get("led"), 1);
  EXPECT_EQ(write(kChip, 3, {0x7F}), 0);
  EXPECT_EQ(board->get("led"), 0);
  EXPECT_EQ(read(kChip, 1), 0);
  EXPECT_EQ(answer, Bytes{0x7F});
}

TEST_F(Pca9555Test, AnOutputThatBecomesAnInputLetsGoOfItsNet) {
  EXPECT_EQ(write(kChip, 7, {0x7F}), 0);
  EXPECT_EQ(write(kChip, 7, {0xFF}), 0);
  EXPECT_EQ(board->get("led"), 0);
}

TEST_F(Pca9555Test, AWriteToAnInputPortIsLost) {
  EXPECT_EQ(write(kChip, 0, {0x00}), 0);
  EXPECT_EQ(read(kChip, 0), 0);
  EXPECT_EQ(answer, Bytes{0xFE});
}

TEST_F(Pca9555Test, TheOutputPortShowsTheLatchNotThePin) {
  EXPECT_EQ(write(kChip, 2, {0xA5}), 0);
  EXPECT_EQ(read(kChip, 2), 0);
  EXPECT_EQ(answer, Bytes{0xA5});
  EXPECT_EQ(read(kChip, 0), 0);
  EXPECT_EQ(answer, Bytes{0xFE}) << "the pins are inputs";
}

class Pca9698Test : public ExpanderTest {
 protected:
  Pca9698Test() : ExpanderTest("pca9698") {}
};

TEST_F(Pca9698Test, RegistersHaveTheirFirstValues) {
  struct Kind {
    uint8_t command;
    Bytes first;
  };
  const std::vector<Kind> kinds = {{0x80, {0xFE, 0x7F, 0xFF, 0xFF, 0xFF}},
                                   {0x88, {0x00, 0x00, 0x00, 0x00, 0x00}},
                                   {0x90, {0x00, 0x00, 0x00, 0x00, 0x00}},
                                   {0x98, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
                                   {0xA0, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
                                   {0x28, {0xFF}},
                                   {0x29, {0x80}},
                                   {0x2A, {0x02}}};
  for (const Kind& kind : kinds) {
    EXPECT_EQ(readMany(kChip, kind.command, kind.first.size()), 0);
    EXPECT_EQ(answer, kind.first) << int{kind.command};
  }
}

TEST_F(Pca9698Test, WithAutoIncrementTheLastBankIsFollowedByTheFirst) {
  EXPECT_EQ(write(kChip, 0x8B, {0x44, 0x55, 0x11, 0x22}), 0);
  EXPECT_EQ(readMany(kChip, 0x88, 6), 0);
  EXPECT_EQ(answer, (Bytes{0x11, 0x22, 0x00, 0x44, 0x55, 0x11}));
}

TEST_F(Pca9698Test, WithoutAutoIncrementTheSameBankRepeats) {
  EXPECT_EQ(write(kChip, 0x08, {0x11, 0x22}), 0);
  EXPECT_EQ(readMany(kChip, 0x88, 2), 0);
  EXPECT_EQ(answer, (Bytes{0x22, 0x00}));
  EXPECT_EQ(readMany(kChip, 0x08, 2), 0);
  EXPECT_EQ(answer, (Bytes{0x22, 0x22}));
}

TEST_F(Pca9698Test, PinsBehaveAsInASmallerOne) {
  EXPECT_EQ(board->set("present", 0), 0);
  EXPECT_EQ(read(kChip, 0x00), 0);
  EXPECT_EQ(answer, Bytes{0xEE});
  EXPECT_EQ(write(kChip, 0x19, {0x7F}), 0);
  EXPECT_EQ(write(kChip, 0x09, {0x80}), 0);
  EXPECT_EQ(board->get("led"), 1);
  EXPECT_EQ(read(kChip, 0x01), 0);
  EXPECT_EQ(answer, Bytes{0xFF});
}

TEST_F(Pca9698Test, ReservedRegistersAreRefused) {
  for (const uint8_t reserved : Bytes{0x05, 0x0D, 0x17, 0x1F, 0x25, 0x2B, 0x3F}) {
    EXPECT_EQ(read(kChip, reserved), EREMOTEIO) << int{reserved};
  }
}

}  // namespace
}  // namespace SmbusService::Board
