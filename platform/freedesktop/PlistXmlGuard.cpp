#include "platform/freedesktop/PlistXmlGuard.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "platform/freedesktop/PlistGuard.h"
#include "platform/freedesktop/PlistXmlText.h"

namespace vendril {
namespace {

bool isLowerCase(char character) {
  return character >= 'a' && character <= 'z';
}

/// A place in a text, moving forward.
class Cursor {
 public:
  explicit Cursor(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }
  bool isAt(std::string_view token) const { return rest_.starts_with(token); }

  /// Moves past `token` if it comes next.
  bool skip(std::string_view token) {
    if (!isAt(token)) {
      return false;
    }
    rest_.remove_prefix(token.size());
    return true;
  }

  void skipWhitespace() { takeRun(isXmlWhitespace); }

  /// Moves past the characters that come next for which `belongs` is true and returns them.
  std::string_view takeRun(bool (&belongs)(char)) {
    const auto* const end = std::find_if_not(rest_.begin(), rest_.end(), belongs);
    return take(static_cast<std::size_t>(end - rest_.begin()));
  }

  /// Moves to the next `character`, or to the end, and returns what lay before it.
  std::string_view takeUpTo(char character) {
    return take(std::min(rest_.find(character), rest_.size()));
  }

  /// Moves past the next `token` and returns what lay before it; nothing when there is none.
  std::optional<std::string_view> takeThrough(std::string_view token) {
    const std::size_t length = rest_.find(token);
    if (length == std::string_view::npos) {
      return std::nullopt;
    }
    const std::string_view taken = take(length);
    rest_.remove_prefix(token.size());
    return taken;
  }

 private:
  std::string_view take(std::size_t length) {
    const std::string_view taken = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return taken;
  }

  std::string_view rest_;
};

/// libplist passes over what stands in double quotes when it looks for the end of a tag; other
/// parsers do not, everywhere. Where no quote is open they agree.
bool hasClosedQuotes(std::string_view text) {
  return std::count(text.begin(), text.end(), '"') % 2 == 0;
}

/// An element without elements inside, and what its text must be.
struct Scalar {
  std::string_view name;
  bool (*spells)(std::string_view text);
};

constexpr std::array<Scalar, 6> kScalars{{{"integer", spellsInteger},
                                          {"real", spellsReal},
                                          {"date", spellsDate},
                                          {"data", spellsData},
                                          {"true", spellsNothing},
                                          {"false", spellsNothing}}};

struct Tag {
  std::string_view name;
  bool isEmpty;
};

/// Checks a document from its beginning to its end, keeping only the containers that are open.
class XmlGuard {
 public:
  explicit XmlGuard(std::string_view text) : cursor_(text) {}

  bool accepts() {
    return prologue() && openPlist() && rootValue() && closePlist() && skipMiscellany() &&
           cursor_.atEnd();
  }

 private:
  struct Container {
    bool isDictionary;
    bool hasKey = false;
    std::size_t keys = 0;
  };

  bool prologue() {
    return skipMiscellany() && (!cursor_.skip("<!DOCTYPE") || documentType()) && skipMiscellany();
  }

  bool documentType() {
    const auto declaration = cursor_.takeThrough(">");
    return declaration && declaration->find_first_of("[<") == std::string_view::npos &&
           hasClosedQuotes(*declaration);
  }

  /// Moves past white space, comments and processing instructions; false when one has no end.
  bool skipMiscellany() {
    while (true) {
      cursor_.skipWhitespace();
      if (cursor_.skip("<!--")) {
        if (!cursor_.takeThrough("-->")) {
          return false;
        }
      } else if (cursor_.skip("<?")) {
        const auto instruction = cursor_.takeThrough("?>");
        if (!instruction || instruction->empty() || instruction->front() == '>' ||
            !hasClosedQuotes(*instruction)) {
          return false;
        }
      } else {
        return true;
      }
    }
  }

