// Runs the rows of every feature through the fixture of the program that this is built for.
#include "feature-test.h"
#include "features/features.h"

namespace morvik::test {

namespace {

std::string nameOf(const testing::TestParamInfo<Feature>& info) { return info.param.name; }

class FeatureRows : public FeatureTest, public testing::WithParamInterface<Feature> {
 protected:
  FeatureRows() : FeatureTest(GetParam().name) {}
};

class AnyFeature : public FeatureRows {};
INSTANTIATE_TEST_SUITE_P(Rows, AnyFeature, testing::ValuesIn(features()), nameOf);

TEST_P(AnyFeature, hasItsFunctionsOnlyWithItsAccess) { expectFunctions(GetParam().functions); }

TEST_P(AnyFeature, refusesInItsOrder) { expectRefuses(GetParam().refuses); }

class SendingFeature : public FeatureRows {};
INSTANTIATE_TEST_SUITE_P(Rows, SendingFeature, testing::ValuesIn(featuresWith(&Feature::sends)),
                         nameOf);

TEST_P(SendingFeature, sendsItsArgumentsConverted) { expectSends(GetParam().sends); }

class ReadingFeature : public FeatureRows {};
INSTANTIATE_TEST_SUITE_P(Rows, ReadingFeature, testing::ValuesIn(featuresWith(&Feature::reads)),
                         nameOf);

TEST_P(ReadingFeature, readsItsArgumentsFromLeftToRight) { expectReads(GetParam().reads); }

class AnsweredFeature : public FeatureRows {};
INSTANTIATE_TEST_SUITE_P(Rows, AnsweredFeature, testing::ValuesIn(featuresWith(&Feature::answers)),
                         nameOf);

TEST_P(AnsweredFeature, tellsItsScriptTheAnswers) { expectAnswered(GetParam().answers); }

class ListeningFeature : public FeatureRows {};
INSTANTIATE_TEST_SUITE_P(Rows, ListeningFeature, testing::ValuesIn(featuresWith(&Feature::hears)),
                         nameOf);

TEST_P(ListeningFeature, tellsItsListeners) { expectHears(GetParam().hears); }

TEST_P(ListeningFeature, keepsListenersOnlyForTrue) { expectStaysOnlyForTrue(GetParam().event); }

}  // namespace
}  // namespace morvik::test
