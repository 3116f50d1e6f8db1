// SPDX-License-Identifier: Apache-2.0
#include "Ham/SimHam.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "Utils/NotImplemented.hpp"
#include "test/support/Check.hpp"
#include "test/support/Host.hpp"

namespace {

namespace fs = std::filesystem;

using Doubles::host;
using Doubles::Trace;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kUnit = "Ham/SimHam";

std::string contents(const fs::path& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::string warning(const std::string& driver, const std::string& reg) {
  return "WARNING: Simulated Driver " + driver + " doesn't yet have expectedVal set for register " +
         reg + " using SIMULATION_HAM()\n";
}

std::unique_ptr<Ham::SimHam> created() {
  return std::unique_ptr<Ham::SimHam>(
      Ham::SimHam::create(Topology::Topology(), Drivers::DriverArgs()));
}

class SimHam : public testing::Test {
 protected:
  SimHam() {
    ::setenv("NIMBOLIB_SIMDIR", directory_.c_str(), 1);
    ham_.setDriverName("Driver", "");
  }
  ~SimHam() override { fs::remove_all(directory_); }

  void simulate(Utils::ExpectedVals values) {
    values_ = std::move(values);
    ham_.setExpected(&values_);
    host().traces.clear();
  }
  fs::path file() const { return directory_ / "Driver"; }

  // Reads without looking at the status.
  uint8_t read8(uint32_t reg) { return ham_.get8(ham_.addRead8(reg)); }
  uint16_t read16(uint32_t reg) { return ham_.get16(ham_.addRead16(reg)); }
  std::string readBlock(uint32_t reg, size_t length) {
    return ham_.getBlock(ham_.addReadBlock(reg), length);
  }

  static fs::path temporaryDirectory() {
    std::string name = testing::TempDir() + "SimHamTest.XXXXXX";
    return ::mkdtemp(name.data());
  }

  fs::path directory_ = temporaryDirectory();
  std::unique_ptr<Ham::SimHam> owner_ = created();
  Ham::SimHam& ham_ = *owner_;
  Utils::ExpectedVals values_;
};

// The file.

TEST_F(SimHam, WritesEachFieldInRegisterOrder) {
  simulate({{0x10, {5, 1}}, {0x02, {"AB", 2}}});
  EXPECT_EQ(contents(file()), "AB05\n");
  EXPECT_EQ(readBlock(0x02, 2), "AB");
  EXPECT_EQ(read8(0x10), 5);
}

TEST_F(SimHam, PadsANumberToTwoDigitsAByte) {
  simulate({{0x01, {0xa, 1}}, {0x02, {0xbeef, 2}}, {0x03, {0x1, 2}}});
  EXPECT_EQ(contents(file()), "0abeef0001\n");
}

TEST_F(SimHam, TracesTheFileItCreates) {
  values_ = {{0x10, {5, 1}}};
  ham_.setExpected(&values_);
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "Created " + file().string()}));
}

TEST_F(SimHam, NamesTheFileAfterDriverAndLabel) {
  ham_.setDriverName("HalvorsaPsoc", "fan1");
  simulate({{0x10, {5, 1}}});
  EXPECT_TRUE(fs::exists(directory_ / "HalvorsaPsoc-fan1"));
}

TEST_F(SimHam, AsksForTheDirectoryOnce) {
  ::setenv("NIMBOLIB_SIMDIR", "/nonexistent", 1);
  ham_.setDriverName("Later", "");
  simulate({{0x10, {5, 1}}});
  EXPECT_TRUE(fs::exists(directory_ / "Later"));
}

TEST_F(SimHam, CreatesNoFileForADeviceWithoutRegisters) {
  simulate({});
  EXPECT_TRUE(fs::is_empty(directory_));
  ham_.addRead8(0x10);
  EXPECT_EQ(ham_.execute(), 0);
  EXPECT_EQ(ham_.get8(0), 0);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, warning("Driver", "0x10")}));
}

TEST_F(SimHam, RewritesTheFileForNewValues) {
  simulate({{0x10, {5, 1}}, {0x11, {6, 1}}});
  Utils::ExpectedVals others = {{0x10, {7, 1}}};
  ham_.setExpected(&others);
  EXPECT_EQ(contents(file()), "07\n");
}

