// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/AclDiff.h"
#include "Acl/Config.h"
#include "Kor/PtrInterface.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/Export.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

namespace PolicyMap {

// What a machine may depend on by name, whether or not it exists.
enum class DependencyKind : std::uint8_t { ipAcl, ip6Acl, macAcl, classMap };

// Who depends on what: from a name to the machines that use it, so that a change costs what depends
// on it.
class POLICYMAP_API DependencyIndex {
 public:
  class Dependent;

  // Tells those who depend on that name, in the order in which they were built.
  void changed(DependencyKind kind, Kor::Name const& name) const;

 private:
  struct NameHash {
    std::size_t operator()(Kor::Name const& name) const { return name.hash(); }
  };
  using Dependents = std::map<std::uint64_t, Dependent*>;  // by serial number

  std::array<std::unordered_map<Kor::Name, Dependents, NameHash>, 4> byName_;
};

// One that depends. Its entries leave the index with it.
class POLICYMAP_API DependencyIndex::Dependent {
 public:
  using Reaction = std::function<void(DependencyKind, Kor::Name const&)>;
  using Names = std::vector<std::pair<DependencyKind, Kor::Name>>;

  explicit Dependent(Reaction reaction);
  Dependent(Dependent const&) = delete;
  Dependent& operator=(Dependent const&) = delete;
  ~Dependent();

  // The index to stand in, null for none. It must outlive this, or be left before.
  void indexIs(DependencyIndex* index);
  // Depends on exactly these names from now on.
  void namesAre(Names names);

 private:
  friend class DependencyIndex;

  void leave();

  Reaction reaction_;
  DependencyIndex* index_ = nullptr;
  std::uint64_t serial_;
  Names names_;
};

// What all machines below one service-policy machine share.
class POLICYMAP_API PolicyMapGlobalData : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<PolicyMapGlobalData>;
  using PtrConst = Kor::Ptr<PolicyMapGlobalData const>;

  // Any pointer may be null. Without class-maps no nested class-map is found, without a difference
  // tracker every rewrite is taken for a change.
  explicit PolicyMapGlobalData(Kor::Ptr<Acl::Config const> aclConfig,
                               Kor::Ptr<ClassMapTypeConfig const> classTypeConfig = nullptr,
                               Kor::Ptr<Acl::AclDiff> aclDiff = nullptr);
  ~PolicyMapGlobalData() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] Kor::Ptr<Acl::Config const> const& aclConfig() const { return aclConfig_; }
  [[nodiscard]] Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig() const {
    return classTypeConfig_;
  }
  [[nodiscard]] Kor::Ptr<Acl::AclDiff> const& aclDiff() const { return aclDiff_; }
  [[nodiscard]] DependencyIndex& dependencies() { return dependencies_; }

 private:
  Kor::Ptr<Acl::Config const> aclConfig_;
  Kor::Ptr<ClassMapTypeConfig const> classTypeConfig_;
  Kor::Ptr<Acl::AclDiff> aclDiff_;
  DependencyIndex dependencies_;
};

}  // namespace PolicyMap
