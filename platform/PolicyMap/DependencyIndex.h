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

// The kinds of objects that a machine may depend on by name, whether or not they exist.
enum class DependencyKind : std::uint8_t { ipAcl, ip6Acl, macAcl, classMap };

// Maps a name to the machines that depend on it, so that a change costs only what depends on it.
class POLICYMAP_API DependencyIndex {
 public:
  class Dependent;

  // Runs the reactions of the dependents of that name, in the order of their creation.
  void changed(DependencyKind kind, Kor::Name const& name) const;

 private:
  struct NameHash {
    std::size_t operator()(Kor::Name const& name) const { return name.hash(); }
  };
  using Dependents = std::map<std::uint64_t, Dependent*>;  // by serial number

  std::array<std::unordered_map<Kor::Name, Dependents, NameHash>, 4> byName_;
};

// A registration of one dependent. Its destruction removes it from the index.
class POLICYMAP_API DependencyIndex::Dependent {
 public:
  using Reaction = std::function<void(DependencyKind, Kor::Name const&)>;
  using Names = std::vector<std::pair<DependencyKind, Kor::Name>>;

  explicit Dependent(Reaction reaction);
  Dependent(Dependent const&) = delete;
  Dependent& operator=(Dependent const&) = delete;
  ~Dependent();

  // The index to register with, which must outlive this registration; null for none. Drops the
  // current names.
  void indexIs(DependencyIndex* index);
  // Replaces the names it depends on.
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