TEST_F(SimHam, KeepsThePlaceOfARegisterWhenItRewritesTheFile) {
  simulate({{0x10, {5, 1}}});
  simulate({{0x02, {"AB", 2}}, {0x10, {5, 1}}});
  EXPECT_EQ(contents(file()), "AB05\n");
  EXPECT_EQ(read8(0x10), 0xAB);
}

TEST_F(SimHam, WantsItsNameBeforeItsValues) {
  const auto unnamed = created();
  values_ = {{0x10, {5, 1}}};
  EXPECT_CHECK(unnamed->setExpected(&values_), kUnit, "!simFileName_.empty()");
}

TEST_F(SimHam, WantsATextOfItsSize) {
  values_ = {{0x10, {"AB", 3}}};
  EXPECT_CHECK(ham_.setExpected(&values_), kUnit, "size == val.valStr().length()");
}

// Reading.

TEST_F(SimHam, ReadsWhatItWasGiven) {
  simulate({{0x10, {0x7f, 1}}, {0x12, {0xFE1F, 2}}, {0x14, {"DPS550AB6A", 10}}});
  EXPECT_EQ(read8(0x10), 0x7f);
  EXPECT_EQ(read16(0x12), 0xFE1F);
  EXPECT_EQ(readBlock(0x14, 10), "DPS550AB6A");
}

TEST_F(SimHam, GivesEveryOperationTheSameResponse) {
  simulate({{0x10, {0x7f, 1}}});
  ham_.prepare();
  EXPECT_EQ(ham_.addRead8(0x10), 0u);
  EXPECT_EQ(ham_.addRead16(0x10), 0u);
  EXPECT_EQ(ham_.addRead(0x10, 2, true), 0u);
  EXPECT_EQ(ham_.addReadBlock(0x10), 0u);
  EXPECT_EQ(ham_.addProcessCall(0x10, 3), 0u);
  EXPECT_EQ(ham_.addRecvByte(), 0u);
  EXPECT_EQ(ham_.addSendByte(0x55, true), 0u);
  EXPECT_EQ(ham_.addWrite8(0x10, 1, true), 0u);
  EXPECT_EQ(ham_.execute(), 0);
  EXPECT_EQ(ham_.get8(77), 1);
}

TEST_F(SimHam, NamesARegisterByEveryReadButAReceivedByte) {
  simulate({{0x10, {1, 1}}, {0x11, {2, 1}}, {0x12, {3, 1}}, {0x13, {4, 1}}, {0x14, {5, 1}}});
  ham_.addRead(0x10, 1, false);
  EXPECT_EQ(ham_.get8(0), 1);
  ham_.addReadBlock(0x11);
  EXPECT_EQ(ham_.get8(0), 2);
  ham_.addProcessCall(0x12, 0);
  EXPECT_EQ(ham_.get8(0), 3);
  ham_.addRead16(0x13);
  EXPECT_EQ(ham_.get8(0), 4);
  ham_.addRead8(0x14);
  ham_.addRecvByte();
  ham_.addSendByte(0x10, false);
  EXPECT_EQ(ham_.get8(0), 5);
}

TEST_F(SimHam, FillsUpANumberThatIsTooNarrow) {
  simulate({{0x10, {0x12, 1}}});
  EXPECT_EQ(read16(0x10), 0x12FF);
  EXPECT_EQ(readBlock(0x10, 5), "12fff");
}

TEST_F(SimHam, GivesTheHighByteOfANumberThatIsTooWide) {
  simulate({{0x10, {0x1234, 2}}});
  EXPECT_EQ(read8(0x10), 0x12);
  EXPECT_EQ(readBlock(0x10, 3), "123");
}

TEST_F(SimHam, FillsUpATextThatIsTooShort) {
  simulate({{0x02, {"AB", 2}}, {0x10, {5, 1}}});
  EXPECT_EQ(readBlock(0x02, 4), "AB\xFF\xFF");
  EXPECT_EQ(readBlock(0x02, 1), "A");
}

TEST_F(SimHam, TracesWhatItReads) {
  simulate({{0x10, {0x7f, 1}}});
  read8(0x10);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, file().string() + " - Read 7f from register 0x10"}));
}

TEST_F(SimHam, FailsToExecuteForARegisterThatIsNotSimulated) {
  simulate({{0x10, {5, 1}}});
  ham_.addRead8(0x11);
  EXPECT_EQ(ham_.execute(), 4);
  ham_.addRead8(0x10);
  EXPECT_EQ(ham_.execute(), 0);
}

