// A configuration as its author writes it: protobuf's text form, with comments, or JSON.
#pragma once

#include <zeph-message.pb.h>

#include <string>
#include <vector>

#include "run/folder.h"

namespace morvik::devkit {

/// What a file gave. With findings, the configuration holds what could be made out.
struct ConfigRead {
  net::quelta::zeph::message::ConfigApp config = {};
  std::vector<FolderTrouble> findings = {};
};

enum class ConfigForm { kText, kJson };

/// A text whose first letter is a brace is JSON: no configuration in the text form begins so.
ConfigForm formOf(const std::string& text);

/// Reads a text in either form. Findings tell line and column in `file`; required fields that are
/// missing are among them, at the place where their message begins.
ConfigRead readConfigText(const std::string& file, const std::string& text);

/// A text that readConfigText makes the same configuration of. JSON needs texts in UTF-8; what is
/// none is replaced there.
std::string configAsText(const net::quelta::zeph::message::ConfigApp& config, ConfigForm form);

/// A byte of a text as line and column, both from 1; a column counts bytes.
void placeAt(const std::string& text, std::size_t offset, FolderTrouble& finding);

/// The byte at a line and column as protobuf's text parser counts them: both from 0, and a tab
/// leads to the next multiple of eight. The text's end where there is no such place.
std::size_t offsetOf(const std::string& text, int line, int column);

/// The names of all fields of a message.
std::vector<std::string> fieldsOf(const google::protobuf::Descriptor& message);

}  // namespace morvik::devkit
