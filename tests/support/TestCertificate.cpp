#include "support/TestCertificate.h"

#include <glib.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {
namespace {

void run(std::vector<std::string> command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& word : command) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  constexpr int kSilently =
      G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL;
  int status = 0;
  GErrorSlot error;
  if (g_spawn_sync(nullptr, arguments.data(), nullptr, static_cast<GSpawnFlags>(kSilently), nullptr,
                   nullptr, nullptr, nullptr, &status, error.out()) == 0 ||
      g_spawn_check_wait_status(status, error.out()) == 0) {
    throw std::runtime_error(command.front() + ": " + error.message());
  }
}

}  // namespace

TestCertificate::TestCertificate(int days) {
  std::string path = (std::filesystem::temp_directory_path() / "certificate-XXXXXX").string();
  if (mkdtemp(path.data()) == nullptr) {
    throw std::runtime_error("no directory for a certificate");
  }
  directory = path;
  const std::string requestFile = directory + "/request.pem";
  run({"openssl", "req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
       "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1", "-addext",
       "basicConstraints=CA:TRUE", "-keyout", keyFile(), "-out", requestFile});
  // Unlike the first command, this one takes any number of days.
  run({"openssl", "x509", "-req", "-in", requestFile, "-signkey", keyFile(), "-days",
       std::to_string(days), "-copy_extensions", "copy", "-out", certificateFile()});
}

TestCertificate::~TestCertificate() {
  std::error_code ignored;
  std::filesystem::remove_all(directory, ignored);
}

}  // namespace vendril
