// The practice portal: takes the agent's reports on this computer and shows what it received.

#include <httplib.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>

#include "portal/FormBody.h"

namespace {

constexpr const char* kLoopback = "127.0.0.1";

struct Options {
  int port = 0;
  int status = 200;
  std::string answer = "thank you\n";
};

std::string readBody(const httplib::ContentReader& reader) {
  std::string body;
  reader([&body](const char* data, std::size_t length) {
    body.append(data, length);
    return true;
  });
  return body;
}

// Control characters would let a sender write to the terminal as it likes.
std::string printable(std::string text) {
  for (char& character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (code < 0x20 || code == 0x7F) {
      character = '?';
    }
  }
  return text;
}

void show(const httplib::Request& request, const std::string& body, int status) {
  std::ostringstream text;
  text << request.method << ' ' << printable(request.target) << '\n'
       << "  Content-Type: " << printable(request.get_header_value("Content-Type")) << '\n';
  for (const auto& [name, value] : vendril::portal::decodeFormBody(body)) {
    text << "  " << printable(name) << " = " << printable(value) << '\n';
  }
  text << "  answered with status " << status << "\n\n";

  static std::mutex output;
  const std::lock_guard lock(output);
  std::cout << text.str() << std::flush;
}

int serve(const Options& options) {
  httplib::Server server;
  // The body is read here rather than by the server, which takes forms of 8 KiB at most and mixes
  // their fields with those of the address.
  server.Post(".*", [&options](const httplib::Request& request, httplib::Response& response,
                               const httplib::ContentReader& reader) {
    const std::string body = readBody(reader);
    response.status = options.status;
    response.set_content(options.answer, "text/plain");
    show(request, body, options.status);
  });

  int port = options.port;
  const bool bound = port == 0 ? (port = server.bind_to_any_port(kLoopback)) > 0
                               : server.bind_to_port(kLoopback, port);
  if (!bound) {
    std::cerr << "vendril-portal: cannot listen on " << kLoopback << " port " << options.port
              << '\n';
    return 1;
  }
  std::cout << "vendril-portal: listening on http://" << kLoopback << ':' << port << "\n\n"
            << std::flush;
  return server.listen_after_bind() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) try {
  Options options;
  CLI::App app("A practice portal for Vendril: prints every report that it receives.");
  app.add_option("--port", options.port, "Port to listen on; 0 takes any free one")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  app.add_option("--status", options.status, "HTTP status to answer with")
      ->check(CLI::Range(200, 599))
      ->capture_default_str();
  app.add_option("--answer", options.answer, "Body to answer with");
  CLI11_PARSE(app, argc, argv);
  return serve(options);
} catch (const std::exception& error) {
  std::fprintf(stderr, "vendril-portal: %s\n", error.what());
  return 1;
}
