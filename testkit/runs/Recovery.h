// SPDX-License-Identifier: Apache-2.0
#pragma once

// Recovery: whether a Lab whose faults are gone has become what a new lab with the same
// configuration is. Irregularity: something in a run that should not be.

#include "testkit/Export.h"
#include "testkit/Lab.h"
#include "testkit/Snapshot.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

struct Irregularity {
  enum class Kind : std::uint8_t {
    record,        // other records than in a new lab, or not committed
    status,        // other statuses than in a new lab, or not what the records have
    pending,       // something is still to be done long after the last fault
    notification,  // a status was announced without a change
    finding,       // see Finding
    assertion,     // an assertion failed
    exception,     // something that was done threw
    unmet,         // no call was hit by the fault of the case
    other,         // what was looked at beside all this, see SweepOptions::look
  };

  Kind kind = Kind::record;
  std::string text;

  bool operator==(Irregularity const&) const = default;
};
// "record".
POLICYMAPTESTKIT_API std::string_view nameOf(Irregularity::Kind kind);
// None if there is no kind of this name.
POLICYMAPTESTKIT_API std::optional<Irregularity::Kind> irregularityKindOf(std::string_view name);

// What a lab is compared with.
struct Reference {
  // Those that are not empty, without their history.
  Snapshot records;
  // A line per status of a policy-map with an option, and of a class.
  std::vector<std::string> statuses;
};

[[nodiscard]] POLICYMAPTESTKIT_API Reference referenceOf(Lab const& lab);
// Of a new lab that loads these settings at once, synchronously and without faults.
[[nodiscard]] POLICYMAPTESTKIT_API Reference referenceOf(Text::Settings const& settings,
                                                         LabOptions const& options);

// What of a lab, in which nothing fails any more, is not as in the reference, or is not committed,
// or is pending; each status that contradicts the records; and each interface at which the rules of
// a record cannot be, by its configuration.
[[nodiscard]] POLICYMAPTESTKIT_API std::vector<Irregularity> compare(Lab& lab,
                                                                     Reference const& reference);
// How long the faults of a check last before they are ended, which is some tries.
inline constexpr std::chrono::seconds whileFaultsLast{5};
// Ends all faults of a lab with these options, and lets time pass and results arrive until all is
// repaired.
POLICYMAPTESTKIT_API void recover(Lab& lab, LabOptions const& options);

// What must not be even while something fails: a policy that is programmed by its status and not
// created by its record; time or interfaces of what is not programmed; a failure that is not that
// of the call at which a fault was injected.
[[nodiscard]] POLICYMAPTESTKIT_API std::vector<Irregularity> checkStatuses(Lab const& lab);

}  // namespace PolicyMapTestKit
