// The command for administrators and support engineers: its command line.

#include <CLI/CLI.hpp>
#include <chrono>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "platform/Bundle.h"
#include "tools/Commands.h"

namespace vendril::tools {
namespace {

/// More than anybody reads, and few enough to be kept in memory.
constexpr unsigned kMostLines = 1'000'000;

/// What the command line says, and the command that it asks for.
struct Request {
  bool isJson = false;
  bool isVerbose = false;
  std::string link;
  double timeout = 10;
  bool skipSearch = false;
  std::vector<std::string> changes;
  std::vector<std::string> schemes;
  bool follow = false;
  unsigned lines = 50;

  std::function<Answer()> answer;
};

/// A range has nothing to say about what is no number.
std::string finiteFault(const std::string& text) {
  return std::isfinite(std::strtod(text.c_str(), nullptr)) ? "" : "has to be a number";
}

void addLinkCommands(CLI::App& app, const Tool& tool, Request& request) {
  CLI::App* open = app.add_subcommand("open", "Hand a link to the agent as the desktop would");
  open->add_option("LINK", request.link, "The link")->required();
  open->add_option("--timeout", request.timeout, "How many seconds to wait for the agent")
      ->check(CLI::Range(0.1, 3600.0))
      ->check(finiteFault)
      ->capture_default_str();
  open->callback([&] {
    request.answer = [&] {
      const auto limit = std::chrono::duration<double>(request.timeout);
      return tools::open(tool, request.link,
                         std::chrono::duration_cast<std::chrono::milliseconds>(limit));
    };
  });
  CLI::App* explain =
      app.add_subcommand("explain", "Show what the agent would send for a link; sends nothing");
  explain->add_option("LINK", request.link, "The link")->required();
  explain->callback([&] { request.answer = [&] { return tools::explain(tool, request.link); }; });
  CLI::App* report = app.add_subcommand("report", "Show the report that a portal would get now");
  report->add_flag("--skip-search", request.skipSearch, "Take the client's executable for present");
  report->callback(
      [&] { request.answer = [&] { return tools::report(tool, request.skipSearch); }; });
}

void addConfigurationCommands(CLI::App& app, const Tool& tool, Request& request) {
  CLI::App* config = app.add_subcommand("config", "The client's published configuration");
  config->add_subcommand("show", "Show what is in effect")->callback([&] {
    request.answer = [&] { return showConfiguration(tool); };
  });
  CLI::App* save = config->add_subcommand("save", "Write what is in effect, with changes");
  save->add_option("KEY=VALUE", request.changes, "A change to the record");
  save->callback(
      [&] { request.answer = [&] { return saveConfiguration(tool, request.changes); }; });
  config->add_subcommand("remove", "Delete the file")->callback([&] {
    request.answer = [&] { return removeConfiguration(tool); };
  });
  config->add_subcommand("update-version", "Store the agent's own name and version")->callback([&] {
    request.answer = [&] { return updateConfigurationVersion(tool); };
  });
}

void addRegistrationCommands(CLI::App& app, const Tool& tool, Request& request) {
  app.add_subcommand("register", "Make the agent the default handler of its schemes")
      ->callback([&] { request.answer = [&] { return registerSchemes(tool); }; });
  CLI::App* unregister =
      app.add_subcommand("unregister", "Make another application the default handler");
  unregister->add_option("SCHEME", request.schemes, "The schemes; all when none is given");
  unregister->callback(
      [&] { request.answer = [&] { return unregisterSchemes(tool, request.schemes); }; });
  CLI::App* item = app.add_subcommand("login-item", "Whether the agent starts at login");
  item->add_subcommand("on", "Start it at login")->callback([&] {
    request.answer = [&] { return setLoginItem(tool, true); };
  });
  item->add_subcommand("off", "Do not start it at login")->callback([&] {
    request.answer = [&] { return setLoginItem(tool, false); };
  });
  item->add_subcommand("status", "Tell whether it starts at login")->callback([&] {
    request.answer = [&] { return showLoginItem(tool); };
  });
  item->add_subcommand("clean", "Remove what earlier installations left behind")->callback([&] {
    request.answer = [&] { return cleanLoginItems(tool); };
  });
}

void addLogCommand(CLI::App& app, const Tool& tool, Request& request) {
  CLI::App* log = app.add_subcommand("log", "Show the agent's lines");
  log->add_flag("-f,--follow", request.follow, "Go on with each new line")
      ->excludes(app.get_option("--json"));
  log->add_option("-n,--lines", request.lines, "How many lines to show")
      ->check(CLI::Range(0U, kMostLines))
      ->capture_default_str();
  log->callback([&] { request.answer = [&] { return showLog(tool, request.lines); }; });
}

void tellLog(const std::vector<std::string>& messages) {
  for (const std::string& message : messages) {
    std::fprintf(stderr, "%s\n", printableLines(message).c_str());
  }
}

int tell(const Request& request, Answer answer) {
  if (request.isJson) {
    answer.json.emplace_back("log", arrayOf(answer.log));
    std::fputs(jsonText(answer.json).c_str(), stdout);
    return answer.status;
  }
  std::fputs(answer.text.c_str(), stdout);
  if (request.isVerbose || answer.status != kDone) {
    std::fflush(stdout);
    tellLog(answer.log);
  }
  return answer.status;
}

int run(int argc, char** argv, const Tool& tool) {
  Request request;
  CLI::App app("Looks after Vendril: tells whether meeting links arrive, and mends what is wrong.",
               "vendrilctl");
  // One command at most: of a word that is none, the error then tells.
  app.require_subcommand(0, 1);
  app.fallthrough();
  app.set_version_flag("--version", [&tool] {
    return "vendrilctl " + tool.host.bundle().infoString("CFBundleVersion").value_or("");
  });
  app.add_flag("--json", request.isJson, "Answer with one JSON object");
  app.add_flag("--verbose", request.isVerbose, "Show what the agent's classes log on the way");
  app.add_subcommand("status", "Tell whether everything that a link needs is in order")
      ->callback([&] { request.answer = [&] { return status(tool); }; });
  addLinkCommands(app, tool, request);
  addConfigurationCommands(app, tool, request);
  addRegistrationCommands(app, tool, request);
  addLogCommand(app, tool, request);
  try {
    app.parse(argc, argv);
    if (!request.answer) {
      throw CLI::RequiredError("A command");
    }
    return request.follow ? followLog(tool, request.lines) : tell(request, request.answer());
  } catch (const CLI::Success& help) {
    return app.exit(help);
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "vendrilctl: %s\nvendrilctl --help tells more\n",
                 printable(error.what()).c_str());
  } catch (const std::invalid_argument& error) {
    std::fprintf(stderr, "vendrilctl: %s\n", printable(error.what()).c_str());
  }
  return kMisused;
}

}  // namespace
}  // namespace vendril::tools

int main(int argc, char** argv) try {
  using namespace vendril::tools;  // NOLINT(google-build-using-namespace): main names nothing else.
  std::setlocale(LC_ALL, "");
  Transcript transcript;
  ToolHost host(argc, argv, transcript);
  vendril::Host::install(&host);
  return run(argc, argv, Tool{host, transcript, Style::ofStandardOutput(), commandOfThisTool()});
} catch (const std::exception& error) {
  std::fprintf(stderr, "vendrilctl: %s\n", vendril::tools::printable(error.what()).c_str());
  return vendril::tools::kFailed;
}
