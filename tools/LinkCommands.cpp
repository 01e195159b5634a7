#include <fmt/format.h>

#include <memory>
#include <utility>

#include "app/LinkParameters.h"
#include "app/ZQN5VendrilAppDelegate.h"
#include "config/ZQN5PublishedConfiguration.h"
#include "platform/AsciiCase.h"
#include "platform/LaunchServices.h"
#include "platform/freedesktop/BusHandover.h"
#include "platform/freedesktop/HttpOrigin.h"
#include "protocol/ZQN5ProtocolHandler.h"
#include "tools/Bus.h"
#include "tools/Commands.h"

namespace vendril::tools {
namespace {

/// What the agent makes of a link.
struct Reading {
  /// Stable, for programs.
  std::string verdict;
  /// The same in a sentence.
  std::string sentence;
  std::string scheme;
  LinkParameters parameters;
  std::optional<std::string> report;
  std::optional<UrlRequest> request;
};

/// The scheme of the agent that the link has, whatever its case; nothing when it has another.
std::optional<std::string> schemeOf(const std::string& link) {
  for (const std::string& scheme : ZQN5ProtocolHandler::sharedInstance().supportedURLSchemes()) {
    if (hasScheme(link, scheme)) {
      return scheme;
    }
  }
  return std::nullopt;
}

/// Lets the agent's intake make a URL of the link.
std::optional<Url> takeIn(const Tool& tool, const std::string& link) {
  ZQN5ProtocolHandler& intake = ZQN5ProtocolHandler::sharedInstance();
  std::optional<Url> taken;
  intake.setLoggerBlock(tool.transcript.loggerBlock());
  intake.setEventBlock([&taken](const Url& url, std::optional<Date> /*date*/) { taken = url; });
  intake.start();
  UrlEvent reply;
  intake.getUrl(UrlEvent{link}, reply);
  intake.setEventBlock({});
  return taken;
}

/// Lets the agent's delegate make the request, which stays here.
std::optional<UrlRequest> requestFor(const Tool& tool, const LinkParameters& parameters,
                                     const std::string& report) {
  const auto delegate = std::make_shared<ZQN5VendrilAppDelegate>();
  delegate->setLogger(std::make_shared<ZQN5SimpleLogger>());
  delegate->setAllowedCharacters(ZQN5VendrilAppDelegate::charactersOfForms());
  delegate->sendRequest(parameters.portalUri, parameters.sessionId, report);
  const auto& requests = tool.host.unsentRequests().requests;
  return requests.empty() ? std::nullopt : std::optional(requests.back());
}

std::optional<std::string> reportOf(const Tool& tool, bool skipSearch) {
  ZQN5PublishedConfiguration configuration(tool.transcript.loggerBlock());
  return configuration.loadWithoutTrace() ? configuration.clientInfoJSON(skipSearch) : std::nullopt;
}

/// Why a link that carries everything would still reach nobody; nothing when it would not.
std::optional<std::string> faultOfAddress(const std::optional<Url>& address) {
  if (!address) {
    return "the portal's address is no URL, so the request would fail";
  }
  const std::optional<std::string> refusal = refusalOf(*address);
  return refusal ? std::optional("the request would fail: " + *refusal) : std::nullopt;
}

Reading unsent(Reading reading, const char* verdict, std::string sentence) {
  reading.verdict = verdict;
  reading.sentence = std::move(sentence);
  return reading;
}

/// Follows the link as the agent would, up to the network.
Reading read(const Tool& tool, const std::string& link) {
  Reading reading;
  const std::optional<std::string> scheme = schemeOf(link);
  if (!scheme) {
    return unsent(std::move(reading), "foreign-scheme",
                  "the link is in none of the agent's schemes, so it never reaches the agent");
  }
  reading.scheme = *scheme;
  const std::optional<Url> url = takeIn(tool, link);
  if (!url) {
    return unsent(std::move(reading), "not-a-url",
                  "the link holds a character that no URL may hold, or is no URL; the agent drops "
                  "it");
  }
  reading.parameters = linkParametersOf(*url);
  if (!reading.parameters.portalUri) {
    const bool isDecodable = removePercentEncoding(link).has_value();
    return isDecodable
               ? unsent(std::move(reading), "no-portal-uri", "the link names no portalURI")
               : unsent(std::move(reading), "bad-escape",
                        "the link has a malformed percent-escape, or one that is not UTF-8");
  }
  if (!reading.parameters.sessionId) {
    return unsent(std::move(reading), "no-session-id",
                  "the address of the portal carries no session_id");
  }
  reading.report = reportOf(tool, false);
  if (!reading.report) {
    return unsent(std::move(reading), "no-report", "there is no client-info report to send");
  }
  reading.request = requestFor(tool, reading.parameters, *reading.report);
  if (const auto fault = faultOfAddress(reading.request->url)) {
    return unsent(std::move(reading), "bad-portal-uri", *fault);
  }
  return unsent(std::move(reading), "would-send", "the agent would send this request");
}

void addRequest(const UrlRequest& request, const Reading& reading, Answer& answer, Fields& fields) {
  PropertyList::Dictionary headers;
  fields.add("request", request.httpMethod + " " + *reading.parameters.portalUri);
  for (const auto& [name, value] : request.headerFields) {
    headers.emplace(name, value);
    fields.add("header", fmt::format("{}: {}", name, value));
  }
  fields.add("body", request.httpBody.value_or(""));
  answer.json.emplace_back("request",
                           PropertyList::Dictionary{{"method", request.httpMethod},
                                                    {"url", *reading.parameters.portalUri},
                                                    {"headers", headers},
                                                    {"body", request.httpBody.value_or("")}});
}

/// Asks the bus to hand the link over, and says what became of that.
struct Delivery {
  std::string verdict;
  std::string sentence;
  int status = kFailed;
  bool isStarted = false;
  std::optional<pid_t> process;
};

Delivery afterHandover(const Bus& bus, const std::string& id, bool wasRunning) {
  const std::optional<pid_t> process = bus.ownerOf(id);
  if (!process) {
    return {"ended", "the agent took the link but ended at once; its log says why", kFailed,
            !wasRunning, std::nullopt};
  }
  return {"handed-over",
          wasRunning ? "the running agent has taken the link"
                     : "the desktop has started the agent, and it has taken the link",
          kDone, !wasRunning, process};
}

Delivery failedHandover(const HandoverAnswer& answer, bool canStart) {
  if (answer.isTimeout) {
    return {"not-answering", "the agent has not answered in time", kNoAnswer, false, std::nullopt};
  }
  if (answer.outcome == Handover::ownerGone && !canStart) {
    return {"not-startable", "the bus does not know how to start the agent", kFailed, false,
            std::nullopt};
  }
  return {"refused", "the bus could not hand the link over: " + answer.error, kFailed, false,
          std::nullopt};
}

Delivery deliver(const std::string& id, const std::string& link, std::chrono::milliseconds limit) {
  const Bus bus = Bus::find();
  if (bus.state != Bus::State::reached) {
    return {"no-bus", "there is no session bus to hand the link over", kFailed, false,
            std::nullopt};
  }
  const bool wasRunning = bus.ownerOf(id).has_value();
  const HandoverAnswer answer =
      openOnBus(bus.connection->connection(), id, {link}, limit, Activation::whenNeeded);
  return answer.outcome == Handover::done ? afterHandover(bus, id, wasRunning)
                                          : failedHandover(answer, bus.canStart(id));
}

/// The agent gets the link here whoever is the scheme's default handler; a click does not.
void addHandler(const Tool& tool, const std::string& scheme, Answer& answer) {
  const auto handler = tool.host.launchServices().copyDefaultHandlerForURLScheme(scheme);
  if (scheme.empty() || !handler) {
    return;
  }
  answer.json.emplace_back("handler", *handler);
  if (!ZQN5ProtocolHandler::sharedInstance().isRegisteredForURLScheme(scheme)) {
    answer.text += "a click on such a link goes to " + printable(*handler) + " instead\n";
  }
}

}  // namespace

Answer explain(const Tool& tool, const std::string& link) {
  const Reading reading = read(tool, link);
  Answer answer;
  Fields fields;
  const auto add = [&](const char* key, const std::optional<std::string>& value) {
    if (value) {
      answer.json.emplace_back(key, *value);
      fields.add(key, *value);
    }
  };
  answer.json.emplace_back("command", "explain");
  add("verdict", reading.verdict);
  add("summary", reading.sentence);
  add("link", link);
  add("scheme", reading.scheme);
  add("portalURI", reading.parameters.portalUri);
  add("session_id", reading.parameters.sessionId);
  add("report", reading.report);
  if (reading.request) {
    addRequest(*reading.request, reading, answer, fields);
  }
  answer.log = tool.transcript.messages();
  answer.text = fields.text();
  answer.status = reading.verdict == "would-send" ? kDone : kFailed;
  return answer;
}

Answer open(const Tool& tool, const std::string& link, std::chrono::milliseconds limit) {
  const Reading reading = read(tool, link);
  Delivery delivery{reading.verdict, reading.sentence, kFailed, false, std::nullopt};
  if (reading.verdict != "foreign-scheme") {
    delivery = deliver(ZQN5ProtocolHandler::bundleIdentifier(), link, limit);
  }
  Answer answer{{{"command", "open"},
                 {"verdict", delivery.verdict},
                 {"summary", delivery.sentence},
                 {"link", link},
                 {"started", delivery.isStarted}},
                printable(delivery.sentence) + "\n",
                delivery.status,
                {}};
  if (delivery.process) {
    answer.json.emplace_back("process", std::int64_t{*delivery.process});
    answer.text += fmt::format("its lines are shown by: {} log\n", tool.command);
  } else if (delivery.verdict != "foreign-scheme") {
    answer.text += fmt::format("what is wrong is shown by: {} status\n", tool.command);
  }
  addHandler(tool, reading.scheme, answer);
  const bool isSent = reading.verdict == "would-send";
  answer.json.emplace_back("expected", reading.verdict);
  if (delivery.process && !isSent) {
    answer.text += "no report is sent for it: " + printable(reading.sentence) + "\n";
  }
  return answer;
}

Answer report(const Tool& tool, bool skipSearch) {
  const std::optional<std::string> text = reportOf(tool, skipSearch);
  Answer answer{{{"command", "report"}, {"verdict", text ? "reported" : "no-report"}},
                text ? printable(*text) + "\n" : "there is no client-info report\n",
                text ? kDone : kFailed,
                {}};
  if (text) {
    answer.json.emplace_back("report", *text);
  }
  answer.log = tool.transcript.messages();
  return answer;
}

}  // namespace vendril::tools