TEST_F(SimHam, ReadsARegisterThatIsNotSimulatedAsNothing) {
  simulate({{0x10, {5, 1}}});
  EXPECT_EQ(read8(0xAB), 0);
  EXPECT_EQ(read16(0xAB), 0);
  EXPECT_EQ(readBlock(0xAB, 3), "");
  EXPECT_THAT(host().texts(0), ElementsAre(warning("Driver", "0xab"), warning("Driver", "0xab"),
                                           warning("Driver", "0xab")));
}

TEST_F(SimHam, ReadsAsNothingBeforeItsValuesAreSet) {
  EXPECT_EQ(read8(0x10), 0);
  EXPECT_EQ(ham_.execute(), 0);
}

// Writing.

TEST_F(SimHam, WritesToTheRegisterLastRead) {
  simulate({{0x10, {5, 1}}, {0x02, {"AB", 2}}});
  ham_.addRead8(0x10);
  ham_.addWrite8(0x02, 0x7f, false);
  EXPECT_EQ(contents(file()), "AB7f\n");
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, file().string() + " - Wrote 7f to register 0x10"}));
}

TEST_F(SimHam, WritesWords) {
  simulate({{0x10, {5, 2}}});
  ham_.addRead16(0x10);
  ham_.addWrite16(0x10, 0xBEEF, false);
  EXPECT_EQ(contents(file()), "beef\n");
}

TEST_F(SimHam, DropsAWriteBeforeAnyRead) {
  simulate({{0x00, {5, 1}}});
  ham_.prepare();
  ham_.addWrite8(0x00, 7, false);
  EXPECT_EQ(ham_.execute(), 4);
  EXPECT_EQ(contents(file()), "05\n");
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, warning("Driver", "0xffffffff")}));
}

TEST_F(SimHam, WarnsOfAWriteToARegisterThatIsNotSimulated) {
  simulate({{0x10, {5, 1}}});
  const std::string data = "x";
  ham_.addRead8(0x11);
  ham_.addWrite8(0x10, 7, false);
  ham_.addWrite16(0x10, 7, false);
  ham_.addWrite(0x10, &data, 1, false);
  ham_.addWriteBlock(0x10, &data, 1, false);
  EXPECT_THAT(host().traces, SizeIs(4));
  EXPECT_THAT(host().traces, testing::Each(Trace{0, warning("Driver", "0x11")}));
  EXPECT_EQ(contents(file()), "05\n");
}

TEST_F(SimHam, WarnsOfAWriteWithoutAFile) {
  ham_.addRead8(0x11);
  ham_.addWrite8(0x11, 7, false);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, warning("Driver", "0x11")}));
}

TEST_F(SimHam, DropsAWriteOfAnotherWidthSilently) {
  simulate({{0x10, {5, 1}}, {0x11, {6, 2}}});
  const std::string data = "abc";
  ham_.addRead8(0x10);
  ham_.addWrite16(0x10, 7, false);
  ham_.addWrite(0x10, &data, 3, false);
  ham_.addRead8(0x11);
  ham_.addWrite8(0x11, 7, false);
  ham_.addWriteBlock(0x11, &data, 3, false);
  EXPECT_EQ(contents(file()), "050006\n");
  EXPECT_THAT(host().traces, IsEmpty());
}

TEST_F(SimHam, TakesByteStringsAsStringObjects) {
  simulate({{0x02, {"AB", 2}}, {0x03, {"CD", 2}}});
  const std::string first = "xy";
  const std::string second = "zz";
  ham_.addReadBlock(0x02);
  ham_.addWrite(0x99, &first, 2, false);
  ham_.addReadBlock(0x03);
  ham_.addWriteBlock(0x99, &second, 2, false);
  EXPECT_EQ(contents(file()), "xyzz\n");
}

TEST_F(SimHam, WritesAStringToItsEndWhateverTheFieldHolds) {
  simulate({{0x02, {"AB", 2}}, {0x03, {"CD", 2}}});
  const std::string longer = "xyz";
  ham_.addReadBlock(0x02);
  ham_.addWrite(0x02, &longer, 2, false);
  EXPECT_EQ(contents(file()), "xyzD\n");
}

TEST_F(SimHam, IgnoresASentByte) {
  simulate({{0x10, {5, 1}}});
  ham_.addRead8(0x10);
  ham_.addSendByte(0x7f, false);
  EXPECT_EQ(contents(file()), "05\n");
}

