#include "support/system/app-folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace morvik::test {

std::string descriptorXml(const std::vector<std::string>& accesses) {
  std::string xml = "<descriptor><accesses>";
  for (const std::string& access : accesses) xml += "<access>" + access + "</access>";
  return xml + "</accesses></descriptor>\n";
}

void AppFolder::app(const std::string& name, const std::vector<std::string>& accesses,
                    std::string_view mainJs) {
  file(name, "descriptor.xml", descriptorXml(accesses));
  file(name, "main.js", mainJs);
}

void AppFolder::file(const std::string& name, const std::string& file, std::string_view bytes) {
  std::filesystem::create_directories(folder_.path() / name);
  std::ofstream stream(fileOf(name, file), std::ios::binary);
  stream << bytes << std::flush;
  if (!stream) throw std::runtime_error("cannot write " + file);
}

void AppFolder::config(const std::string& name,
                       const net::quelta::zeph::message::ConfigApp& config) {
  file(name, "config.bin", config.SerializeAsString());
}

void AppFolder::gate(const std::string& name) {
  std::filesystem::create_directories(folder_.path() / name);
  if (mkfifo(fileOf(name, "descriptor.xml").c_str(), 0600) != 0)
    throw std::system_error(errno, std::generic_category(), "mkfifo");
}

// A pipe opens for writing without waiting only when its reader is there.
Descriptor AppFolder::awaitAtGate(const std::string& name) const {
  int gate = -1;
  waitUntil(name + " at its descriptor", [&] {
    gate = open(fileOf(name, "descriptor.xml").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    return gate >= 0;
  });
  return Descriptor(gate);
}

void AppFolder::openGate(const std::string& name, std::string_view descriptor) {
  const Descriptor gate = awaitAtGate(name);
  if (write(gate.get(), descriptor.data(), descriptor.size()) < 0)
    throw std::system_error(errno, std::generic_category(), "gate");
}

std::filesystem::path AppFolder::fileOf(const std::string& name, const std::string& file) const {
  return folder_.path() / name / file;
}

}  // namespace morvik::test
