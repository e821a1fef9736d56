// SPDX-License-Identifier: Apache-2.0

// The slot of each virtual function in the table of its class. Binary consumers depend on these
// numbers.

#include "support/VirtualSlot.h"

#include <Kor/Entity.h>
#include <Kor/PtrInterface.h>

#include <gtest/gtest.h>

namespace {

using TestSupport::virtualSlotOf;

TEST(PtrInterface, ItsVirtualFunctionsStandInTheSlotsZeroToFive) {
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::hasNotificationActiveIs), 0);
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::korAuditErrors), 1);
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::auditErrors), 2);
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::isNondestructingIs), 3);
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::zeroReferencesIs), 4);
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::fwkType), 5);
}

TEST(PtrInterface, TheDestructorTakesTwoSlotsSoASubclassBeginsAtEight) {
  EXPECT_EQ(virtualSlotOf(&Kor::Entity::attributeString), 8);
  EXPECT_EQ(virtualSlotOf(&Kor::Entity::fwkType), 5);
}

TEST(PtrInterface, CountingAndMarkingAreNotVirtual) {
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::hasNotificationActive), -1);
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::isNondestructing), -1);
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::korMarkedForDeletion), -1);
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::korMarkedForDeletionIs), -1);
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::newRef), -1);
  EXPECT_EQ(virtualSlotOf(&Kor::PtrInterface::deleteRef), -1);
}

}  // namespace
