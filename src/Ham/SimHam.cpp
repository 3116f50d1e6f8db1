// SPDX-License-Identifier: Apache-2.0
#include "Ham/SimHam.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Utils/Check.hpp"
#include "Utils/Host.hpp"
#include "pl/pl_status.h"

namespace Ham {

namespace {

constexpr const char* kDefaultDirectory = "/tmp/NimboSimulationDevices";
constexpr mode_t kDirectoryMode = 0755;
constexpr mode_t kFileMode = 0666;  // less the umask
constexpr size_t kDigitsPerByte = 2;
constexpr int kHexBase = 16;
constexpr char kNumberPad = 'f';
constexpr char kTextPad = static_cast<char>(0xFF);

// Asked once per process.
const std::string& simulationDirectory() {
  static const std::string directory = [] {
    const char* named = std::getenv("NIMBOLIB_SIMDIR");
    return std::string(named != nullptr ? named : kDefaultDirectory);
  }();
  return directory;
}

void makeDirectory(const std::string& path) {
  if (DIR* directory = ::opendir(path.c_str())) {
    ::closedir(directory);
  } else {
    ::mkdir(path.c_str(), kDirectoryMode);
  }
}

std::string hexField(uint64_t value, uint64_t size) {
  char text[2 * sizeof value + 1];
  const int digits =
      std::snprintf(text, sizeof text, "%0*llx", static_cast<int>(size * kDigitsPerByte),
                    static_cast<unsigned long long>(value));
  return std::string(text, static_cast<size_t>(digits));
}

size_t fieldLength(const Utils::ExpectedVal& val) {
  return val.isNumber() ? val.size() * kDigitsPerByte : val.size();
}

std::string fieldText(const Utils::ExpectedVal& val) {
  if (val.isNumber()) {
    return hexField(val.val(), val.size());
  }
  const size_t size = val.size();
  CHECK_TEXT(size == val.valStr().length(), "size == val.valStr().length()");
  return val.valStr();
}

// A simulation file, open and under a record lock as a whole, for one access. Failures to open,
// lock or create are not looked at: mapping a file that is not open fails, and that is.
class LockedFile {
 public:
  LockedFile(const std::string& path, int flags, short lockType)
      : fd_(::open(path.c_str(), flags | O_CLOEXEC, kFileMode)) {
    lock(F_SETLKW, lockType);
  }
  ~LockedFile() {
    if (memory_ != MAP_FAILED) {
      ::munmap(memory_, size_);
    }
    lock(F_SETLK, F_UNLCK);
    ::close(fd_);
  }
  LockedFile(const LockedFile&) = delete;
  LockedFile& operator=(const LockedFile&) = delete;

  // Makes `text` all that the file holds. A reader without a lock never finds it empty.
  void rewrite(const std::string& text) {
    const auto length = static_cast<ssize_t>(text.size());
    if (::pwrite(fd_, text.data(), text.size(), 0) == length) {
      static_cast<void>(::ftruncate(fd_, length) == 0);
    }
  }

  // The first `size` bytes; MAP_FAILED on failure.
  void* map(size_t size, int protection, int flags) {
    if (reachesPageOf(size)) {
      size_ = size;
      memory_ = ::mmap(nullptr, size, protection, flags, fd_, 0);
    }
    return memory_;
  }

 private:
  // Whether the file has something in the page in which its first `size` bytes end. A mapping of
  // less can be made, but touching its last page is a bus error. Missing bytes of a page are 0.
  bool reachesPageOf(size_t size) const {
    const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    struct stat status {};
    return size > 0 && ::fstat(fd_, &status) == 0 &&
           static_cast<size_t>(status.st_size) > (size - 1) / page * page;
  }

  void lock(int command, short type) {
    struct flock record {};
    record.l_type = type;
    record.l_whence = SEEK_SET;
    record.l_pid = ::getpid();
    ::fcntl(fd_, command, &record);
  }

