// SPDX-License-Identifier: Apache-2.0
//
// The access method for what a management controller reads: sensors by name and FRU records.
//
// A back-end derives from IpmiHam, fills the caches and registers a factory in ipmiHams under a
// type name; a device description names the type ("hamType"). The library reads the caches on the
// host's thread and without a lock: a back-end that refreshes them from another thread sees to the
// exclusion itself. Names in the caches are upper case; look-ups are case-insensitive.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#define NIMBO_API __attribute__((visibility("default")))

namespace Ham {

class NIMBO_API IpmiHam {
 public:
  // A FRU record; what the two texts are is the back-end's.
  struct FruData {
    std::string first;
    std::string second;
  };

  // Each takes a key of the board's description and returns a status; a back-end that lacks one
  // throws NotImplementedException.
  virtual int fanId(const std::string& key);
  virtual int psuId(const std::string& key);
  virtual int airflowId(const std::string& key);
  virtual ~IpmiHam() = default;

  // `status_` for a name that is known, 4 for one that is not; outputs are then untouched.
  int getSensorVal(const std::string& name, std::string& value);
  // The reading as a number, as std::stof and std::stoi read it; a text that is no number throws as
  // they do. Stored only with status 0.
  int getSensorVal(const std::string& name, float* value);
  int getSensorVal(const std::string& name, int* value);
  int getFruVal(const std::string& name, FruData& data);

  // A supply is present with status 0; the outputs are then its record, the second text first.
  int psuPresence(const std::string& name, std::string& out1, std::string& out2);
  // A fan is present when its sensor answers with status 0.
  int fanPresence(const std::string& name, bool* present);

  std::map<std::string, std::string> sensors_;  // reading as text, by sensor name
  std::map<std::string, FruData> fru_;          // by FRU name
  int32_t status_ = 0;                          // of the cached values; 0: they are good
};

// The back-ends by type name; empty until one registers itself.
using IpmiHamFactory = std::function<std::shared_ptr<IpmiHam>()>;
extern NIMBO_API std::map<std::string, IpmiHamFactory> ipmiHams;

// A back-end of a type; empty, with a trace, when there is none or it cannot be made.
NIMBO_API std::shared_ptr<IpmiHam> createIpmiHam(const std::string& type);

}  // namespace Ham
