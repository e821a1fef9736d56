// SPDX-License-Identifier: Apache-2.0
// Carries statements out on settings.
#pragma once

#include "lab/PolicyTextParser.h"
#include "lab/Settings.h"

namespace lab {

/// Carries out the statements of `text` in their order. A strict reading raises InputError at the
/// first one that cannot be carried out, and leaves `settings` somewhere in between: pass a copy. A
/// lenient one passes over it whole and counts it among the skipped lines of `text`.
///
/// What cannot be carried out: an interface name that is none; removing what is not there; a place
/// before a class that is not there; an entry behind the highest number; a list that is standard
/// and extended; members that cannot be members. A name that nothing stands for yet is no fault
/// where it is referred to: it may come later.
void editSettings(Settings& settings, PolicyText& text, Reading reading);

}  // namespace lab
