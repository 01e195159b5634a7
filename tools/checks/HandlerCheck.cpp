#include "tools/checks/HandlerCheck.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "platform/Host.h"
#include "platform/LaunchServices.h"
#include "platform/freedesktop/BoundedFile.h"
#include "platform/freedesktop/MimeAppsList.h"
#include "protocol/ZQN5ProtocolHandler.h"
#include "tools/Answer.h"

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

/// Finds the first line with which the text no longer parses.
void findBadLine(const std::string& text, AssociationsFacts& facts) {
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    ++facts.badLine;
    if (!MimeAppsList::parse(text.substr(0, end))) {
      facts.badText = text.substr(begin, end - begin);
      return;
    }
    begin = end + 1;
  }
}

}  // namespace

HandlerFacts handlerFacts(const Surroundings& surroundings, const std::string& scheme) {
  LaunchServices& services = Host::current().launchServices();
  return {scheme, ZQN5ProtocolHandler::sharedInstance().isRegisteredForURLScheme(scheme),
          services.copyDefaultHandlerForURLScheme(scheme),
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
    check.verdict = facts.handler ? "other-handler" : "no-handler";
    check.level = Level::error;
    check.summary = facts.handler ? *facts.handler + " opens " + facts.scheme + " links"
                                  : "nothing opens " + facts.scheme + " links";
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
    check.verdict = "unreadable";
    check.level = Level::error;
    check.summary = facts.path + " cannot be read, so nobody can be made the default handler";
    check.remedy = "ls -lL " + shellWord(facts.path);
  } else if (facts.badLine > 0) {
    check.verdict = "malformed";
    check.level = Level::error;
    check.summary =
        fmt::format("line {} of {} does not parse, so the list is neither followed nor changed: {}",
                    facts.badLine, facts.path, facts.badText);
    check.remedy =
        fmt::format("sed -i.bak --follow-symlinks {}d {}", facts.badLine, shellWord(facts.path));
    check.details.emplace("line", static_cast<std::int64_t>(facts.badLine));
  }
  return check;
}

}  // namespace vendril::tools
