// The published configuration, from the bytes of its file to the report.

#include <jansson.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Agent.h"
#include "fuzz/FuzzTarget.h"
#include "platform/Utf8.h"
#include "platform/freedesktop/PlistConversion.h"
#include "platform/freedesktop/PlistFiles.h"
#include "platform/freedesktop/PlistGuard.h"

namespace vendril::fuzz {
namespace {

using JsonPtr = std::unique_ptr<json_t, ReleaseWith<json_decref>>;
using JsonTextPtr = std::unique_ptr<char, ReleaseWith<std::free>>;

/// A desktop whose property lists are real files.
class HostWithFiles : public FakeHost {
 public:
  PropertyListFiles& propertyListFiles() override { return files_; }

 private:
  PlistFiles files_;
};

/// Adds up what a property list holds, and requires that its texts are UTF-8.
struct Measure {
  std::size_t nodes = 0;
  std::size_t content = 0;

  void operator()(const std::string& text) { count(text); }
  void operator()(const PropertyList::Data& data) { add(data.size()); }
  void operator()(const PropertyList::Array& array) {
    enter();
    for (const PropertyList& element : array) {
      element.visit(*this);
    }
    --depth_;
  }
  void operator()(const PropertyList::Dictionary& dictionary) {
    enter();
    for (const auto& [key, value] : dictionary) {
      count(key);
      value.visit(*this);
    }
    --depth_;
  }
  template <class Scalar>
  void operator()(const Scalar& /*value*/) {
    add(0);
  }

 private:
  void enter() {
    add(0);
    require(++depth_ <= PlistLimits::kNesting, "A property list nests within the limit");
  }
  void count(const std::string& text) {
    require(isValidUtf8(text), "The texts of a property list are UTF-8");
    add(text.size());
  }
  void add(std::size_t length) {
    ++nodes;
    content += length;
  }

  std::size_t depth_ = 0;
};

/// Requires that `dictionary` comes back from both formats. Compared as they print, because NaN is
/// not equal to itself.
void checkRewriting(const PropertyList::Dictionary& dictionary) {
  const std::string path = scratchDirectory() / "rewritten.plist";
  const PlistFiles files;
  if (files.writeDictionary(dictionary, path)) {
    const auto read = files.dictionaryWithContentsOfFile(path);
    require(read.has_value(), "What is written as XML can be read again");
    require(description(*read) == description(dictionary),
            "What is read is what has been written as XML");
  }
  const PlistPtr node = plistFromDictionary(dictionary);
  if (node) {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(node.get(), &bytes, &size);
    const PlistBinaryPtr owner(bytes);
    const auto read = parseDictionary({bytes, size});
    require(read && description(*read) == description(dictionary),
            "What is read is what has been written in binary");
  }
}

/// Whether JSON says what a property list says.
struct SaysTheSame {
  const json_t* json;

  bool operator()(bool value) const { return json_is_boolean(json) && json_is_true(json) == value; }
  bool operator()(std::int64_t value) const {
    return json_is_integer(json) && json_integer_value(json) == value;
  }
  bool operator()(std::uint64_t value) const {
    return json_number_value(json) == static_cast<double>(value);
  }
  bool operator()(double value) const {
    return json_is_real(json) && json_real_value(json) == value;
  }
  bool operator()(const std::string& text) const {
    return json_is_string(json) &&
           text == std::string_view(json_string_value(json), json_string_length(json));
  }
  bool operator()(const PropertyList::Array& array) const {
    bool same = json_is_array(json) && json_array_size(json) == array.size();
    for (std::size_t i = 0; same && i < array.size(); ++i) {
      same = array[i].visit(SaysTheSame{json_array_get(json, i)});
    }
    return same;
  }
  bool operator()(const PropertyList::Dictionary& dictionary) const {
    return json_is_object(json) && json_object_size(json) == dictionary.size() &&
           std::all_of(dictionary.begin(), dictionary.end(), [this](const auto& entry) {
             return entry.second.visit(SaysTheSame{json_object_get(json, entry.first.c_str())});
           });
  }
  bool operator()(const PropertyList::Data&) const { return false; }
  bool operator()(Date) const { return false; }
};

bool isFlag(const json_t* json) {
  return json_is_integer(json) && (json_integer_value(json) == 0 || json_integer_value(json) == 1);
}

/// `published` is what the file holds of the configuration; null when it holds none.
void checkReport(const std::string& report, const PropertyList::Dictionary* published) {
  const JsonPtr json(json_loadb(report.data(), report.size(), JSON_REJECT_DUPLICATES, nullptr));
  require(json_is_object(json.get()), "A report is a JSON object");
  const JsonTextPtr again(json_dumps(json.get(), JSON_COMPACT | JSON_ESCAPE_SLASH));
  require(report == again.get(), "A report that was read is written as it was");

  const auto member = [&json](const char* name) { return json_object_get(json.get(), name); };
  const bool hasDomain = member("SIPDomain") != nullptr;
  require(json_object_size(json.get()) == (hasDomain ? 7U : 6U), "A report has its members alone");
  require(json_is_boolean(member("isMeetMeOnly")), "The mode is a boolean");
  for (const char* name : {"meetmeCapable", "videoCapable", "SIPready"}) {
    require(isFlag(member(name)), "A capability is 0 or 1");
  }
  require(!hasDomain || (json_integer_value(member("SIPready")) == 1 &&
                         json_string_length(member("SIPDomain")) > 0),
          "A domain is reported of a client that is ready for it");
  for (const auto& [key, name] : {std::pair("AppName", "appName"), {"AppVersion", "appVersion"}}) {
    const auto value = published != nullptr ? published->find(key) : decltype(published->end()){};
    const bool isPublished = published != nullptr && value != published->end();
    require(!isPublished || value->second.visit(SaysTheSame{member(name)}),
            "Name and version are reported as they are published");
    require(published == nullptr || isPublished || json_string_length(member(name)) == 0,
            "A name or version that is not published is empty");
  }
}

void checkFile(const std::optional<PropertyList::Dictionary>& root) {
  const auto entry = root ? root->find("PublishedConfiguration") : decltype(root->end()){};
  const auto* published =
      root && entry != root->end() ? entry->second.get<PropertyList::Dictionary>() : nullptr;
  Agent<HostWithFiles> agent;
  for (const bool skipSearch : {true, false}) {
    agent.host.fakeSystemLog.take();
    const auto report =
        agent.delegate->configuration()->getClientInfoJSONWithSkipSearch(skipSearch);
    const std::vector<std::string> messages = agent.host.fakeSystemLog.take();
    std::for_each(messages.begin(), messages.end(), requireOneRecord);
    require(report || (published != nullptr &&
                       messages.back().starts_with("Serialization to JSON failed with error: ")),
            "A report is missing only when a value has no JSON form, which is logged");
    if (report) {
      checkReport(*report, published);
    }
  }
}

}  // namespace

void check(std::string_view input) {
  const std::optional<PropertyList::Dictionary> root = parseDictionary(input);
  if (root) {
    Measure measure;
    measure(*root);
    require(measure.nodes <= PlistLimits::kNodes, "A property list has a bounded number of nodes");
    require(measure.content <= PlistLimits::kContent, "A property list has a bounded content");
    checkRewriting(*root);
  }
  std::filesystem::create_directories(scratchDirectory() / "Preferences");
  scratchDirectory().write("Preferences/group.com.brelto.orvanta.plist", input);
  checkFile(root);
}

}  // namespace vendril::fuzz
