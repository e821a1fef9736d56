// SPDX-License-Identifier: Apache-2.0
#include "testkit/Assertions.h"

#include "testkit/Journal.h"

#include <sstream>

namespace PolicyMapTestKit {

namespace {

thread_local Journal const* journalInUse = nullptr;

std::string headOf(Kor::AssertionFailure const& failure) {
  std::ostringstream text;
  text << failure.source << ": assertion \"" << failure.text << "\" failed at " << failure.file
       << ':' << failure.line;
  return text.str();
}

void writeEnd(std::ostream& out, Journal const& journal) {
  constexpr std::uint64_t shown = 10;
  if (JournalEntry const* const call = journal.openCall()) {
    out << "\nin the call " << call->describe();
    if (!call->text.empty()) {
      out << ", after " << call->text;
    }
  }
  if (!journal.empty()) {
    std::uint64_t const last = journal.next() - 1;
    out << "\nthe journal ends with";
    for (JournalEntry const& entry : journal.since(last > shown ? last - shown + 1 : 1)) {
      out << '\n' << entry;
    }
  }
}

}  // namespace

Journal const* usedJournal() {
  return journalInUse;
}

void usedJournalIs(Journal const* journal) {
  journalInUse = journal;
}

std::string describe(Kor::AssertionFailure const& failure) {
  std::ostringstream text;
  text << headOf(failure);
  if (journalInUse != nullptr) {
    writeEnd(text, *journalInUse);
  }
  return text.str();
}

AssertionFailed::AssertionFailed(Kor::AssertionFailure const& failure)
    : std::logic_error(headOf(failure)) {}

AssertionFailed::~AssertionFailed() = default;

}  // namespace PolicyMapTestKit
