// Changes of single fields of a configuration, in a message or in the text that it is written in.
#pragma once

#include <zeph-message.pb.h>

#include <optional>
#include <string>
#include <vector>

namespace morvik::devkit {

/// One change: "version=2", "access=led", "parameters.city=Paris" or
/// "configInstance.kitchen.params.volume=5".
struct ConfigChange {
  std::string field;  ///< the part before the "="
  std::string value;
};

/// Nothing when the word is none.
std::optional<ConfigChange> changeIn(const std::string& word);

/// Makes the changes, one after the other. Parameters and instances that are not there are made;
/// a list such as `access` gets the values that are given for it, in the place of those it had.
/// Gives what is wrong with the first change that makes no sense; the message is then of no use.
std::optional<std::string> change(net::quelta::zeph::message::ConfigApp& config,
                                  const std::vector<ConfigChange>& changes);

/// The same in protobuf's text form: all that is not changed stays as it is, comments and order
/// too. Gives the new text; nothing when a change makes no sense, or when the text would then not
/// tell the same, with the reason in `trouble`.
std::optional<std::string> changeText(const std::string& text,
                                      const std::vector<ConfigChange>& changes,
                                      std::string& trouble);

}  // namespace morvik::devkit
