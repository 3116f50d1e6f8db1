// SPDX-License-Identifier: Apache-2.0
#include "ipmi/ToolOutput.hpp"

#include <gmock/gmock.h>

#include <string>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace IpmiPlugin {

namespace {

const std::vector<AirflowMark> kMarks = {{"-F", "forward"}, {"-R", "reverse"}};

TEST(SensorOutput, MeasuringSensorGivesItsNumber) {
  EXPECT_THAT(parseSensors("1,FAN1,Fan,Nominal,5400.00,RPM,'OK'\n"),
              ElementsAre(Pair("FAN1", "5400.00")));
}

TEST(SensorOutput, NamesAreMadeUpperCase) {
  EXPECT_THAT(parseSensors("2,Inlet Temp,Temperature,Nominal,42.00,C,'OK'\n"),
              ElementsAre(Pair("INLET TEMP", "42.00")));
}

TEST(SensorOutput, SensorBeyondAThresholdGivesItsNumberToo) {
  EXPECT_THAT(parseSensors("1,FAN1,Fan,Critical,100.00,RPM,'At or Below (<=) Lower Critical'\n"),
              ElementsAre(Pair("FAN1", "100.00")));
}

TEST(SensorOutput, SensorWithoutAReadingHasNoValue) {
  EXPECT_THAT(parseSensors("4,FAN2,Fan,N/A,N/A,RPM,N/A\n"), IsEmpty());
}

TEST(SensorOutput, StatesGiveOneUnlessOneIsCritical) {
  EXPECT_THAT(parseSensors("5,PSU1_OK,Power Supply,Nominal,N/A,N/A,'Presence detected'\n"
                           "6,PSU2_OK,Power Supply,Critical,N/A,N/A,'Presence detected' 'Power "
                           "Supply input out-of-range, but present'\n"
                           "7,PSU3_OK,Power Supply,Warning,N/A,N/A,'Presence detected' 'Power "
                           "Supply Inactive'\n"),
              ElementsAre(Pair("PSU1_OK", "1"), Pair("PSU2_OK", "0"), Pair("PSU3_OK", "1")));
}

TEST(SensorOutput, SensorThatSaysItsDeviceIsAbsentHasNoValue) {
  EXPECT_THAT(parseSensors("1,A,Entity Presence,Critical,N/A,N/A,'Entity Absent'\n"
                           "2,B,Fan,Critical,N/A,N/A,'Device Removed/Device Absent'\n"
                           "3,C,Entity Presence,Nominal,N/A,N/A,'OK'\n"
                           "4,D,Power Supply,Nominal,N/A,N/A,'OK'\n"
                           "5,E,Entity Presence,Nominal,N/A,N/A,'Entity Present'\n"),
              ElementsAre(Pair("E", "1")));
}

TEST(SensorOutput, StatelessSensorOfAnotherTypeIsFine) {
  EXPECT_THAT(parseSensors("1,CPU,Processor,Nominal,N/A,N/A,'OK'\n"),
              ElementsAre(Pair("CPU", "1")));
}

TEST(SensorOutput, NameMayContainACommaAndBlanks) {
  EXPECT_THAT(parseSensors("1,Fan 1, rear,Fan,Nominal,7.00,RPM,'OK'\n"),
              ElementsAre(Pair("FAN 1, REAR", "7.00")));
}

TEST(SensorOutput, LinesOfAnotherFormArePassedOver) {
  EXPECT_THAT(parseSensors("\n,,\n'\nCaching SDR repository information: /x\n1,A,Fan,1.00,RPM,'OK'"
                           "\n,'\n1,B,Fan,Nominal,2.00,RPM,'OK'"),
              ElementsAre(Pair("B", "2.00")));
}

TEST(FruOutput, RecordHasModelSerialAndAirflow) {
  EXPECT_THAT(parseFrus("FRU Inventory Device: Psu1 (ID 01h)\n"
                        "\n"
                        "  FRU Product Manufacturer Name: Maker\n"
                        "  FRU Product Name: Supply\n"
                        "  FRU Product Part/Model Number: PN-1-F\n"
                        "  FRU Product Serial Number: SN: 123\n",
                        kMarks),
              ElementsAre(Pair("PSU1", Fru{"PN-1-F", "SN: 123", "forward"})));
}

TEST(FruOutput, ProductNameAndBoardStandInForWhatIsMissing) {
  EXPECT_THAT(parseFrus("FRU Inventory Device: A (ID 01h)\n  FRU Product Name: Supply\n"
                        "  FRU Board Part Number: B-1\n  FRU Board Serial Number: 7\n"
                        "FRU Inventory Device: B (ID 02h)\n  FRU Board Part Number: B-2\n",
                        kMarks),
              ElementsAre(Pair("A", Fru{"Supply", "7", ""}), Pair("B", Fru{"B-2", "", ""})));
}

TEST(FruOutput, AirflowIsInACustomFieldToo) {
  EXPECT_THAT(parseFrus("FRU Inventory Device: A (ID 01h)\n"
                        "  FRU Product Part/Model Number: PN\n"
                        "  FRU Product Custom Info: none\n"
                        "  FRU Product Custom Info: X-R\n",
                        kMarks),
              ElementsAre(Pair("A", Fru{"PN", "", "reverse"})));
}

TEST(FruOutput, DeviceThatCouldNotBeReadHasNoRecord) {
  EXPECT_THAT(parseFrus("FRU Inventory Device: PSU2 (ID 02h)\n"
                        "FRU Inventory Device: PSU3 (ID 03h)\n\n"
                        "  FRU Error: common header checksum invalid\n",
                        kMarks),
              IsEmpty());
}

TEST(FruOutput, FieldsBeforeADeviceAndStrangeLinesBelongToNone) {
  EXPECT_THAT(parseFrus("  FRU Product Name: X\nFRU Inventory Device: \n: (ID \n  FRU \n", kMarks),
              IsEmpty());
}

}  // namespace

}  // namespace IpmiPlugin
