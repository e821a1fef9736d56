// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/String.h"
#include "PolicyMapExport.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

namespace PolicyMap {

// What a machine may depend on by name, whether or not it exists.
enum class DependencyKind : std::uint8_t { ipAcl, ip6Acl, macAcl, classMap };

// Maps a name to the machines that depend on it, so that a change costs what depends on it.
class POLICYMAP_API DependencyIndex {
 public:
  class Dependent;

  // Runs the reactions of those that depend on that name, in the order in which they were created.
  void changed(DependencyKind kind, Kor::Name const& name) const;

 private:
  struct NameHash {
    std::size_t operator()(Kor::Name const& name) const { return name.hash(); }
  };
  using Dependents = std::map<std::uint64_t, Dependent*>;  // by serial number

  std::array<std::unordered_map<Kor::Name, Dependents, NameHash>, 4> byName_;
};

// One that depends. Its destruction removes its entries.
class POLICYMAP_API DependencyIndex::Dependent {
 public:
  using Reaction = std::function<void(DependencyKind, Kor::Name const&)>;
  using Names = std::vector<std::pair<DependencyKind, Kor::Name>>;

  explicit Dependent(Reaction reaction);
  Dependent(Dependent const&) = delete;
  Dependent& operator=(Dependent const&) = delete;
  ~Dependent();

  // Registers with `index` (null: none). `index` must outlive this registration.
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

}  // namespace PolicyMap
