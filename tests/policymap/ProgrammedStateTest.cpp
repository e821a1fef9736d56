// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <PolicyMap/ProgrammedState.h>

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapSmCommonData;
using PolicyMap::ClassRules;
using PolicyMap::OptionState;
using PolicyMap::PolicyFailure;
using PolicyMap::ProgrammedClass;
using PolicyMap::ProgrammedClasses;
using testing::ElementsAre;
using testing::IsEmpty;

ProgrammedClass classOf(char const* name) {
  return {Kor::Name(name), Kor::make<ClassMapSmCommonData>(name, nullptr, nullptr),
          Kor::make<ClassRules>(ClassRules::emptySources(ClassMapMatchOption::ipv4))};
}
PolicyFailure failure(char const* error) {
  return {error, "commitPolicy", {}, {}};
}

TEST(ProgrammedClassesTest, AreFoundByTheirCommonData) {
  ProgrammedClass const one = classOf("one");
  ProgrammedClass const two = classOf("two");
  ProgrammedClasses classes;
  EXPECT_TRUE(classes.empty());
  classes.add(one);
  classes.add(two);
  EXPECT_EQ(classes.size(), 2U);
  ASSERT_NE(classes.find(two.data.get()), nullptr);
  EXPECT_EQ(classes.find(two.data.get())->name, "two");
  EXPECT_EQ(classes.find(classOf("two").data.get()), nullptr);
  EXPECT_EQ(classes.find(nullptr), nullptr);
  classes.clear();
  EXPECT_TRUE(classes.empty());
  EXPECT_EQ(classes.find(two.data.get()), nullptr);
}

TEST(ProgrammedClassesTest, AreFoundByTheirNamesWithTheirNeighbours) {
  ProgrammedClasses classes;
  EXPECT_EQ(classes.find(Kor::Name("a")), nullptr);
  EXPECT_THAT(classes.around({Kor::Name("a")}), IsEmpty());
  for (char const* const name : {"d", "a", "c", "b", "e"}) {
    classes.add(classOf(name));
  }
  ASSERT_NE(classes.find(Kor::Name("b")), nullptr);
  EXPECT_EQ(classes.find(Kor::Name("b"))->name, "b");
  EXPECT_THAT(classes.around({Kor::Name("d")}), ElementsAre("d", "a"));
  EXPECT_THAT(classes.around({Kor::Name("c"), Kor::Name("x")}), ElementsAre("a", "c", "b"));
  EXPECT_THAT(classes.around({Kor::Name("a"), Kor::Name("e")}),
              ElementsAre("d", "a", "c", "b", "e"));
  classes.clear();
  EXPECT_EQ(classes.find(Kor::Name("b")), nullptr);
}

TEST(ProgrammedClassesTest, AdoptTheDataOfClassesThatWereBuiltAgain) {
  ProgrammedClass const kept = classOf("kept");
  ProgrammedClass const before = classOf("renewed");
  ProgrammedClass after = classOf("renewed");
  ProgrammedClasses classes;
  classes.add(kept);
  classes.add(before);
  ProgrammedClasses same;
  same.add(kept);
  same.add(after);
  EXPECT_THAT(classes.adopt(same), ElementsAre(Kor::Name("renewed")));
  EXPECT_EQ(classes.find(before.data.get()), nullptr);
  ProgrammedClass const* const adopted = classes.find(after.data.get());
  ASSERT_NE(adopted, nullptr);
  EXPECT_EQ(adopted->rules, after.rules);
  EXPECT_TRUE(adopted->actionsMoved());
  EXPECT_FALSE(classes.find(kept.data.get())->actionsMoved());
  EXPECT_THAT(classes.adopt(same), IsEmpty());
}

TEST(ProgrammedClassesTest, AdoptNewerRulesOfTheSameClass) {
  ProgrammedClass const programmed = classOf("c");
  ProgrammedClass newer = programmed;
  newer.rules = Kor::make<ClassRules>(ClassRules::emptySources(ClassMapMatchOption::ipv4));
  ProgrammedClasses classes;
  classes.add(programmed);
  ProgrammedClasses same;
  same.add(newer);
  EXPECT_THAT(classes.adopt(same), IsEmpty());
  EXPECT_EQ(classes.find(programmed.data.get())->rules, newer.rules);
}

TEST(OptionStateTest, IsDueForRulesClassesOrInterfaces) {
  OptionState state;
  EXPECT_FALSE(state.due());
  state.rulesDue = true;
  EXPECT_TRUE(state.due());
  state.rulesDue = false;
  state.classesDue = {Kor::Name("c")};
  EXPECT_TRUE(state.due());
  state.classesDue.clear();
  state.intfsDue = true;
  EXPECT_TRUE(state.due());
}

TEST(OptionStateTest, ForgetsWhatWasProgrammedButNotWhatFailed) {
  OptionState state;
  state.classes.add(classOf("c"));
  state.recreate = true;
  state.intfsUnpublished = false;
  state.failureIs(failure("full"));
  state.forget();
  EXPECT_TRUE(state.classes.empty());
  EXPECT_FALSE(state.recreate);
  EXPECT_TRUE(state.intfsUnpublished);
  EXPECT_EQ(state.failure, failure("full"));
}

TEST(OptionStateTest, ShowsTheLastFailureButThatOfAnUpdateUntilACommit) {
  OptionState state;
  state.leftover = true;
  state.failureIs(failure("first"));
  EXPECT_FALSE(state.leftover);
  state.failureIs(failure("second"));
  EXPECT_EQ(state.failure, failure("second"));
  state.updateFailed = true;
  state.failureIs(failure("third"));
  EXPECT_EQ(state.failure, failure("second"));
  state.failureDel();
  EXPECT_FALSE(state.failure);
  state.failureIs(failure("fourth"));
  EXPECT_EQ(state.failure, failure("fourth"));
}

TEST(OptionStateTest, ARefusalIsNotTriedAgainByItself) {
  OptionState state;
  state.failureIs(failure("full"));
  state.retry = true;
  state.updateFailed = true;
  state.refusedIs(failure("too many"));
  EXPECT_EQ(state.failure, failure("too many"));
  EXPECT_FALSE(state.retry);
  EXPECT_FALSE(state.updateFailed);
}

TEST(OptionStateTest, WhatIsNoLongerWantedKeepsTheFailureOfItsTeardownAlone) {
  OptionState state;
  state.failureIs(failure("full"));
  state.refusedIs({});
  EXPECT_FALSE(state.failure);

  state.failureIs(failure("stuck"));
  state.leftover = true;
  state.retry = true;
  state.refusedIs({});
  EXPECT_EQ(state.failure, failure("stuck"));
  EXPECT_FALSE(state.retry);
  state.refusedIs(failure("too many"));
  EXPECT_EQ(state.failure, failure("too many"));
  EXPECT_FALSE(state.leftover);
}

}  // namespace
}  // namespace policymap
