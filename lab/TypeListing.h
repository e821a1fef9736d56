// SPDX-License-Identifier: Apache-2.0
#pragma once

// Lists the registered types and their attributes, as tables, JSON and reference pages.

#include "lab/Console.h"
#include "lab/Kit.h"
#include "testkit/text/Json.h"

#include <Kor/KorAttr.h>
#include <Kor/KorType.h>

#include <map>
#include <string>
#include <vector>

namespace lab {

// "data", "read-only", "collection", "owned collection" or "function".
std::string kindOf(Kor::KorAttr const& attr);
// The type of its value: "bool", "Vorel::IntfId → bool", "(key: PolicyMap::AclRuleKey) → void".
std::string shapeOf(Kor::KorAttr const& attr);
// "entity", "value" or "object".
std::string kindOf(Kor::KorType const& type);

// The type with that qualified name, or all with that short name. Raises RangeException.
std::vector<Kor::KorType const*> typesNamed(std::string const& name);

void printTypes(std::vector<Kor::KorType const*> const& types, Console const& console);
void printType(Kor::KorType const& type, Console const& console);
Json typesAsJson(std::vector<Kor::KorType const*> const& types);
// The reference in Markdown: the text of each page by file name.
std::map<std::string, std::string> referencePages(std::vector<Kor::KorType const*> const& types);

}  // namespace lab
