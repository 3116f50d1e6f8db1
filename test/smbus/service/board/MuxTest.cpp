// SPDX-License-Identifier: Apache-2.0
//
// Who answers behind which channels.
#include <cerrno>

#include "smbus/service/board/Random.hpp"
#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

constexpr uint8_t kMux = 0x70;
constexpr uint8_t kInner = 0x71;
constexpr uint8_t kTwin = 0x50;  // one behind channel 1, one behind channel 2
constexpr uint8_t kDeep = 0x51;  // behind channel 0 of the mux behind channel 7
constexpr uint8_t kHere = 0x52;  // in front of the muxes

class MuxTest : public BoardFixture {
 protected:
  MuxTest() {
    loadChips(R"(
      {'label': 'here', 'model': 'register', 'address': '0x52', 'fill': '0x52'},
      {'label': 'mux', 'model': 'pca9548', 'address': '0x70', 'channels': [
        {'channel': 1, 'chips': [
          {'label': 'a', 'model': 'register', 'address': '0x50', 'fill': '0xA5'}]},
        {'channel': 2, 'chips': [
          {'label': 'b', 'model': 'register', 'address': '0x50', 'fill': '0x5E', 'size': 16}]},
        {'channel': 7, 'chips': [
          {'label': 'inner', 'model': 'pca9548', 'address': '0x71', 'channels': [
            {'channel': 0, 'chips': [
              {'label': 'deep', 'model': 'register', 'address': '0x51', 'fill': '0x51'}]}]}]}]})");
  }
};

TEST_F(MuxTest, NoChannelIsOpenAtFirst) {
  EXPECT_EQ(receive(kMux), 0);
  EXPECT_EQ(answer, Bytes{0x00});
  EXPECT_EQ(read(kTwin, 0), ENXIO);
  EXPECT_EQ(read(kHere, 0), 0);
}

TEST_F(MuxTest, TheMaskReadsBack) {
  EXPECT_EQ(send(kMux, 0x86), 0);
  EXPECT_EQ(receive(kMux), 0);
  EXPECT_EQ(answer, Bytes{0x86});
}

TEST_F(MuxTest, TheLastOfSeveralBytesIsTheMask) {
  EXPECT_EQ(write(kMux, 0x02, {0x04, 0x80}), 0);
  EXPECT_EQ(receive(kMux), 0);
  EXPECT_EQ(answer, Bytes{0x80});
}

TEST_F(MuxTest, EqualAddressesBehindTwoChannelsAreToldApart) {
  EXPECT_EQ(send(kMux, 1 << 1), 0);
  EXPECT_EQ(write(kTwin, 3, {0x11}), 0);
  EXPECT_EQ(send(kMux, 1 << 2), 0);
  EXPECT_EQ(write(kTwin, 3, {0x22}), 0);
  EXPECT_EQ(send(kMux, 1 << 1), 0);
  EXPECT_EQ(read(kTwin, 3), 0);
  EXPECT_EQ(answer, Bytes{0x11});
  EXPECT_EQ(send(kMux, 1 << 2), 0);
  EXPECT_EQ(read(kTwin, 3), 0);
  EXPECT_EQ(answer, Bytes{0x22});
}

TEST_F(MuxTest, ChipsOfTwoOpenChannelsAnswerTogether) {
  EXPECT_EQ(send(kMux, 1 << 1 | 1 << 2), 0);
  EXPECT_EQ(read(kTwin, 0), 0);
  EXPECT_EQ(answer, Bytes{0xA5 & 0x5E});
}

TEST_F(MuxTest, OneOfTwoIsEnoughToAcknowledge) {
  EXPECT_EQ(send(kMux, 1 << 1 | 1 << 2), 0);
  EXPECT_EQ(read(kTwin, 0x20), 0);  // beyond b's registers
  EXPECT_EQ(answer, Bytes{0xA5 & 0x5E});
}

TEST_F(MuxTest, BothOfTwoTakeAWrite) {
  EXPECT_EQ(send(kMux, 1 << 1 | 1 << 2), 0);
  EXPECT_EQ(write(kTwin, 0, {0x33}), 0);
  for (const unsigned channel : {1u, 2u}) {
    EXPECT_EQ(send(kMux, static_cast<uint8_t>(1u << channel)), 0);
    EXPECT_EQ(read(kTwin, 0), 0);
    EXPECT_EQ(answer, Bytes{0x33});
  }
}

