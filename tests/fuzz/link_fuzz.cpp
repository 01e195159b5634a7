// A link, from the event that brings it to the request that goes to the portal.

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Agent.h"
#include "fuzz/FuzzTarget.h"
#include "platform/PercentEncoding.h"
#include "platform/Utf8.h"
#include "platform/freedesktop/HttpOrigin.h"
#include "portal/FormBody.h"

namespace vendril::fuzz {
namespace {

using Parameters = ZQN5VendrilAppDelegate::Parameters;

constexpr std::string_view kPortalUri = "portalURI";

PropertyList::Dictionary publishedRoot() {
  return {{"PublishedConfiguration",
           PropertyList::Dictionary{{"AppName", "Brelto Orvanta \u00e4/\"&+=%"},
                                    {"AppVersion", "4.0.1"},
                                    {"SIPDomain", "sip.example.com"},
                                    {"ExecutablePath", "/bin/sh"},
                                    {"VideoCapable", true},
                                    {"SIPReady", true}}}};
}

std::size_t count(const std::vector<std::string>& messages, std::string_view part) {
  return static_cast<std::size_t>(std::count_if(
      messages.begin(), messages.end(),
      [part](const std::string& message) { return message.find(part) != message.npos; }));
}

/// The session identifier by its rule: the first field behind a "?" or "&" that is named so and has
/// a value without "=".
std::optional<std::string> expectedSession(std::string_view portalUri) {
  constexpr std::string_view kField = "session_id=";
  for (std::size_t i = portalUri.find(kField); i != portalUri.npos;
       i = portalUri.find(kField, i + 1)) {
    const std::string_view rest = portalUri.substr(i + kField.size());
    const std::string_view value = rest.substr(0, rest.find_first_of("?&"));
    const bool isField = i > 0 && (portalUri[i - 1] == '?' || portalUri[i - 1] == '&');
    if (isField && !value.empty() && value.find('=') == value.npos) {
      return std::string(value);
    }
  }
  return std::nullopt;
}

/// The parameters by their rule: the address is what follows the first "portalURI" and one
/// character.
std::optional<Parameters> expectedParameters(const Url& link) {
  const auto decoded = removePercentEncoding(link.absoluteString());
  const std::size_t name = decoded ? decoded->find(kPortalUri) : std::string::npos;
  if (name == std::string::npos) {
    return std::nullopt;
  }
  std::string_view address = std::string_view(*decoded).substr(name + kPortalUri.size());
  address.remove_prefix(address.empty() ? 0 : 1);
  while (!address.empty() && (static_cast<unsigned char>(address.front()) & 0xC0U) == 0x80U) {
    address.remove_prefix(1);
  }
  const auto session = expectedSession(address);
  return session ? std::optional(
                       Parameters{{"portalURI", std::string(address)}, {"session_id", *session}})
                 : std::nullopt;
}

void checkRequest(const UrlRequest& request, const Parameters& parameters,
                  const std::string& report) {
  const portal::FormFields expected{
      {"data", report}, {"session_id", parameters.at("session_id")}, {"command", "set_data"}};
  require(request.httpBody.has_value(), "A request has a body");
  require(portal::decodeFormBody(*request.httpBody) == expected,
          "The portal reads out of the body what the agent has put into it");
  require(std::all_of(request.httpBody->begin(), request.httpBody->end(),
                      [](char c) { return c > ' ' && c < '\x7F'; }),
          "A body is printable ASCII");
  require(request.url == Url::parse(parameters.at("portalURI")),
          "A request goes to the address in the link and to no other");
  const auto origin = request.url ? httpOrigin(*request.url) : std::nullopt;
  require(!origin || Url::parse(*origin + "/"), "The origin of a URL is the start of a URL");
}

/// What one delivery of the link has led to.
void checkOutcome(Agent<>& agent, const Url& link, const std::optional<Parameters>& parameters,
                  const std::string& report) {
  const std::vector<std::string> messages = agent.host.fakeSystemLog.take();
  std::for_each(messages.begin(), messages.end(), requireOneRecord);
  require(count(messages, "Caught exception") == 0, "No link raises an exception");
  require(count(messages, "Parsing failed: ") == (parameters ? 0 : 1),
          "A link that names no portal or no session is reported once");
  auto& requests = agent.host.fakeUrlConnection.requests;
  require(requests.size() == (parameters ? 1 : 0), "A link leads to one request or to none");
  if (parameters) {
    checkRequest(requests.front().request, *parameters, report);
  }
  require(link.absoluteString().find_first_of("\n\r\t ") == std::string::npos,
          "A URL holds no white space");
  requests.clear();
}

void checkAccepted(Agent<>& agent, const std::string& text) {
  const auto link = Url::parse(text);
  require(link->absoluteString() == text, "A URL keeps its text");
  const auto parameters = expectedParameters(*link);
  require(agent.delegate->parse(*link) == parameters, "The parameters are those of the rule");
  const auto report = agent.delegate->configuration()->getClientInfoJSONWithSkipSearch(false);
  require(report.has_value(), "There is a report");
  agent.host.fakeSystemLog.take();

  agent.host.fakeUrlEvents.deliver(text);
  require(agent.host.fakeUrlConnection.requests.empty(), "A link waits until launching ends");
  agent.delegate->applicationDidFinishLaunching();
  checkOutcome(agent, *link, parameters, *report);
  agent.host.fakeUrlEvents.deliver(text);
  checkOutcome(agent, *link, parameters, *report);
}

void checkRefused(Agent<>& agent, const std::string& text) {
  agent.delegate->applicationDidFinishLaunching();
  agent.host.fakeSystemLog.take();
  agent.host.fakeUrlEvents.deliver(text);
  require(agent.host.fakeSystemLog.take() ==
              std::vector<std::string>{"Failed to decode URL from event descriptor"},
          "A text that is no URL is one message that does not repeat it");
  require(agent.host.fakeUrlConnection.requests.empty(), "A text that is no URL sends nothing");
}

void checkEscapes(const Agent<>& agent, const std::string& text) {
  const std::optional<std::string> expected =
      isValidUtf8(text) ? std::optional(text) : std::nullopt;
  require(removePercentEncoding(agent.delegate->escape(text)) == expected,
          "A text comes back from its escaped form");
  const Url file = Url::fileUrlWithPath("/" + text);
  require(Url::parse(file.absoluteString()) == file, "The URL of a file is a URL");
  const bool isPath = expected && text.find('\0') == text.npos;
  require(file.fileSystemPath() == (isPath ? std::optional("/" + text) : std::nullopt),
          "A path comes back from its URL");
}

}  // namespace

void check(std::string_view input) {
  const std::string text(input);
  Agent<> agent;
  agent.host.fakePropertyListFiles.files.emplace(
      scratchDirectory() / "Preferences/group.com.brelto.orvanta.plist", publishedRoot());
  checkEscapes(agent, text);
  if (Url::parse(text)) {
    checkAccepted(agent, text);
  } else {
    checkRefused(agent, text);
  }
}

}  // namespace vendril::fuzz
