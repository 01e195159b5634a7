#include <algorithm>

#include "launcher/ZQN5Launcher.h"
#include "platform/LaunchServices.h"
#include "platform/freedesktop/DesktopExec.h"
#include "protocol/ZQN5ProtocolHandler.h"
#include "tools/Commands.h"
#include "tools/checks/LoginItemCheck.h"

namespace vendril::tools {
namespace {

ZQN5ProtocolHandler& protocolHandler(const Tool& tool) {
  ZQN5ProtocolHandler& handler = ZQN5ProtocolHandler::sharedInstance();
  handler.setLoggerBlock(tool.transcript.loggerBlock());
  return handler;
}

/// What a command that changes handlers answers, with each scheme's handler as it is now.
Answer handlersAfter(const Tool& tool, const char* command, bool succeeded,
                     const ZQN5ProtocolHandler::Schemes& schemes) {
  PropertyList::Dictionary handlers;
  Fields fields;
  for (const std::string& scheme : schemes) {
    const std::string handler =
        tool.host.launchServices().copyDefaultHandlerForURLScheme(scheme).value_or("");
    handlers.emplace(scheme, handler);
    fields.add(scheme, handler.empty() ? "nobody" : handler);
  }
  return {
      {{"command", command}, {"verdict", succeeded ? "done" : "failed"}, {"handlers", handlers}},
      fields.text(),
      succeeded ? kDone : kFailed,
      tool.transcript.messages()};
}

/// True when there is nobody else who could be the handler of the agent's schemes among `chosen`.
bool isOnlyHandler(const Tool& tool, const ZQN5ProtocolHandler& handler,
                   const ZQN5ProtocolHandler::Schemes& chosen) {
  const ZQN5ProtocolHandler::Schemes& own = handler.supportedURLSchemes();
  return std::all_of(chosen.begin(), chosen.end(), [&](const std::string& scheme) {
    const auto handlers = tool.host.launchServices().copyAllHandlersForURLScheme(scheme);
    return own.contains(scheme) && handlers && handlers->size() <= 1;
  });
}

/// What a command about the login item answers.
Answer loginItemAnswer(const Tool& tool, const char* command, bool succeeded) {
  const LoginItemFacts facts = loginItemFacts(Surroundings::of(tool));
  const Check item = loginItemCheck(facts);
  const Check stale = staleLoginItemsCheck(facts);
  Answer answer{{{"command", command}, {"verdict", item.verdict}, {"path", facts.path}},
                printable(item.summary) + "\n",
                succeeded ? kDone : kFailed,
                tool.transcript.messages()};
  answer.json.emplace_back("stale", stale.details.at("items"));
  if (stale.level != Level::ok) {
    answer.text += printable(stale.summary) + "\n";
  }
  return answer;
}

}  // namespace

Answer registerSchemes(const Tool& tool) {
  const ZQN5ProtocolHandler& handler = protocolHandler(tool);
  const bool succeeded = handler.registerForAllSupportedURLSchemes();
  return handlersAfter(tool, "register", succeeded, handler.supportedURLSchemes());
}

Answer unregisterSchemes(const Tool& tool, const std::vector<std::string>& schemes) {
  const ZQN5ProtocolHandler& handler = protocolHandler(tool);
  const ZQN5ProtocolHandler::Schemes chosen =
      schemes.empty() ? handler.supportedURLSchemes()
                      : ZQN5ProtocolHandler::Schemes(schemes.begin(), schemes.end());
  const bool succeeded = handler.unregisterFromURLSchemes(chosen);
  Answer answer = handlersAfter(tool, "unregister", succeeded, chosen);
  if (!succeeded && isOnlyHandler(tool, handler, chosen)) {
    answer.text += "No other program opens these links; the association goes with the program.\n";
  }
  return answer;
}

Answer showLoginItem(const Tool& tool) {
  return loginItemAnswer(tool, "login-item status", true);
}

Answer setLoginItem(const Tool& tool, bool isOn) {
  const LoggerBlock log = tool.transcript.loggerBlock();
  const Surroundings surroundings = Surroundings::of(tool);
  if (isOn && !findExecutable(surroundings.program)) {
    logTo(log, "%@ is not there or cannot be run", surroundings.program);
    return loginItemAnswer(tool, "login-item on", false);
  }
  const LoginItemFacts facts = loginItemFacts(surroundings);
  if (isOn && facts.isOn && facts.isSwitchedOff) {
    // Whoever asks for it has changed her mind: the entry that says otherwise goes.
    ZQN5Launcher::setLaunchOnLogin(false, log);
  }
  // The launcher adds an item without looking for one.
  if (!isOn || !ZQN5Launcher::launchOnLogin()) {
    ZQN5Launcher::setLaunchOnLogin(isOn, log);
  }
  return loginItemAnswer(tool, isOn ? "login-item on" : "login-item off",
                         ZQN5Launcher::launchOnLogin() == isOn);
}

Answer cleanLoginItems(const Tool& tool) {
  ZQN5Launcher::cleanLoginItemsWithloggerBlock(tool.transcript.loggerBlock());
  const bool isClean = loginItemFacts(Surroundings::of(tool)).stale.empty();
  return loginItemAnswer(tool, "login-item clean", isClean);
}

}  // namespace vendril::tools
