// SPDX-License-Identifier: Apache-2.0
#pragma once

// LabByName: a Lab as an object that is registered by name, as "PolicyMapTestKit::Lab". Records,
// the journal and explanations are lists of lines, as Record, JournalEntry and Explanations print
// them.

#include "testkit/Export.h"
#include "testkit/Lab.h"

#include <Kor/PtrInterface.h>
#include <Kor/String.h>

#include <vector>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API LabByName final : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<LabByName>;
  using Lines = std::vector<Kor::String>;

  LabByName(bool updateAction, bool expandPortChannels, bool async);
  ~LabByName() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  void load(Kor::String const& policyText) { lab_.load(policyText.view()); }
  void settle() { lab_.settle(); }
  // In seconds.
  void advance(double time) { lab_.advance(std::chrono::duration<double>(time)); }
  void inject(Kor::String const& fault, Kor::String const& text);
  void clearFaults() { lab_.clearFaults(); }
  void trigger() { lab_.trigger(); }
  [[nodiscard]] double now() const { return lab_.now(); }

  // Throw LookupError if there is no such record.
  [[nodiscard]] Kor::String record(Kor::String const& policyMap,
                                   Kor::String const& direction) const;
  [[nodiscard]] Lines rules(Kor::String const& policyMap, Kor::String const& direction) const;
  [[nodiscard]] PolicyMap::PolicyFailure failure(Kor::String const& policyMap,
                                                 Kor::String const& direction) const;
  [[nodiscard]] Lines explain() const;
  [[nodiscard]] Lines journal() const;

  [[nodiscard]] Kor::Ptr<PolicyMapTest::AclHelper> helper() const { return lab_.helper(); }
  [[nodiscard]] PolicyMapTest::TestServicePolicySm::Ptr machine() const { return lab_.machine(); }
  [[nodiscard]] Acl::Config::Ptr acls() const { return lab_.acls(); }
  [[nodiscard]] PolicyMap::ClassMapTypeConfig::Ptr classMaps() const { return lab_.classMaps(); }
  [[nodiscard]] PolicyMap::PolicyMapTypeConfig::Ptr policyMaps() const { return lab_.policyMaps(); }
  [[nodiscard]] PolicyMap::PolicyMapTypeStatus::Ptr status() const { return lab_.status(); }

  [[nodiscard]] Lab& lab() { return lab_; }

 private:
  Lab lab_;
};

}  // namespace PolicyMapTestKit
