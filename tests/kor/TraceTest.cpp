// SPDX-License-Identifier: Apache-2.0
#include "support/TraceRecorder.h"

#include <Kor/Trace.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <ostream>
#include <string>
#include <string_view>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::TraceRecorder;

Kor::TraceHandle const engine("TraceTestEngine");
Kor::TraceHandle const brake("TraceTestBrake");

// Counts how often it is printed.
struct Formatted {
  int* times;
  friend std::ostream& operator<<(std::ostream& out, Formatted const& value) {
    ++*value.times;
    return out << "formatted";
  }
};

TEST(Trace, ALineIsWrittenWhenItsLevelIsOn) {
  TraceRecorder const trace("TraceTestEngine", 5);
  KOR_TRACE_LINE(engine, 5,
                 "key=" << 7 << ", name="
                        << "x");
  KOR_TRACE_LINE(engine, 1, "one");
  KOR_TRACE_LINE(engine, 6, "six");
  KOR_TRACE_LINE(brake, 5, "other source");
  EXPECT_THAT(trace.lines(),
              ElementsAre("TraceTestEngine|5|key=7, name=x", "TraceTestEngine|1|one"));
}

TEST(Trace, NumbersAreWrittenTheSameInEveryLocale) {
  struct Grouping : std::numpunct<char> {
    [[nodiscard]] char do_thousands_sep() const override { return '_'; }
    [[nodiscard]] std::string do_grouping() const override { return "\1"; }
  };
  TraceRecorder const trace("TraceTestEngine", 5);
  std::locale const before = std::locale::global(std::locale(std::locale(), new Grouping()));
  KOR_TRACE_LINE(engine, 5, "count=" << 1234);
  std::locale::global(before);
  EXPECT_THAT(trace.lines(), ElementsAre("TraceTestEngine|5|count=1234"));
}

TEST(Trace, LevelZeroIsOnWithoutAnySetting) {
  TraceRecorder const trace;
  KOR_TRACE_LINE(engine, 0, "error");
  KOR_TRACE_LINE(engine, 1, "detail");
  EXPECT_THAT(trace.lines(), ElementsAre("TraceTestEngine|0|error"));
}

TEST(Trace, ALineThatIsOffIsNotFormatted) {
  TraceRecorder const trace("TraceTestEngine", 5);
  int times = 0;
  KOR_TRACE_LINE(engine, 8, Formatted{&times});
  EXPECT_EQ(times, 0);
  KOR_TRACE_LINE(engine, 5, Formatted{&times});
  EXPECT_EQ(times, 1);
}

TEST(Trace, AStarStandsForAllSourcesAndALaterSettingWins) {
  TraceRecorder const trace;
  Kor::traceLevelIs("TraceTestEngine", 3);
  Kor::traceLevelIs("*", 7);
  EXPECT_EQ(engine.level(), 7);
  EXPECT_EQ(brake.level(), 7);
  Kor::traceLevelIs("TraceTestEngine", 2);
  EXPECT_EQ(engine.level(), 2);
  EXPECT_EQ(brake.level(), 7);
  Kor::traceLevelIs("*", 0);
  EXPECT_EQ(engine.level(), 0);
  Kor::traceLevelIs("TraceTestEngine", 0);
}

TEST(Trace, ASettingReachesHandlesThatAreMadeLater) {
  Kor::traceLevelIs("TraceTestLate", 4);
  Kor::TraceHandle const late("TraceTestLate");
  EXPECT_EQ(late.level(), 4);
  EXPECT_TRUE(late.on(4));
  EXPECT_FALSE(late.on(5));
  Kor::traceLevelIs("TraceTestLate", 0);
  EXPECT_EQ(late.level(), 0);
}

TEST(Trace, NamesAreComparedExactly) {
  Kor::traceLevelIs("TraceTestEng", 9);
  Kor::traceLevelIs("tracetestengine", 9);
  EXPECT_EQ(engine.level(), 0);
}

TEST(Trace, ALineKeepsItsBytesAndLeadingBlanks) {
  TraceRecorder const trace;
  KOR_TRACE_LINE(engine, 0, " map : " << std::string_view("a\0%s", 4));
  EXPECT_THAT(trace.lines(), ElementsAre(std::string("TraceTestEngine|0| map : a\0%s", 29)));
}

TEST(Trace, InstallingASinkAnswersTheOneBefore) {
  std::string seen;
  Kor::TraceSink const original = Kor::traceSinkIs(
      [&](std::string_view /*source*/, int /*level*/, std::string_view text) { seen = text; });
  KOR_TRACE_LINE(engine, 0, "first");
  EXPECT_EQ(seen, "first");
  Kor::TraceSink const mine = Kor::traceSinkIs(original);
  mine("", 0, "called directly");
  EXPECT_EQ(seen, "called directly");
}

