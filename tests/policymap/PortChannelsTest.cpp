// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/PortChannels.h>

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::PortChannels;
using testing::ElementsAre;
using testing::IsEmpty;

Vorel::IntfId const none;
Vorel::IntfId const member(Kor::String8("Ethernet1"));
Vorel::IntfId const other(Kor::String8("Ethernet2"));
Vorel::IntfId const first(Kor::String8("PortChannel1"));
Vorel::IntfId const second(Kor::String8("PortChannel2"));

TEST(PortChannels, HaveNoMembersAtFirst) {
  PortChannels const channels;
  EXPECT_THAT(channels.members(), IsEmpty());
  EXPECT_THAT(channels.concernedBy(member), ElementsAre(member));
}

TEST(PortChannels, AMemberThatJoinsConcernsItsChannelAndItself) {
  PortChannels channels;
  EXPECT_THAT(channels.set(member, first), ElementsAre(first, member));
  EXPECT_THAT(channels.concernedBy(member), ElementsAre(first, member));
  EXPECT_THAT(channels.members(), ElementsAre(member));
}

TEST(PortChannels, AMemberThatMovesConcernsBothChannelsAndItself) {
  PortChannels channels;
  channels.set(member, first);
  EXPECT_THAT(channels.set(member, second), ElementsAre(first, second, member));
  EXPECT_THAT(channels.concernedBy(member), ElementsAre(second, member));
}

TEST(PortChannels, AMemberThatLeavesConcernsItsFormerChannelAndItself) {
  PortChannels channels;
  channels.set(member, first);
  channels.set(other, first);
  EXPECT_THAT(channels.set(member, none), ElementsAre(first, member));
  EXPECT_THAT(channels.concernedBy(member), ElementsAre(member));
  EXPECT_THAT(channels.members(), ElementsAre(other)) << "what has left is forgotten";
}

TEST(PortChannels, AMemberThatStaysConcernsItsChannelOnce) {
  PortChannels channels;
  channels.set(member, first);
  EXPECT_THAT(channels.set(member, first), ElementsAre(first, member));
}

TEST(PortChannels, AnInterfaceThatWasNoMemberConcernsItselfAlone) {
  PortChannels channels;
  EXPECT_THAT(channels.set(member, none), ElementsAre(member));
  EXPECT_THAT(channels.members(), IsEmpty());
}

TEST(PortChannels, ConcernOneStepOnly) {
  PortChannels channels;
  channels.set(member, first);
  channels.set(first, second);
  EXPECT_THAT(channels.concernedBy(member), ElementsAre(first, member));
}

TEST(PortChannels, MayBeMembersOfThemselvesOrOfEachOther) {
  PortChannels channels;
  channels.set(first, first);
  EXPECT_THAT(channels.concernedBy(first), ElementsAre(first, first));
  channels.set(first, second);
  channels.set(second, first);
  EXPECT_THAT(channels.concernedBy(first), ElementsAre(second, first));
  EXPECT_THAT(channels.concernedBy(second), ElementsAre(first, second));
}

}  // namespace
}  // namespace policymap