  bool openPlist() {
    if (!cursor_.skip("<plist")) {
      return false;
    }
    const auto attributes = cursor_.takeThrough(">");
    return attributes && (attributes->empty() || isXmlWhitespace(attributes->front())) &&
           !attributes->ends_with('/') && attributes->find('<') == std::string_view::npos &&
           hasClosedQuotes(*attributes);
  }

  bool closePlist() { return skipMiscellany() && closeTag("plist"); }

  /// The root value with everything inside it.
  bool rootValue() {
    do {
      if (!skipMiscellany() || !(cursor_.isAt("</") ? closeContainer() : openElement())) {
        return false;
      }
    } while (!open_.empty());
    return true;
  }

  bool openElement() {
    const auto tag = openTag();
    if (!tag || ++nodes_ > PlistLimits::kNodes || !fitsHere(tag->name)) {
      return false;
    }
    if (tag->name == "dict" || tag->name == "array") {
      return openContainer(*tag);
    }
    return tag->name == "key" || tag->name == "string" ? text(*tag) : scalar(*tag);
  }

  /// A start tag without attributes.
  std::optional<Tag> openTag() {
    if (!cursor_.skip("<")) {
      return std::nullopt;
    }
    const std::string_view name = cursor_.takeRun(isLowerCase);
    cursor_.skipWhitespace();
    const bool isEmpty = cursor_.skip("/");
    return cursor_.skip(">") ? std::optional(Tag{name, isEmpty}) : std::nullopt;
  }

  bool closeTag(std::string_view name) {
    if (!cursor_.skip("</") || !cursor_.skip(name)) {
      return false;
    }
    cursor_.skipWhitespace();
    return cursor_.skip(">");
  }

  /// Keys and values take turns in a dictionary, and there are no keys elsewhere.
  bool fitsHere(std::string_view name) {
    const bool isKey = name == "key";
    if (open_.empty() || !open_.back().isDictionary) {
      return !isKey;
    }
    Container& dictionary = open_.back();
    if (isKey == dictionary.hasKey) {
      return false;
    }
    dictionary.hasKey = isKey;
    if (isKey) {
      comparisons_ += dictionary.keys++;
    }
    return comparisons_ <= PlistLimits::kKeyComparisons;
  }

  bool openContainer(const Tag& tag) {
    if (open_.size() == PlistLimits::kNesting) {
      return false;
    }
    if (!tag.isEmpty) {
      open_.push_back({.isDictionary = tag.name == "dict"});
    }
    return true;
  }

  bool closeContainer() {
    if (open_.empty() || open_.back().hasKey) {
      return false;
    }
    const bool isDictionary = open_.back().isDictionary;
    open_.pop_back();
    return closeTag(isDictionary ? "dict" : "array");
  }

  /// Characters, references, comments and CDATA sections up to the end tag.
  bool text(const Tag& tag) {
    while (!tag.isEmpty) {
      if (!hasPlainReferences(cursor_.takeUpTo('<'))) {
        return false;
      }
      const std::string_view end = cursor_.skip("<!--")        ? "-->"
                                   : cursor_.skip("<![CDATA[") ? "]]>"
                                                               : "";
      if (end.empty()) {
        return closeTag(tag.name);
      }
      if (!cursor_.takeThrough(end)) {
        return false;
      }
    }
    return true;
  }

  bool scalar(const Tag& tag) {
    const auto* const kind = std::find_if(kScalars.begin(), kScalars.end(),
                                          [&](const Scalar& s) { return s.name == tag.name; });
    if (kind == kScalars.end()) {
      return false;
    }
    const std::string_view content = tag.isEmpty ? "" : cursor_.takeUpTo('<');
    return kind->spells(content) && (tag.isEmpty || closeTag(tag.name));
  }

  Cursor cursor_;
  std::vector<Container> open_;
  std::size_t nodes_ = 0;
  std::size_t comparisons_ = 0;
};

}  // namespace

bool isSafeXmlPlist(std::string_view text) {
  return isXmlText(text) && XmlGuard(text).accepts();
}

}  // namespace vendril
