// Messages written as text: zephMsg("id: 'a' response { code: OK }").
#pragma once

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>
#include <zeph-message.pb.h>

#include <string>

#include "host/zeph-msg-listener.h"

namespace morvik::test {

/// Required fields may be missing.
inline zeph::ZephMsg zephMsg(const std::string& text) {
  google::protobuf::TextFormat::Parser parser;
  parser.AllowPartialMessage(true);
  zeph::ZephMsg message;
  EXPECT_TRUE(parser.ParseFromString(text, &message)) << text;
  return message;
}

/// Its serialised form.
inline std::string wireForm(const std::string& text) {
  return zephMsg(text).SerializePartialAsString();
}

}  // namespace morvik::test