TEST_F(MuxTest, ANestedChipAnswersWithBothMuxesOpenOnly) {
  EXPECT_EQ(read(kDeep, 0), ENXIO);
  EXPECT_EQ(send(kInner, 1), ENXIO);
  EXPECT_EQ(send(kMux, 1 << 7), 0);
  EXPECT_EQ(read(kDeep, 0), ENXIO);
  EXPECT_EQ(send(kInner, 1), 0);
  EXPECT_EQ(read(kDeep, 0), 0);
  EXPECT_EQ(answer, Bytes{0x51});
  EXPECT_EQ(send(kMux, 0), 0);
  EXPECT_EQ(read(kDeep, 0), ENXIO);
}

TEST_F(MuxTest, AnInnerMuxKeepsItsChannelsWhileItIsCutOff) {
  EXPECT_EQ(send(kMux, 1 << 7), 0);
  EXPECT_EQ(send(kInner, 1), 0);
  EXPECT_EQ(send(kMux, 0), 0);
  EXPECT_EQ(send(kMux, 1 << 7), 0);
  EXPECT_EQ(read(kDeep, 0), 0);
}

// A transfer that writes the mux and then, without a STOP, addresses a chip behind it.
TEST_F(MuxTest, AChannelOpensAfterTheStopOnly) {
  BusFaults none;
  Wire wire(main().segment(), none);
  wire.begin();
  EXPECT_TRUE(wire.start(kMux, false));
  EXPECT_TRUE(wire.write(1 << 1));
  EXPECT_FALSE(wire.start(kTwin, true));
  wire.stop();
  wire.begin();
  EXPECT_TRUE(wire.start(kTwin, true));
  wire.stop();
}

// Who answers depends on the masks alone, whatever was read and written before.
TEST_F(MuxTest, ManyRandomTransfersReachWhomTheMasksLetThem) {
  uint8_t outer = 0;
  uint8_t inner = 0;
  for (uint64_t i = 0; i < 100'000; ++i) {
    const uint64_t chance = mix(i);
    const auto mask = static_cast<uint8_t>(chance >> 8);
    const bool innerIsThere = (outer & 1 << 7) != 0;
    if (chance % 4 == 0) {
      ASSERT_EQ(send(kMux, mask), 0);
      outer = mask;
    } else if (chance % 4 == 1) {
      ASSERT_EQ(send(kInner, mask), innerIsThere ? 0 : ENXIO);
      if (innerIsThere) {
        inner = mask;
      }
    } else if (chance % 4 == 2) {
      ASSERT_EQ(read(kDeep, 0), innerIsThere && (inner & 1) != 0 ? 0 : ENXIO);
    } else {
      const uint8_t a = (outer & 1 << 1) != 0 ? 0xA5 : 0xFF;
      const uint8_t b = (outer & 1 << 2) != 0 ? 0x5E : 0xFF;
      ASSERT_EQ(read(kTwin, 0), (a & b) == 0xFF ? ENXIO : 0);
      if (!answer.empty()) {
        ASSERT_EQ(answer, Bytes{static_cast<uint8_t>(a & b)});
      }
    }
  }
}

class SmallMuxTest : public BoardFixture {
 protected:
  SmallMuxTest() {
    load(R"({'nets': {'mux ok': {'pins': ['mux:reset']}},
             'buses': [{'name': 'main', 'chips': [
               {'label': 'mux', 'model': 'pca9546', 'address': '0x70', 'channels': [
                 {'channel': 3, 'chips': [
                   {'label': 'a', 'model': 'register', 'address': '0x50'}]}]}]}]})");
  }
};

TEST_F(SmallMuxTest, HasFourChannels) {
  EXPECT_EQ(send(kMux, 0xF8), 0);
  EXPECT_EQ(receive(kMux), 0);
  EXPECT_EQ(answer, Bytes{0x08});
  EXPECT_EQ(read(kTwin, 0), 0);
}

TEST_F(SmallMuxTest, DoesNotAnswerInReset) {
  EXPECT_EQ(send(kMux, 0x08), 0);
  EXPECT_EQ(board->set("mux ok", 0), 0);
  EXPECT_EQ(receive(kMux), ENXIO);
  EXPECT_EQ(read(kTwin, 0), ENXIO);
}

TEST_F(SmallMuxTest, APulseOfResetClosesTheChannels) {
  EXPECT_EQ(send(kMux, 0x08), 0);
  EXPECT_EQ(board->set("mux ok", 0), 0);
  EXPECT_EQ(board->set("mux ok", 1), 0);
  EXPECT_EQ(read(kTwin, 0), ENXIO);
  EXPECT_EQ(receive(kMux), 0);
  EXPECT_EQ(answer, Bytes{0});
}

}  // namespace
}  // namespace SmbusService::Board
