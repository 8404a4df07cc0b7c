// gmock, and its words as all tests use them.
#pragma once

#include <gmock/gmock.h>

namespace morvik::test {

using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::EndsWith;
using ::testing::ExitedWithCode;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::KilledBySignal;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::StartsWith;

}  // namespace morvik::test
