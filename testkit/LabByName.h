// SPDX-License-Identifier: Apache-2.0
#pragma once

// LabByName: a Lab as an object that is registered by name, as "PolicyMapTestKit::Lab". Records,
// the journal and explanations are lines, as Record, JournalEntry and Explanations print them, or
// JSON, as `policymap-lab run --json` and writeJsonLines() print it.

#include "testkit/Export.h"
#include "testkit/Lab.h"

#include <Kor/Callable.h>
#include <Kor/PtrInterface.h>
#include <Kor/String.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace PolicyMapTestKit {

using TextLines = std::vector<Kor::String>;
POLICYMAPTESTKIT_API TextLines textLines(std::vector<std::string> const& lines);

// A fault plan of a lab, as "PolicyMapTestKit::FaultScope". It lasts until it is ended, until the
// object is destroyed, or until the end of the lab.
class POLICYMAPTESTKIT_API FaultScopeByName final : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<FaultScopeByName>;

  explicit FaultScopeByName(FaultScope scope) : scope_(std::move(scope)) {}
  ~FaultScopeByName() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // JSON; see RecordJson.h.
  [[nodiscard]] TextLines faults() const;
  void end() { scope_.end(); }

 private:
  FaultScope scope_;
};

class POLICYMAPTESTKIT_API LabByName final : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<LabByName>;

  LabByName(bool updateAction, bool expandPortChannels, bool async);
  explicit LabByName(LabOptions const& options);
  // Refers to a lab until close(), which must come before the end of the lab.
  LabByName(Lab& lab, LabOptions const& options);
  ~LabByName() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Each of the following throws Kor::RangeException after close().

  void load(Kor::String const& policyText);
  // `reading` is "strict", "lenient" or "widening"; see Text::Reading.
  void loadFile(Kor::String const& path, Kor::String const& reading);
  // The content of a filter set; see FilterLayout.
  void loadRules(Kor::String const& rules, std::uint64_t classes, std::uint64_t interfaces);
  void detachAll() {
    during([](Lab& lab) { lab.detachAll(); });
  }
  void attachAll() {
    during([](Lab& lab) { lab.attachAll(); });
  }
  void settle() {
    during([](Lab& lab) { lab.settle(); });
  }
  // In seconds.
  void advance(double time) {
    during([time](Lab& lab) { lab.advance(std::chrono::duration<double>(time)); });
  }
  [[nodiscard]] double now() const { return lab().now(); }

  void inject(Kor::String const& fault, Kor::String const& text);
  void clearFaults() { lab().clearFaults(); }
  [[nodiscard]] FaultScopeByName::Ptr plan(Kor::String const& plan);
  void endPlans() { lab().endPlans(); }
  // JSON; see RecordJson.h.
  [[nodiscard]] TextLines faults() const;
  [[nodiscard]] TextLines findings() const;
  TextLines takeFindings();

  void trigger() {
    during([](Lab& lab) { lab.trigger(); });
  }
  // {"number":1,"since":0.0,"call":"commitPolicy(edge/input ipv4)","error":""}.
  [[nodiscard]] TextLines heldResults() const;
  void release(std::uint64_t number) {
    during([number](Lab& lab) { lab.release(number); });
  }
  void releaseAll() {
    during([](Lab& lab) { lab.releaseAll(); });
  }
  // From now on called in place of each operation of the helper, with its name, the list of its
  // arguments, and a function without arguments that carries it out and returns its result. Returns
  // the result, or null for that of the operation, which is carried out if it has not been. Null:
  // operations are called directly again.
  void aroundIs(Kor::Callable::Ptr const& around);

  // Throw LookupError if there is no such record.
  [[nodiscard]] Kor::String record(Kor::String const& policyMap,
                                   Kor::String const& direction) const;
  [[nodiscard]] TextLines rules(Kor::String const& policyMap, Kor::String const& direction) const;
  // A JSON object per record, with the member "rules".
  [[nodiscard]] TextLines records() const;
  [[nodiscard]] PolicyMap::PolicyFailure failure(Kor::String const& policyMap,
                                                 Kor::String const& direction) const;
  [[nodiscard]] TextLines explain() const;
  [[nodiscard]] TextLines explainPolicy(Kor::String const& policyMap) const;
  [[nodiscard]] TextLines journal() const;
  // As JSON, from this entry number on.
  [[nodiscard]] TextLines journalSince(std::uint64_t number) const;
  // Lets some time pass, ends all faults, lets time pass until all is repaired, and compares with a
  // new lab that loads the same configuration. Returns what is not as it should be.
  [[nodiscard]] TextLines check();

  [[nodiscard]] Kor::Ptr<PolicyMapTest::AclHelper> helper() const { return lab().helper(); }
  [[nodiscard]] PolicyMapTest::TestServicePolicySm::Ptr machine() const { return lab().machine(); }
  [[nodiscard]] Acl::Config::Ptr acls() const { return lab().acls(); }
  [[nodiscard]] PolicyMap::ClassMapTypeConfig::Ptr classMaps() const { return lab().classMaps(); }
  [[nodiscard]] PolicyMap::PolicyMapTypeConfig::Ptr policyMaps() const {
    return lab().policyMaps();
  }
  [[nodiscard]] PolicyMap::PolicyMapTypeStatus::Ptr status() const { return lab().status(); }

  // The end of the lab. Throws Kor::RangeException during a call that changes it, as from an
  // observer or an own helper.
  void close();

  // For libraries that ask a lab for more.
  [[nodiscard]] Lab& lab() const;

 private:
  // Calls `change`, during which the lab does not end.
  template <class Change>
  void during(Change const& change) {
    class Call {
     public:
      explicit Call(unsigned& calls) : calls_(++calls) {}
      Call(Call const&) = delete;
      Call& operator=(Call const&) = delete;
      ~Call() { --calls_; }

     private:
      unsigned& calls_;
    };
    Ptr const pinned = Kor::share(this);
    Lab& changed = lab();
    Call const call(calls_);
    change(changed);
  }

  LabOptions options_;
  std::unique_ptr<Lab> own_;
  Lab* lab_;
  unsigned calls_ = 0;  // that change the lab
};

}  // namespace PolicyMapTestKit