TEST(TraceRecorder, PutsSinkAndLevelBack) {
  TraceRecorder outer;
  {
    TraceRecorder inner("TraceTestEngine", 8);
    KOR_TRACE_LINE(engine, 8, "inner");
    EXPECT_THAT(inner.take(), ElementsAre("TraceTestEngine|8|inner"));
    EXPECT_THAT(inner.lines(), IsEmpty());
  }
  KOR_TRACE_LINE(engine, 8, "off again");
  KOR_TRACE_LINE(engine, 0, "outer");
  EXPECT_THAT(outer.lines(), ElementsAre("TraceTestEngine|0|outer"));
}

// The environment is read at process start, so these tests run in processes of their own.
class TraceEnvironmentDeathTest : public testing::Test {
 protected:
  TraceEnvironmentDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  ~TraceEnvironmentDeathTest() override {
    unsetenv("KOR_TRACE");
    GTEST_FLAG_SET(death_test_style, style_);
  }

  // Checks the levels of engine and brake in a process that is started with this setting.
  static void expectLevels(char const* setting, std::string const& levels) {
    setenv("KOR_TRACE", setting, 1);
    EXPECT_EXIT(reportLevels(), testing::ExitedWithCode(0), testing::StrEq(levels))
        << "KOR_TRACE=" << setting;
  }
  // The same for a setting whose part `faulty` is reported and ignored.
  static void expectRefused(char const* setting, std::string const& faulty,
                            std::string const& levels) {
    expectLevels(setting,
                 "KOR_TRACE: expected NAME or NAME/LEVEL with a level from 0 to 9, found '" +
                     faulty + "'\n" + levels);
  }
  [[noreturn]] static void reportLevels() {
    std::fprintf(stderr, "%d %d", engine.level(), brake.level());
    std::_Exit(0);
  }

 private:
  std::string style_ = GTEST_FLAG_GET(death_test_style);
};

TEST_F(TraceEnvironmentDeathTest, ALevelFollowsItsSource) {
  expectLevels("TraceTestEngine/8", "8 0");
}
TEST_F(TraceEnvironmentDeathTest, SettingsAreSeparatedByCommas) {
  expectLevels("TraceTestEngine/8,,Unknown/3,TraceTestBrake/1", "8 1");
}
TEST_F(TraceEnvironmentDeathTest, ANameAloneMeansEveryLevel) {
  expectLevels("TraceTestBrake", "0 9");
}
TEST_F(TraceEnvironmentDeathTest, AStarStandsForAllAndLaterOnesWin) {
  expectLevels("*/3,TraceTestBrake/6", "3 6");
}
TEST_F(TraceEnvironmentDeathTest, AnEmptySettingSwitchesNothingOn) {
  expectLevels("", "0 0");
}
TEST_F(TraceEnvironmentDeathTest, ALevelThatIsNoneIsTold) {
  expectRefused("*/99", "*/99", "0 0");
  expectRefused("TraceTestBrake/6,*/x", "*/x", "0 6");
  expectRefused("TraceTestBrake/", "TraceTestBrake/", "0 0");
  expectRefused("TraceTestBrake/-1", "TraceTestBrake/-1", "0 0");
}
TEST_F(TraceEnvironmentDeathTest, ANameThatIsNoneIsTold) {
  expectRefused("/5,TraceTestEngine/2", "/5", "2 0");
  expectRefused("TraceTestEngine=5", "TraceTestEngine=5", "0 0");
  expectRefused("TraceTestBrake/6, TraceTestEngine/5", " TraceTestEngine/5", "0 6");
  expectRefused("TraceTest*/5", "TraceTest*/5", "0 0");
  expectRefused("a\x1b[2J", "a\\x1b[2J", "0 0");
}

TEST_F(TraceEnvironmentDeathTest, WithoutASinkLinesGoToStderr) {
  setenv("KOR_TRACE", "TraceTestEngine/8", 1);
  EXPECT_EXIT(
      {
        KOR_TRACE_LINE(engine, 8, "to stderr");
        KOR_TRACE_LINE(engine, 9, "off");
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), testing::StrEq("TraceTestEngine/8: to stderr\n"));
}

TEST(Trace, SourcesAreListedOnceAndInOrder) {
  Kor::TraceHandle const again("TraceTestBrake");
  auto const sources = Kor::traceSources();
  EXPECT_THAT(sources, testing::IsSupersetOf({"TraceTestBrake", "TraceTestEngine"}));
  EXPECT_TRUE(std::is_sorted(sources.begin(), sources.end()));
  EXPECT_EQ(std::count(sources.begin(), sources.end(), "TraceTestBrake"), 1);
}

}  // namespace
