// SPDX-License-Identifier: Apache-2.0
#pragma once

// LineParser: parses policy text line by line into statements. Internal; see PolicyTextParser.h.
//
// LineParser.cpp has the lines themselves: which mode a line belongs to, and which command it is.
// SkippedBlocks.cpp has what becomes of a line that is not understood. The commands are in
// AccessListLines.cpp, ClassMapLines.cpp, PolicyMapLines.cpp and InterfaceLines.cpp.

#include "testkit/text/Lexer.h"
#include "testkit/text/PolicyTextParser.h"
#include "testkit/text/RuleParser.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace PolicyMapTestKit::Text {

constexpr std::uint64_t highestWord = std::numeric_limits<std::uint32_t>::max();

inline Name nameOf(Token const& token) {
  return {std::string(token.text), token.column};
}

// Later statements of the mode carry the name without a column.
inline Name withoutColumn(Name name) {
  name.column = 0;
  return name;
}

// True if the token is one of the words.
template <std::size_t Size>
bool contains(std::array<std::string_view, Size> const& words, Token const& token) {
  return std::any_of(words.begin(), words.end(),
                     [&token](std::string_view word) { return token.is(word); });
}

enum class Mode : std::uint8_t {
  top,
  accessList,
  objectGroup,
  classMap,
  policyMap,
  policyClass,
  interface,
  zone,
  zonePair,
};

// How the members of the open object-group are written.
struct GroupSyntax {
  GroupKind kind = GroupKind::addresses;
  Family family = Family::ip4;
  // Two addresses are one with wildcard bits, and not with a subnet mask.
  bool wildcards = false;
  // Of all services of the group; none if each names its own.
  std::vector<std::uint8_t> protocols = {};
};

class LineParser {
 public:
  // `actions` must outlive this object.
  LineParser(SourceText const& source, Reading reading, ActionMapping const& actions)
      : reader_(source),
        actions_(actions),
        lenient_(reading != Reading::strict),
        widening_(reading == Reading::widening) {}

  PolicyText parse();

 private:
  using Handler = void (LineParser::*)(Lexer& lexer, bool remove);

  // A command, identified by its first one or two keywords. They are consumed before the handler is
  // called.
  struct Command {
    std::string_view first;
    std::string_view second;
    Handler handler;
    bool removable = true;
  };

  // The commands of a mode, and their description for messages.
  struct ModeCommands {
    Command const* begin;
    Command const* end;
    std::string_view expected;
  };

  static ModeCommands topCommands();
  static ModeCommands commandsOf(Mode mode);

  void parseLine();
  // True for the first words of lines about policies, wherever they are.
  static bool beginsPolicies(Token const& first);
  bool skippedBefore(Token const& first);
  bool attachesElsewhere(Token const& first, std::string const& place);
  std::string skippedPlace() const;
  void parseCommand(Lexer& lexer, Token const& first);
  static SyntaxFailure unknownCommand(Lexer& lexer, ModeCommands const& commands, bool remove);
  static Command const* find(ModeCommands const& commands, Lexer const& lexer, bool remove);
  void run(Command const& command, Lexer& lexer, bool remove);
  void refuse(Token const& first, SyntaxFailure const& failure);
  void skip(Token const& first, SyntaxFailure const& failure);
  // True for the first word of an action of a class that is no number.
  static bool isOtherAction(Token const& word);
  void openText(Token const& first);
  void openBanner(Lexer& lexer);
  bool endsBanner(std::string_view line) const;

  void ipAccessList(Lexer& lexer, bool remove);
  void ip6AccessList(Lexer& lexer, bool remove) { accessList(lexer, Family::ip6, remove); }
  void macAccessList(Lexer& lexer, bool remove);
  void numberedAccessList(Lexer& lexer, bool remove);
  void classMap(Lexer& lexer, bool remove);
  void policyMap(Lexer& lexer, bool remove);
  void interface(Lexer& lexer, bool remove);
  void ipRouting(Lexer& lexer, bool remove) { routing(lexer, Family::ip4, remove); }
  void ip6Routing(Lexer& lexer, bool remove) { routing(lexer, Family::ip6, remove); }
  void hostname(Lexer& lexer, bool remove);
  void objectGroup(Lexer& lexer, bool remove);
  void zone(Lexer& lexer, bool remove);
  void zonePair(Lexer& lexer, bool remove);
  void portChannel(Lexer& lexer, bool remove);
  void exit(Lexer& lexer, bool remove);
  void end(Lexer& lexer, bool remove);

