// Messages written as text: zephMsg("id: 'a' response { code: OK }").
#pragma once

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>
#include <zeph-message.pb.h>

#include <string>

namespace morvik::test {

namespace zeph = net::quelta::zeph::message;

/// A message of any kind; required fields may be missing. A text that is none fails the test.
template <class Message>
Message messageFrom(const std::string& text) {
  google::protobuf::TextFormat::Parser parser;
  parser.AllowPartialMessage(true);
  Message message;
  EXPECT_TRUE(parser.ParseFromString(text, &message)) << text;
  return message;
}

inline zeph::ZephMsg zephMsg(const std::string& text) { return messageFrom<zeph::ZephMsg>(text); }

/// Its serialised form.
inline std::string wireForm(const std::string& text) {
  return zephMsg(text).SerializePartialAsString();
}

}  // namespace morvik::test
