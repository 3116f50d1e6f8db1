// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <memory>

#include <fmt/format.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "config/File.hpp"
#include "config/FileError.hpp"
#include "config/JsonFile.hpp"
#include "config/Settings.hpp"
#include "identity/Build.hpp"
#include "identity/Image.hpp"
#include "identity/Text.hpp"
#include "tools/Table.hpp"
#include "tools/commands/Commands.hpp"

namespace Nimbo {

namespace {

using Identity::Bytes;
using Identity::Image;

constexpr const char* kHelp = "Build, show and check images of identification EEPROMs";
constexpr const char* kDetails =
    "An image is a file with the bytes of an EEPROM: an ONIE TlvInfo, or an IPMI FRU with its\n"
    "chassis, board and product info areas. What is wrong with one is said on standard error, and\n"
    "the exit code is 1 then.\n"
    "\n"
    "  nimbo eeprom build psu.json psu.bin\n"
    "  nimbo eeprom show psu.bin\n"
    "  nimbo --json eeprom check psu.bin";
constexpr const char* kBuildDetails =
    "IN is a JSON file with one of the keys that a virtual board's EEPROM has:\n"
    "  { \"tlvInfo\": { \"0x22\": \"TPS460AB\", \"0x23\": \"TP1C00001\", \"0x26\": 2 } }\n"
    "  { \"fru\": { \"name\": \"DPS550\", \"serial\": \"DP1\", \"board\": { \"part\": \"NP-1\" } } "
    "}";

// Larger than the EEPROMs of either format, and than any image that is built.
constexpr size_t kLargest = 1 << 20;

Bytes imageOf(const Config::JsonFile& file) {
  Config::Settings settings(Config::Item{file, file.document(), ""});
  const bool tlvInfo = settings.has("tlvInfo");
  if (tlvInfo == settings.has("fru")) {
    settings.fail("", "write one of the keys \"tlvInfo\" and \"fru\"");
  }
  Bytes image = tlvInfo ? Identity::buildTlvInfo(settings) : Identity::buildFru(settings);
  settings.finish();
  return image;
}

ExitCode build(const std::string& in, const std::string& out) {
  const Bytes image = imageOf(Config::JsonFile::load(in));
  Config::writeFile(out, {reinterpret_cast<const char*>(image.data()), image.size()});
  return kAllFine;
}

Image read(const std::string& path) {
  const std::string contents = Config::readFile(path, kLargest);
  const Bytes bytes(contents.begin(), contents.end());
  if (bytes.empty()) {
    throw Config::FileError({path}, "the file is empty");
  }
  const std::optional<Image> image = Identity::readImage(bytes);
  if (!image) {
    constexpr size_t kShown = 8;
    const Identity::View begin = Identity::View(bytes).first(std::min(bytes.size(), kShown));
    throw Config::FileError(
        {path}, fmt::format("offset 0x0000: neither the \"TlvInfo\" and zero of a TlvInfo nor the "
                            "01 of a FRU expected, {} found",
                            Identity::hexText(begin)));
  }
  return *image;
}

std::string tableOf(const Image& image) {
  Table table;
  table.addColumn("OFFSET");
  table.addColumn("KEY");
  table.addColumn("NAME");
  table.addColumn("VALUE");
  for (const Identity::Field& field : image.fields) {
    table.addRow();
    table.addCell(fmt::format("0x{:04X}", field.offset));
    table.addCell(field.key);
    table.addCell(field.name);
    table.addCell(field.text);
  }
  return table.text(false);
}

class ImageJson {
 public:
  explicit ImageJson(const Image& image) {
    writer_.SetIndent(' ', 2);
    writer_.StartObject();
    put("format", std::string(nameOf(image.format)));
    list("fields", image.fields, [this](const Identity::Field& field) {
      put("key", field.key);
      put("name", field.name);
      put("value", field.text);
      put("bytes", Identity::hexText(field.bytes));
    });
    list("faults", image.faults,
         [this](const Identity::Fault& fault) { put("message", fault.message); });
    writer_.EndObject();
  }

  const char* text() const { return buffer_.GetString(); }

 private:
  void put(const char* key, const std::string& value) {
    writer_.Key(key);
    writer_.String(value.c_str());
  }

  // Objects with their offset and what `putRest` writes.
  template <typename Elements, typename PutRest>
  void list(const char* key, const Elements& elements, PutRest putRest) {
    writer_.Key(key);
    writer_.StartArray();
    for (const auto& element : elements) {
      writer_.StartObject();
      writer_.Key("offset");
      writer_.Uint64(element.offset);
      putRest(element);
      writer_.EndObject();
    }
    writer_.EndArray();
  }

  rapidjson::StringBuffer buffer_;
  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer_{buffer_};
};

ExitCode tellFaults(const std::string& path, const Image& image) {
  for (const Identity::Fault& fault : image.faults) {
    std::fprintf(stderr, "%s: offset 0x%04zX: %s\n", path.c_str(), fault.offset,
                 fault.message.c_str());
  }
  return image.faults.empty() ? kAllFine : kToolFailed;
}

ExitCode show(const Options& options, const std::string& path) {
  const Image image = read(path);
  if (options.json) {
    std::puts(ImageJson(image).text());
  } else {
    std::fputs(tableOf(image).c_str(), stdout);
  }
  return tellFaults(path, image);
}

ExitCode check(const Options& options, const std::string& path) {
  const Image image = read(path);
  if (options.json) {
    std::puts(ImageJson(image).text());
  } else if (image.faults.empty()) {
    const size_t fields = image.fields.size();
    std::puts(fmt::format("{}: {} with {} field{}, checksums right", path, nameOf(image.format),
                          fields, fields == 1 ? "" : "s")
                  .c_str());
  }
  return tellFaults(path, image);
}

using Look = ExitCode (*)(const Options& options, const std::string& path);

void addLook(CLI::App& eeprom, const char* name, const char* help, Look look,
             const Options& options, Run& result) {
  const auto path = std::make_shared<std::string>();
  CLI::App* command = eeprom.add_subcommand(name, help);
  command->add_option("FILE", *path, "The image")->required();
  command->callback([&options, &result, look, path] {
    result = [&options, look, path] { return look(options, *path); };
  });
}

void addBuild(CLI::App& eeprom, Run& result) {
  const auto in = std::make_shared<std::string>();
  const auto out = std::make_shared<std::string>();
  CLI::App* command =
      eeprom.add_subcommand("build", "Build an image from JSON")->footer(kBuildDetails);
  command->add_option("IN", *in, "The JSON file")->required();
  command->add_option("OUT", *out, "The image to write")->required();
  command->callback([&result, in, out] { result = [in, out] { return build(*in, *out); }; });
}

}  // namespace

void addEepromCommand(CLI::App& app, const Options& options, Run& result) {
  CLI::App* command = app.add_subcommand("eeprom", kHelp)->footer(kDetails);
  command->require_subcommand(1);
  command->fallthrough();
  addBuild(*command, result);
  addLook(*command, "show", "Show what an image says", show, options, result);
  addLook(*command, "check", "Check an image's lengths, headers and checksums", check, options,
          result);
}

}  // namespace Nimbo