TEST_F(SimHam, HasNo32BitAccesses) {
  EXPECT_THROW(ham_.addRead32(1), NotImplementedException);
  EXPECT_THROW(ham_.addWrite32(1, 2, false), NotImplementedException);
  EXPECT_THROW(ham_.get32(0), NotImplementedException);
}

// Files that are gone.

TEST_F(SimHam, StopsWhenItsFileCannotBeRead) {
  simulate({{0x10, {5, 1}}});
  fs::remove(file());
  EXPECT_DEATH(read8(0x10), testing::HasSubstr("std::string Ham::SimHam::readFromFile(size_t): "
                                               "Assertion `mm != ((void *) -1)' failed."));
}

TEST_F(SimHam, StopsWhenItsFileCannotBeWritten) {
  simulate({{0x10, {5, 1}}});
  ham_.addRead8(0x10);
  fs::remove(file());
  EXPECT_CHECK(ham_.addWrite8(0x10, 1, false), kUnit, "mm != ((void *) -1)");
}

TEST_F(SimHam, NoticesAFileThatCouldNotBeCreatedAtItsFirstUse) {
  fs::create_directory(file());  // stands where the file is to be
  simulate({{0x10, {5, 1}}});
  EXPECT_CHECK(read8(0x10), kUnit, "mm != ((void *) -1)");
}

// Files that others have cut.

TEST_F(SimHam, StopsWhenItsFileIsEmptyAtARead) {
  simulate({{0x10, {5, 1}}});
  fs::resize_file(file(), 0);
  EXPECT_CHECK(read8(0x10), kUnit, "mm != ((void *) -1)");
}

TEST_F(SimHam, StopsWhenItsFileIsEmptyAtAWrite) {
  simulate({{0x10, {5, 1}}});
  ham_.addRead8(0x10);
  fs::resize_file(file(), 0);
  EXPECT_CHECK(ham_.addWrite8(0x10, 1, false), kUnit, "mm != ((void *) -1)");
}

TEST_F(SimHam, ReadsTheMissingEndOfAShortFileAsZero) {
  simulate({{0x10, {5, 1}}, {0x11, {0x1234, 2}}});
  fs::resize_file(file(), 4);
  EXPECT_EQ(read8(0x10), 5);
  EXPECT_EQ(read16(0x11), 0x12);
}

// The directory.

TEST(SimHamDirectory, IsCreatedWhenItIsMissing) {
  std::string base = testing::TempDir() + "SimHamTest.XXXXXX";
  ASSERT_NE(::mkdtemp(base.data()), nullptr);
  const std::string directory = base + "/devices";
  ::setenv("NIMBOLIB_SIMDIR", directory.c_str(), 1);
  ::umask(0);
  const auto ham = created();
  ham->setDriverName("Driver", "");
  Utils::ExpectedVals values = {{1, {2, 1}}};
  ham->setExpected(&values);
  EXPECT_EQ(fs::status(directory).permissions(), fs::perms(0755));
  EXPECT_EQ(contents(directory + "/Driver"), "02\n");
  fs::remove_all(base);
}

TEST(SimHamDirectory, IsInTmpWithoutTheVariable) {
  ::unsetenv("NIMBOLIB_SIMDIR");
  const std::string driver = "SimHamTest" + std::to_string(::getpid());
  const std::string path = "/tmp/NimboSimulationDevices/" + driver;
  const auto ham = created();
  ham->setDriverName(driver, "");
  Utils::ExpectedVals values = {{1, {2, 1}}};
  ham->setExpected(&values);
  EXPECT_EQ(contents(path), "02\n");
  fs::remove(path);
}

// Other processes.

struct flock wholeFile(short type) {
  struct flock record {};
  record.l_type = type;
  record.l_whence = SEEK_SET;
  return record;
}

// The library's record locks, and what is done when it is about to wait for one.
std::vector<struct flock> locks;
std::vector<int> lockCommands;
void (*beforeWaiting)() = nullptr;

}  // namespace

extern "C" {
int __real_fcntl(int fd, int command, struct flock* record);
int __wrap_fcntl(int fd, int command, struct flock* record) {
  lockCommands.push_back(command);
  locks.push_back(*record);
  if (command == F_SETLKW && beforeWaiting != nullptr) {
    beforeWaiting();
  }
  return __real_fcntl(fd, command, record);
}
}

