// SPDX-License-Identifier: Apache-2.0
#include "support/Instances.h"

#include <Kor/Entity.h>
#include <Kor/PtrInterface.h>

#include <gtest/gtest.h>

#include <functional>

namespace {

// Calls a function during its destruction.
class Mortal : public Kor::PtrInterface, public TestSupport::Instances<Mortal> {
 public:
  explicit Mortal(std::function<void(Mortal&)> lastWords = nullptr)
      : lastWords_(std::move(lastWords)) {}
  ~Mortal() override {
    if (lastWords_) {
      lastWords_(*this);
    }
  }

 private:
  std::function<void(Mortal&)> lastWords_;
};

TEST(PtrInterface, ANewObjectIsQuietUnmarkedAndLiving) {
  auto const object = Kor::make<Mortal>();
  EXPECT_FALSE(object->hasNotificationActive());
  EXPECT_FALSE(object->korMarkedForDeletion());
  EXPECT_TRUE(object->isNondestructing());
  EXPECT_EQ(object->korAuditErrors(), 0U);
  EXPECT_EQ(object->auditErrors(), 0U);
  EXPECT_EQ(object->fwkType(), Kor::PtrInterface::_fwkType());
}

TEST(PtrInterface, StateIsStoredAsItIsWritten) {
  auto const object = Kor::make<Mortal>();
  object->hasNotificationActiveIs(true);
  EXPECT_TRUE(object->hasNotificationActive());
  object->hasNotificationActiveIs(false);
  EXPECT_FALSE(object->hasNotificationActive());
  object->korMarkedForDeletionIs(true);
  EXPECT_TRUE(object->korMarkedForDeletion());
  object->korMarkedForDeletionIs(false);
  EXPECT_FALSE(object->korMarkedForDeletion());
}

TEST(PtrInterface, PointersTakenAndDroppedDuringDestructionDoNotDestroyAgain) {
  int destructions = 0;
  bool living = true;
  auto object = Kor::make<Mortal>([&](Mortal& dying) {
    ++destructions;
    living = dying.isNondestructing();
    for (int i = 0; i < 3; ++i) {
      Kor::Ptr<Mortal> const pointer = Kor::share(&dying);
      Kor::Ptr<Mortal> const other = pointer;
    }
  });
  object = nullptr;
  EXPECT_EQ(destructions, 1);
  EXPECT_FALSE(living) << "the object knows that it is dying";
  EXPECT_EQ(Mortal::alive(), 0);
}

class Pooled : public Mortal {
 public:
  void zeroReferencesIs() override { returned = true; }
  bool returned = false;
};

TEST(PtrInterface, ASubclassMayDecideWhatZeroReferencesMean) {
  auto* const raw = new Pooled();
  Kor::Ptr<Pooled> pointer(raw);
  pointer = nullptr;
  EXPECT_TRUE(raw->returned);
  EXPECT_EQ(Mortal::alive(), 1);
  delete raw;
}

class AuditFailure : public Kor::PtrInterface {
 public:
  [[nodiscard]] std::uint32_t korAuditErrors() const override { return 3; }
};

TEST(PtrInterface, TheAuditOfAnObjectIncludesTheFrameworksPart) {
  EXPECT_EQ(Kor::make<AuditFailure>()->auditErrors(), 3U);
}

}  // namespace
