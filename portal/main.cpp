// The practice portal: takes the agent's reports on this computer and shows what it received, on
// the terminal and on a page.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <mutex>
#include <string>

#include "portal/PortalServer.h"
#include "portal/StopSignals.h"

namespace {

using vendril::portal::PortalServer;
using vendril::portal::Report;

/// In seconds. The agent gives up after 60, so a later answer would be no success.
constexpr int kLongestSlowness = 59;

struct Options {
  PortalServer::Settings settings;
  std::string answer = "200";
  int slowness = 10;
  bool quiet = false;
};

void show(const Report& report) {
  static std::mutex output;
  const std::lock_guard lock(output);
  std::cout << toText(report) << std::flush;
}

std::string answerFault(const std::string& name) {
  return vendril::portal::parseAnswer(name)
             ? ""
             : "has to be redirect, slow, reset or a status from 200 to 599";
}

void declare(CLI::App& app, Options& options) {
  app.set_version_flag("--version", "vendril-portal " VENDRIL_VERSION);
  app.add_option("--port", options.settings.port, "Port to listen on; 0 takes any free one")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  app.add_option("--answer", options.answer,
                 "Answer to reports whose address chooses none: redirect, slow, reset or a status")
      ->check(CLI::Validator(answerFault, "ANSWER"))
      ->capture_default_str();
  app.add_option("--text", options.settings.text, "Body of the answers");
  app.add_option("--slow", options.slowness, "How many seconds a slow answer takes")
      ->check(CLI::Range(1, kLongestSlowness))
      ->capture_default_str();
  app.add_flag("--quiet", options.quiet, "Print no reports, only the address");
}

int serve(const PortalServer::Settings& settings, const PortalServer::ReportBlock& reportBlock) {
  PortalServer server(settings, reportBlock);
  if (!server.bind()) {
    std::cerr << "vendril-portal: cannot listen on 127.0.0.1 port " << settings.port << '\n';
    return 1;
  }
  const vendril::portal::StopSignals signals([&server] { server.stop(); });
  std::cout << "vendril-portal: listening on http://127.0.0.1:" << server.port() << "\n\n"
            << std::flush;
  return server.run() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) try {
  Options options;
  CLI::App app("A practice portal for Vendril: shows every report that it receives.");
  declare(app, options);
  CLI11_PARSE(app, argc, argv);
  options.settings.answer = *vendril::portal::parseAnswer(options.answer);
  options.settings.slowness = std::chrono::seconds(options.slowness);
  return serve(options.settings, options.quiet ? [](const Report&) {} : show);
} catch (const std::exception& error) {
  std::fprintf(stderr, "vendril-portal: %s\n", error.what());
  return 1;
}