namespace {

TEST_F(SimHam, LocksTheWholeFileForEachAccess) {
  simulate({{0x10, {5, 1}}});
  locks.clear();
  lockCommands.clear();
  read8(0x10);
  ham_.addWrite8(0x10, 6, false);
  EXPECT_THAT(lockCommands, ElementsAre(F_SETLKW, F_SETLK, F_SETLKW, F_SETLK));
  ASSERT_THAT(locks, SizeIs(4));
  EXPECT_EQ(locks[0].l_type, F_RDLCK);
  EXPECT_EQ(locks[1].l_type, F_UNLCK);
  EXPECT_EQ(locks[2].l_type, F_WRLCK);
  EXPECT_EQ(locks[3].l_type, F_UNLCK);
  for (const struct flock& lock : locks) {
    EXPECT_EQ(lock.l_whence, SEEK_SET);
    EXPECT_EQ(lock.l_start, 0);
    EXPECT_EQ(lock.l_len, 0);
    EXPECT_EQ(lock.l_pid, ::getpid());
  }
}

// A process that edits the file under a record lock. It lets go only once the library waits.
class Editor {
 public:
  explicit Editor(const fs::path& file) {
    EXPECT_EQ(::pipe(held_), 0);
    EXPECT_EQ(::pipe(waiting_), 0);
    child_ = ::fork();
    if (child_ == 0) {
      edit(file);
    }
    char byte;
    EXPECT_EQ(::read(held_[0], &byte, 1), 1);
  }
  ~Editor() {
    int status = 0;
    ::waitpid(child_, &status, 0);
    EXPECT_EQ(status, 0);
  }
  static void letGo() { EXPECT_EQ(::write(waiting_[1], "w", 1), 1); }

 private:
  [[noreturn]] static void edit(const fs::path& path) {
    const int fd = ::open(path.c_str(), O_RDWR);
    struct flock record = wholeFile(F_WRLCK);
    char byte;
    const bool done = __real_fcntl(fd, F_SETLKW, &record) == 0 && ::write(held_[1], "h", 1) == 1 &&
                      ::read(waiting_[0], &byte, 1) == 1 && ::pwrite(fd, "c8", 2, 0) == 2;
    ::_exit(done ? 0 : 1);
  }

  static inline int held_[2];
  static inline int waiting_[2];
  pid_t child_;
};

TEST_F(SimHam, WaitsForAnotherProcessToFinishItsEdit) {
  simulate({{0x10, {5, 1}}});
  const Editor editor(file());
  beforeWaiting = Editor::letGo;
  EXPECT_EQ(read8(0x10), 0xC8);
}

TEST_F(SimHam, WritesOnTopOfAnotherProcessEdit) {
  simulate({{0x10, {5, 1}}, {0x11, {6, 1}}});
  ham_.addRead8(0x11);
  {
    const Editor editor(file());
    beforeWaiting = Editor::letGo;
    ham_.addWrite8(0x11, 0x7f, false);
  }
  EXPECT_EQ(contents(file()), "c87f\n");
}

// A long life.

size_t entries(const char* directory) {
  const fs::directory_iterator all(directory);
  return static_cast<size_t>(std::distance(begin(all), end(all)));
}

size_t mappings() {
  std::ifstream file("/proc/self/maps");
  return static_cast<size_t>(std::count(std::istreambuf_iterator<char>(file), {}, '\n'));
}

long residentKilobytes() {
  std::ifstream file("/proc/self/statm");
  long total = 0;
  long resident = 0;
  file >> total >> resident;
  return resident * ::sysconf(_SC_PAGESIZE) / 1024;
}

TEST_F(SimHam, LeavesNothingBehindIn200000Accesses) {
  simulate({{0x10, {5, 1}}, {0x11, {0x1234, 2}}});
  host().keepsTraces = false;
  const auto access = [&](int times) {
    for (int i = 0; i < times; ++i) {
      EXPECT_EQ(read16(0x11), 0x1234);
      ham_.addWrite16(0x11, 0x1234, false);
      locks.clear();
      lockCommands.clear();
    }
  };
  access(1000);
  const size_t mapped = mappings();
  const size_t open = entries("/proc/self/fd");
  const long resident = residentKilobytes();
  access(100000);
  EXPECT_EQ(mappings(), mapped);
  EXPECT_EQ(entries("/proc/self/fd"), open);
  EXPECT_LT(residentKilobytes(), resident + 1024);
}

}  // namespace