  void match(Lexer& lexer, bool remove);
  void policyClass(Lexer& lexer, bool remove);
  void setAction(Lexer& lexer, bool remove);
  std::optional<std::uint64_t> takeMarking(Lexer& lexer, std::uint64_t (*take)(Lexer& lexer),
                                           bool remove) const;
  void assignQueue(Lexer& lexer, bool remove);
  void police(Lexer& lexer, bool remove);
  void shape(Lexer& lexer, bool remove);
  void bandwidth(Lexer& lexer, bool remove);
  void classAction(Lexer& lexer, bool remove);
  void ipAddress(Lexer& lexer, bool remove) { address(lexer, Family::ip4, remove); }
  void ip6Address(Lexer& lexer, bool remove) { address(lexer, Family::ip6, remove); }
  void switchport(Lexer& lexer, bool remove);
  void shutdown(Lexer& lexer, bool remove);
  void channelGroup(Lexer& lexer, bool remove);
  void servicePolicy(Lexer& lexer, bool remove);
  void zonePairPolicy(Lexer& lexer, bool remove);
  void zoneMember(Lexer& lexer, bool remove);
  void addPort(Lexer& lexer, bool remove);
  void ipAccessGroup(Lexer& lexer, bool remove) { accessGroup(lexer, Family::ip4, remove); }
  void ip6AccessGroup(Lexer& lexer, bool remove) { accessGroup(lexer, Family::ip6, remove); }
  void macAccessGroup(Lexer& lexer, bool remove) { accessGroup(lexer, Family::mac, remove); }
  void portAccessGroup(Lexer& lexer, bool remove) { ofPort(lexer, Family::ip4, remove); }
  void port6AccessGroup(Lexer& lexer, bool remove) { ofPort(lexer, Family::ip6, remove); }
  void macPortAccessGroup(Lexer& lexer, bool remove) { ofPort(lexer, Family::mac, remove); }
  void unnumbered(Lexer& lexer, bool remove);
  void ip6Enable(Lexer& lexer, bool remove);
  void ignored(Lexer& lexer, bool remove);

  void accessList(Lexer& lexer, Family family, bool remove, RuleKind kind);
  void accessList(Lexer& lexer, Family family, bool remove) {
    accessList(lexer, family, remove, extendedRule(family));
  }
  bool accessListEntry(Lexer& lexer, bool remove);
  std::optional<std::uint32_t> takeTrailingSequence(Lexer& lexer) const;
  bool skipsEntry(Lexer lexer, bool isIndented);
  bool skipsNumberedEntry();
  void keepAttachment(Token const& first, std::string const& place);
  bool groupMember(Lexer& lexer, bool remove);
  void accessGroup(Lexer& lexer, Family family, bool remove, bool ofPort = false);
  void ofPort(Lexer& lexer, Family family, bool remove);
  // The kind of action that the current line becomes; 0: none.
  std::uint8_t mapped(std::uint8_t usualKind) const;
  void emitAction(std::uint8_t kind, std::uint64_t value, bool remove);
  void emitOtherAction(std::string const& text, bool remove);
  void emitRate(std::optional<std::uint64_t> rate, Lexer& lexer, bool remove);
  void remark(Lexer& lexer, std::optional<std::uint32_t> sequence, bool remove);
  void removeSequence(Lexer& lexer, std::uint32_t sequence);
  void matchFamily(Lexer& lexer, Family family, bool remove);
  void matchList(Lexer& lexer, Family family, bool remove);
  void address(Lexer& lexer, Family family, bool remove);
  void routing(Lexer& lexer, Family family, bool remove);
  std::string takeType(Lexer& lexer) const;
  // Class-maps and policy-maps of types that are not about headers have names of their own.
  static Name nameOfType(Token const& name, std::string const& type);
  static std::uint32_t takePriority(Lexer& lexer);

  // In the mode of several interfaces: a statement for each.
  void emit(StatementBody body);
  void isAbout(Token const& word) { subject_ = nameOf(word); }
  // The following lines belong to the mode that the current line opens.
  void enter(Mode mode) {
    mode_ = mode;
    modeLine_ = position_.line;
  }
  // The line of the command that opened the mode.
  std::uint32_t block() const {
    return mode_ == Mode::top ? 0 : mode_ == Mode::policyClass ? classLine_ : modeLine_;
  }

  LineReader reader_;
  ActionMapping const& actions_;
  bool lenient_;
  bool widening_;
  PolicyText result_;

  // The first word of the current line, and the one that messages quote.
  SourcePosition position_;
  Name subject_;
  Mode mode_ = Mode::top;
  // The lines that opened the mode and, in a policy-map, the class.
  std::uint32_t modeLine_ = 0;
  std::uint32_t classLine_ = 0;
  // Column of the command that opened the mode, and whether any line of the mode is indented more
  // deeply.
  std::uint32_t modeColumn_ = 1;
  bool bodyIsIndented_ = false;
  // The objects that the lines of the mode belong to. Only those of the current mode are valid.
  AccessListId list_;
  RuleKind ruleKind_ = RuleKind::ip4;
  GroupSyntax group_;
  Name outer_;                    // object-group, class-map, policy-map, interface or zone-pair
  std::vector<Name> interfaces_;  // that the mode is about; outer_ is the last
  Name className_;
  std::string type_;  // of the class-map or policy-map
  // The last line was one of a `police` block, which `exit` leaves before the class.
  bool inPolice_ = false;
  std::string command_;  // its first word, as in its table
  // The list that one-line commands filled last without another command in between, and its line.
  std::string numbered_;
  std::uint32_t numberedLine_ = 0;

  // Column and kind of the skipped line whose block may still continue; column 0 for none.
  std::uint32_t skippedColumn_ = 0;
  std::string skippedKind_;
  // Its text: what is attached below is explained only. Empty for none.
  std::string_view skippedHeader_;
  bool skippedInInterface_ = false;
  // The line that was skipped is understood, but rules cannot say it.
  bool knownToBeInexpressible_ = false;
  // The last line of the current banner; none outside banners.
  std::optional<std::string> bannerEnd_;
  SourcePosition bannerPosition_;
};

}  // namespace PolicyMapTestKit::Text
