#include "tools/LineReader.h"

#include <glib.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril::tools {
namespace {

/// Runs in the child before the program does.
void endWithParent(gpointer /*data*/) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
}

}  // namespace

LineReader::LineReader(const std::vector<std::string>& command) {
  std::vector<gchar*> words;
  words.reserve(command.size() + 1);
  for (const std::string& word : command) {
    words.push_back(const_cast<gchar*>(word.c_str()));
  }
  words.push_back(nullptr);
  gint output = -1;
  GErrorSlot error;
  constexpr auto kFlags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD);
  if (g_spawn_async_with_pipes(nullptr, words.data(), nullptr, kFlags, endWithParent, nullptr,
                               &process_, nullptr, &output, nullptr, error.out()) == FALSE) {
    throw std::runtime_error(error.message());
  }
  output_ = fdopen(output, "r");
}

LineReader::~LineReader() {
  if (output_ != nullptr) {
    std::fclose(output_);
  }
  kill(process_, SIGTERM);
  waitpid(process_, nullptr, 0);
}

std::optional<std::string> LineReader::next() {
  char* line = nullptr;
  std::size_t capacity = 0;
  const ssize_t length = output_ != nullptr ? getline(&line, &capacity, output_) : -1;
  std::string text(length > 0 ? std::string(line, static_cast<std::size_t>(length)) : "");
  std::free(line);  // NOLINT(*-no-malloc): getline allocates with malloc.
  if (length <= 0) {
    return std::nullopt;
  }
  if (text.ends_with('\n')) {
    text.pop_back();
  }
  return text;
}

}  // namespace vendril::tools