  int fd_;
  void* memory_ = MAP_FAILED;
  size_t size_ = 0;
};

}  // namespace

SimHam* SimHam::create(const Topology::Topology&, const Drivers::DriverArgs&) {
  return new SimHam;  // to the device that it serves
}

int SimHam::execute() {
  return simFileExists_ && !isAddrSimulated() ? PL_STATUS_FAILED : PL_STATUS_OK;
}

Ham::ResponseId SimHam::name(uint32_t reg) {
  currentReg_ = reg;
  return 0;
}

Ham::ResponseId SimHam::addRead(uint32_t reg, uint32_t, bool) { return name(reg); }

bool SimHam::isAddrSimulated() const {
  return expected_ != nullptr && expected_->find(currentReg_) != expected_->end();
}

// Whether the register last named can be read and written; says so when it cannot.
bool SimHam::isLive() const {
  if (simFileExists_ && isAddrSimulated()) {
    return true;
  }
  TRACE(0,
        "WARNING: Simulated Driver %s doesn't yet have expectedVal set for register 0x%x using "
        "SIMULATION_HAM()\n",
        driverName_.c_str(), currentReg_);
  return false;
}

const Utils::ExpectedVal& SimHam::currentVal() const { return expected_->at(currentReg_); }

void SimHam::setDriverName(const std::string& driver, const std::string& label) {
  driverName_ = driver;
  label_ = label;
  simFileName_ = simulationDirectory() + "/" + driver;
  if (!label.empty()) {
    simFileName_ += "-" + label;
  }
}

void SimHam::setExpected(Utils::ExpectedVals* values) {
  expected_ = values;
  if (!values->empty()) {
    createSimFile();
  }
}

void SimHam::createSimFile() {
  CHECK_TEXT(!simFileName_.empty(), "!simFileName_.empty()");
  makeDirectory(simulationDirectory());
  std::string line;
  for (const auto& [reg, val] : *expected_) {
    offsets_.emplace(reg, static_cast<uint32_t>(line.size()));
    line += fieldText(val);
  }
  simFileSize_ = line.size();
  line += "\n";
  LockedFile(simFileName_, O_WRONLY | O_CREAT, F_WRLCK).rewrite(line);
  simFileExists_ = true;
  TRACE(5, "Created %s", simFileName_.c_str());
}

Ham::ResponseId SimHam::addWrite8(uint32_t, uint8_t value, bool) {
  writeNumber(value, sizeof value);
  return 0;
}

Ham::ResponseId SimHam::addWrite16(uint32_t, uint16_t value, bool) {
  writeNumber(value, sizeof value);
  return 0;
}

Ham::ResponseId SimHam::addWrite(uint32_t, const void* data, uint32_t length, bool) {
  if (isLive() && currentVal().size() == length) {
    writeToFile(*static_cast<const std::string*>(data));
  }
  return 0;
}

Ham::ResponseId SimHam::addWriteBlock(uint32_t reg, const void* data, uint32_t length, bool flag) {
  return addWrite(reg, data, length, flag);
}

void SimHam::writeNumber(uint64_t value, uint64_t size) {
  if (isLive() && currentVal().size() == size) {
    writeToFile(hexField(value, size));
  }
}

void SimHam::writeToFile(const std::string& text) {
  CHECK(simFileExists_);
  CHECK(isAddrSimulated());
  {
    LockedFile file(simFileName_, O_RDWR, F_WRLCK);
    void* mm = file.map(simFileSize_, PROT_READ | PROT_WRITE, MAP_SHARED);
    CHECK_TEXT(mm != MAP_FAILED, "mm != ((void *) -1)");
    std::memcpy(static_cast<char*>(mm) + offsets_[currentReg_], text.data(), text.size());
  }
  TRACE(5, "%s - Wrote %s to register 0x%x", simFileName_.c_str(), text.c_str(), currentReg_);
}

uint8_t SimHam::get8(ResponseId) {
  return static_cast<uint8_t>(readNumber(sizeof(uint8_t) * kDigitsPerByte));
}

uint16_t SimHam::get16(ResponseId) {
  return static_cast<uint16_t>(readNumber(sizeof(uint16_t) * kDigitsPerByte));
}

std::string SimHam::getBlock(ResponseId, size_t length) {
  return isLive() ? readFromFile(length) : "";
}

unsigned long SimHam::readNumber(size_t digits) {
  return isLive() ? std::strtoul(readFromFile(digits).c_str(), nullptr, kHexBase) : 0;
}

std::string SimHam::readFromFile(size_t length) {
  CHECK(simFileExists_);
  CHECK(isAddrSimulated());
  const Utils::ExpectedVal& val = currentVal();
  const size_t stored = std::min(fieldLength(val), length);
  std::string text(length, val.isNumber() ? kNumberPad : kTextPad);
  {
    LockedFile file(simFileName_, O_RDONLY, F_RDLCK);
    const void* mm = file.map(simFileSize_, PROT_READ, MAP_PRIVATE);
    CHECK_TEXT(mm != MAP_FAILED, "mm != ((void *) -1)");
    std::memcpy(text.data(), static_cast<const char*>(mm) + offsets_[currentReg_], stored);
  }
  TRACE(5, "%s - Read %s from register 0x%x", simFileName_.c_str(), text.c_str(), currentReg_);
  return text;
}

}  // namespace Ham
