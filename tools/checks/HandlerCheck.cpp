#include "tools/checks/HandlerCheck.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>

#include "platform/AsciiCase.h"
#include "platform/Host.h"
#include "platform/LaunchServices.h"
#include "platform/freedesktop/BoundedFile.h"
#include "platform/freedesktop/MimeAppsList.h"
#include "tools/Answer.h"
#include "tools/checks/Ownership.h"

namespace vendril::tools {
namespace {

constexpr std::size_t kLargestList = std::size_t{4} << 20U;

std::vector<std::string> listsOf(const XdgPaths& paths) {
  std::vector<std::string> lists;
  for (const std::string& desktop : paths.currentDesktops) {
    lists.push_back(paths.configHome + "/" + desktop + "-mimeapps.list");
  }
  lists.push_back(paths.configHome + "/mimeapps.list");
  return lists;
}

/// Finds the first line with which the text no longer parses. What follows that line mends
/// nothing, so a few readings do.
void findBadLine(const std::string& text, AssociationsFacts& facts) {
  std::vector<std::size_t> ends;
  for (std::size_t end = text.find('\n'); end != std::string::npos;
       end = text.find('\n', end + 1)) {
    ends.push_back(end);
  }
  ends.push_back(text.size());
  const auto bad = std::partition_point(ends.begin(), ends.end(), [&text](std::size_t end) {
    return MimeAppsList::parse(text.substr(0, end)).has_value();
  });
  if (bad != ends.end()) {
    const std::size_t begin = bad == ends.begin() ? 0 : *std::prev(bad) + 1;
    facts.badLine = static_cast<std::size_t>(bad - ends.begin()) + 1;
    facts.badText = text.substr(begin, *bad - begin);
  }
}

}  // namespace

HandlerFacts handlerFacts(const Surroundings& surroundings, const std::string& scheme) {
  LaunchServices& services = Host::current().launchServices();
  // Read once, so that the findings agree with each other whatever changes meanwhile.
  std::optional<std::string> handler = services.copyDefaultHandlerForURLScheme(scheme);
  const bool isRegistered = handler && asciiLowercase(*handler) == surroundings.id;
  return {scheme, isRegistered, std::move(handler),
          services.copyAllHandlersForURLScheme(scheme).value_or(std::vector<std::string>()),
          surroundings.mendingBy("register")};
}

Check handlerCheck(const HandlerFacts& facts) {
  Check check{"handler-" + facts.scheme,
              "default",
              Level::ok,
              "the agent opens " + facts.scheme + " links",
              std::nullopt,
              {{"scheme", facts.scheme}, {"candidates", arrayOf(facts.candidates)}}};
  if (facts.handler) {
    check.details.emplace("handler", *facts.handler);
  }
  if (!facts.isRegistered) {
    check.find(facts.handler ? "other-handler" : "no-handler", Level::error,
               facts.handler ? *facts.handler + " opens " + facts.scheme + " links"
                             : "nothing opens " + facts.scheme + " links");
    check.remedy = facts.remedy;
  } else if (facts.candidates.size() > 1) {
    std::vector<std::string> others = facts.candidates;
    std::erase(others, *facts.handler);
    check.summary += fmt::format("; so could {}", fmt::join(others, ", "));
  }
  return check;
}

std::optional<AssociationsFacts> associationsFacts(const Surroundings& surroundings) {
  if (surroundings.paths.configHome.empty()) {
    return std::nullopt;
  }
  AssociationsFacts facts;
  for (const std::string& path : listsOf(surroundings.paths)) {
    facts.path = path;
    if (MimeAppsList::read(path)) {
      continue;
    }
    const std::optional<std::string> text = readBoundedFile(path, kLargestList);
    facts.isReadable = text.has_value();
    facts.isOwnWithoutRight = !text && isOwn(path) && access(path.c_str(), R_OK) != 0;
    if (text) {
      findBadLine(*text, facts);
    }
    break;
  }
  return facts;
}

Check associationsCheck(const AssociationsFacts& facts) {
  Check check{"associations", "readable",   Level::ok,
              facts.path,     std::nullopt, {{"path", facts.path}}};
  if (!facts.isReadable) {
    check.find("unreadable", Level::error,
               facts.path + " cannot be read, so nobody can be made the default handler");
    if (facts.isOwnWithoutRight) {
      check.remedy = "chmod u+r " + shellWord(facts.path);
    }
  } else if (facts.badLine > 0) {
    check.find(
        "malformed", Level::error,
        fmt::format("line {} of {} does not parse, so the list is neither followed nor changed: {}",
                    facts.badLine, facts.path, facts.badText));
    check.remedy = fmt::format("sed -i --follow-symlinks '{}s/^/# /' {}", facts.badLine,
                               shellWord(facts.path));
    check.details.emplace("line", static_cast<std::int64_t>(facts.badLine));
  }
  return check;
}

}  // namespace vendril::tools
