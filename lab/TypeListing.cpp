// SPDX-License-Identifier: Apache-2.0
#include "lab/TypeListing.h"

#include <Kor/ByName.h>
#include <Kor/FlagNames.h>

#include <iomanip>
#include <sstream>

namespace lab {

namespace {

using Kor::KorAttr;
using Kor::KorType;

std::string nameOf(KorType const* type) {
  return type == nullptr ? "" : std::string(type->name());
}

std::string hexadecimal(std::uint32_t word) {
  std::ostringstream text;
  text << "0x" << std::hex << word;
  return text.str();
}

template <class Texts>
std::string joined(Texts const& texts) {
  std::string line;
  for (auto const& text : texts) {
    line.append(line.empty() ? "" : ", ").append(text);
  }
  return line;
}

std::string explained(KorAttr const& attr) {
  std::string const flags = "[" + joined(Kor::flagNames(attr)) + "]";
  return attr.prose().empty() ? flags : std::string(attr.prose()) + " " + flags;
}

std::string listOf(std::vector<Kor::ArgumentSpec> const& args) {
  std::string text;
  for (Kor::ArgumentSpec const& arg : args) {
    text += (text.empty() ? "" : ", ") + arg.name.stdString() + ": " + arg.typeName.stdString();
  }
  return "(" + text + ")";
}

// Inherited attributes are listed with the base.
bool isOwn(KorType const& type, KorAttr const& attr) {
  return attr.owner() == &type;
}

std::string nameSpaceOf(KorType const& type) {
  std::string_view const name = type.name();
  auto const colons = name.rfind("::");
  // Types without a namespace are built-in, and are listed with the framework.
  return std::string(colons == std::string_view::npos ? "Kor" : name.substr(0, colons));
}

std::string pageOf(std::string const& nameSpace) {
  std::string file;
  for (char const c : nameSpace) {
    if (c != ':') {
      file += c;
    } else if (!file.empty() && file.back() != '.') {
      file += '.';
    }
  }
  return file + ".md";
}

Json argsAsJson(std::vector<Kor::ArgumentSpec> const& args) {
  Json::Array list;
  for (Kor::ArgumentSpec const& arg : args) {
    list.emplace_back(Json::Object{{"name", arg.name.view()}, {"type", arg.typeName.view()}});
  }
  return list;
}

template <class Texts>
Json textsAsJson(Texts const& texts) {
  Json::Array list;
  for (std::string_view const text : texts) {
    list.emplace_back(text);
  }
  return list;
}

Json attrAsJson(KorType const& type, KorAttr const& attr) {
  return Json::Object{{"name", attr.name().view()},
                      {"id", attr.id()},
                      {"kind", kindOf(attr)},
                      {"type", nameOf(attr.valueType())},
                      {"key", nameOf(attr.keyType())},
                      {"args", argsAsJson(attr.args())},
                      {"flags", Json::Array{attr.flags().first(), attr.flags().second()}},
                      {"introspection", attr.introspectionFlags().value()},
                      {"flagNames", textsAsJson(Kor::flagNames(attr))},
                      {"prose", attr.prose()},
                      {"inherited", !isOwn(type, attr)}};
}

// The lines under the row of an attribute.
std::vector<std::string> below(std::string const& text, TextStyle const& style) {
  std::size_t const indentation = 7;
  std::vector<std::string> lines = wrapped(text, style.width - indentation);
  for (std::string& line : lines) {
    line.insert(0, indentation, ' ');
  }
  return lines;
}

std::string described(KorType const& type) {
  std::string text = kindOf(type);
  if (type.base() != nullptr) {
    text += ", base " + nameOf(type.base());
  }
  return text;
}

// A bar would end the cell of a Markdown table.
std::string row(std::vector<std::string> const& cells) {
  std::string line = "|";
  for (std::string const& cell : cells) {
    line += " " + cell + " |";
  }
  return line + "\n";
}

std::string code(std::string const& text) {
  return text.empty() ? "" : "`" + text + "`";
}

std::string section(KorType const& type) {
  std::ostringstream text;
  text << "\n## " << type.name() << "\n\n" << described(type) << "\n";
  if (type.operations().construct != nullptr) {
    text << "\nBuilt by name with " << code(listOf(type.constructorArgs())) << ".\n";
  }
  if (!type.enumNames().empty()) {
    text << "\nValues from 0: " << code(joined(type.enumNames())) << ".\n";
  }
  std::string rows;
  for (KorAttr::Ptr const& attr : type.attrs()) {
    if (isOwn(type, *attr)) {
      rows +=
          row({std::to_string(attr->id()), code(attr->name().stdString()), kindOf(*attr),
               code(shapeOf(*attr)), std::string(attr->prose()), joined(Kor::flagNames(*attr))});
    }
  }
  if (!rows.empty()) {
    text << "\n"
         << row({"Id", "Attribute", "Kind", "Type", "Meaning", "Flags"})
         << row({"---", "---", "---", "---", "---", "---"}) << rows;
  }
  return text.str();
}

// What the words in the column of flags are as numbers.
std::string flagLegend() {
  std::string text = "\n## Flags\n\nThe first word names the two flag words of an attribute; the "
                     "others are its introspection flags.\n\n| Name | Number |\n| --- | --- |\n";
  for (Kor::FlagPairName const& pair : Kor::flagPairNames()) {
    text += row({std::string(pair.name),
                 hexadecimal(pair.flags.first()) + " " + hexadecimal(pair.flags.second())});
  }
  text += "\n| Introspection flag | Number |\n| --- | --- |\n";
  for (Kor::IntrospectionFlagName const& named : Kor::introspectionFlagNames()) {
    text += row({std::string(named.name), std::to_string(named.flag.value())});
  }
  return text;
}

}  // namespace

std::string kindOf(KorAttr const& attr) {
  if (attr.isFunction()) {
    return "function";
  }
  if (attr.isCollection()) {
    return attr.isOwnedCollection() ? "owned collection" : "collection";
  }
  return attr.isWritable() ? "data" : "read-only";
}

std::string shapeOf(KorAttr const& attr) {
  std::string const value = nameOf(attr.valueType());
  if (attr.isFunction()) {
    return listOf(attr.args()) + " → " + value;
  }
  return attr.isCollection() ? nameOf(attr.keyType()) + " → " + value : value;
}

std::string kindOf(KorType const& type) {
  return type.isEntity() ? "entity" : type.isValue() ? "value" : "object";
}

std::vector<Kor::KorType const*> typesNamed(std::string const& name) {
  std::vector<Kor::KorType const*> found;
  for (Kor::KorType const* const type : Kor::KorType::all()) {
    if (type->name() == name || type->shortName() == name) {
      found.push_back(type);
    }
  }
  if (found.empty()) {
    found.push_back(&Kor::typeNamed(name));  // raises the exception with suggestions
  }
  return found;
}

void printTypes(std::vector<KorType const*> const& types, Console const& console) {
  Table table({{"type"}, {"kind"}, {"attributes", Table::Align::right}, {"base"}}, 0);
  for (KorType const* const type : types) {
    table.add(
        {nameOf(type), kindOf(*type), std::to_string(type->attrs().size()), nameOf(type->base())});
  }
  table.print(console.out, console.style);
}

void printType(KorType const& type, Console const& console) {
  console.out << tinted(console.style, Tint::heading, type.name()) << " (" << described(type)
              << ")\n";
  if (type.operations().construct != nullptr) {
    printWrapped(console.out, console.style, "  built by name with ",
                 listOf(type.constructorArgs()));
  }
  if (!type.enumNames().empty()) {
    printWrapped(console.out, console.style, "  values from 0: ", joined(type.enumNames()));
  }
  Table table({{"id", Table::Align::right}, {"attribute"}, {"kind"}, {"type"}}, 2);
  for (KorAttr::Ptr const& attr : type.attrs()) {
    table.add({std::to_string(attr->id()), attr->name().stdString(), kindOf(*attr), shapeOf(*attr)},
              below(explained(*attr), console.style));
  }
  if (!type.attrs().empty()) {
    table.print(console.out, console.style);
  }
}

Json typesAsJson(std::vector<KorType const*> const& types) {
  Json::Array list;
  for (KorType const* const type : types) {
    Json::Array attributes;
    for (KorAttr::Ptr const& attr : type->attrs()) {
      attributes.push_back(attrAsJson(*type, *attr));
    }
    list.emplace_back(Json::Object{{"name", type->name()},
                                   {"kind", kindOf(*type)},
                                   {"base", nameOf(type->base())},
                                   {"level", type->level()},
                                   {"size", type->size()},
                                   {"constructible", type->operations().construct != nullptr},
                                   {"constructorArgs", argsAsJson(type->constructorArgs())},
                                   {"values", textsAsJson(type->enumNames())},
                                   {"attributes", std::move(attributes)}});
  }
  return Json::Object{{"types", std::move(list)}};
}

std::map<std::string, std::string> referencePages(std::vector<KorType const*> const& types) {
  std::map<std::string, std::string> pages;
  std::map<std::string, std::string> links;
  for (KorType const* const type : types) {
    std::string const nameSpace = nameSpaceOf(*type);
    std::string& page = pages[pageOf(nameSpace)];
    if (page.empty()) {
      page = "# " + nameSpace +
             "\n\nThe registered types of this namespace, with the attributes "
             "that each adds to those of its base or redefines.\n";
      links[nameSpace] = "";
    }
    page += section(*type);
    links[nameSpace] +=
        (links[nameSpace].empty() ? "" : ", ") + code(std::string(type->shortName()));
  }
  std::string index = "# Reference\n\nEvery registered type by namespace. Written by "
                      "`policymap-lab types --markdown "
                      "docs/reference`.\n\n| Namespace | Types |\n| --- | --- |\n";
  for (auto const& [nameSpace, names] : links) {
    index += row({"[" + nameSpace + "](" + pageOf(nameSpace) + ")", names});
  }
  pages["README.md"] = index + flagLegend();
  return pages;
}

}  // namespace lab
