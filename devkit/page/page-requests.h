// What pages ask for, read from their frames and checked.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "device/json.h"
#include "page/page-source.h"

namespace morvik::devkit {

/// Whoever does what a page asks for. Gets only what is well-formed.
class PageRequestTaker {
 public:
  virtual ~PageRequestTaker() = default;
  /// The page has seen everything up to this number. False when that was never sent.
  [[nodiscard]] virtual bool seen(std::uint64_t number) = 0;
  virtual Outcome stimulate(const std::string& name, const Json& arguments,
                            std::optional<unsigned> app) = 0;
  virtual Outcome act(const PageAct& act) = 0;
  /// An array of objects whose values are texts.
  virtual Outcome saveTags(const Json& tags) = 0;
};

/// Takes one frame. Gives what it is to be answered with: an object of type "outcome"; nothing for
/// a good acknowledgement. A frame that makes no sense is answered with the reason, and does
/// nothing.
std::optional<Json> takeRequest(std::string_view frame, PageRequestTaker& taker);

}  // namespace morvik::devkit
