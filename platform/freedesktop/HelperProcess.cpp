#include "platform/freedesktop/HelperProcess.h"

#include <array>
#include <cstddef>

namespace vendril {
namespace {

// As much as a pipe holds by default (pipe(7)): one read empties it.
constexpr std::size_t kPipeCapacity = 65536;
constexpr std::size_t kKeptBytes = 4096;

std::string_view lastLine(std::string_view text) {
  const std::size_t end = text.find_last_not_of('\n');
  if (end == std::string_view::npos) {
    return {};
  }
  text = text.substr(0, end + 1);
  const std::size_t lineBreak = text.rfind('\n');
  return lineBreak == std::string_view::npos ? text : text.substr(lineBreak + 1);
}

gboolean pipeIsReadable(GObject* /*stream*/, gpointer pipe) {
  return static_cast<PipeTail*>(pipe)->collect() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

/// How a wait for a process went on.
struct Wait {
  bool over = false;
  bool processEnded = false;
};

void waitIsOver(GObject* process, GAsyncResult* result, gpointer data) {
  auto* wait = static_cast<Wait*>(data);
  wait->over = true;
  wait->processEnded = g_subprocess_wait_finish(G_SUBPROCESS(process), result, nullptr) != 0;
}

}  // namespace

PipeTail::PipeTail(GInputStream* stream)
    : stream_(G_POLLABLE_INPUT_STREAM(g_object_ref(stream))),
      source_(g_pollable_input_stream_create_source(stream_.get(), nullptr)) {
  g_source_set_callback(source_.get(), G_SOURCE_FUNC(pipeIsReadable), this, nullptr);
  g_source_attach(source_.get(), nullptr);
}

PipeTail::~PipeTail() {
  g_source_destroy(source_.get());
}

bool PipeTail::collect() {
  std::array<char, kPipeCapacity> bytes{};
  GErrorSlot error;
  const gssize count = g_pollable_input_stream_read_nonblocking(stream_.get(), bytes.data(),
                                                                bytes.size(), nullptr, error.out());
  if (count <= 0) {
    return error.matches(G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK);
  }
  text_.append(bytes.data(), static_cast<std::size_t>(count));
  if (text_.size() > kKeptBytes) {
    text_.erase(0, text_.size() - kKeptBytes);
  }
  return true;
}

HelperProcess::HelperProcess(const std::vector<std::string>& arguments, GErrorSlot& error) {
  std::vector<const char*> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) {
    argv.push_back(argument.c_str());
  }
  argv.push_back(nullptr);
  process_.reset(g_subprocess_newv(
      argv.data(),
      static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                    G_SUBPROCESS_FLAGS_STDERR_PIPE),
      error.out()));
  if (process_) {
    output_.emplace(g_subprocess_get_stdout_pipe(process_.get()));
    errorOutput_.emplace(g_subprocess_get_stderr_pipe(process_.get()));
  }
}

HelperProcess::~HelperProcess() {
  if (process_) {
    g_subprocess_force_exit(process_.get());
    g_subprocess_wait(process_.get(), nullptr, nullptr);
  }
}

bool HelperProcess::waitHandlingEvents(GCancellable* cancellable) {
  // The wait itself would not notice what was cancelled before it began.
  if (g_cancellable_is_cancelled(cancellable) != 0) {
    return false;
  }
  Wait wait;
  g_subprocess_wait_async(process_.get(), cancellable, waitIsOver, &wait);
  while (!wait.over) {
    g_main_context_iteration(nullptr, TRUE);
  }
  output_->collect();
  errorOutput_->collect();
  return wait.processEnded;
}

std::optional<std::string> HelperProcess::failure() const {
  if (g_subprocess_get_successful(process_.get()) != 0) {
    return std::nullopt;
  }
  if (g_subprocess_get_if_signaled(process_.get()) != 0) {
    return "the helper was ended by signal " +
           std::to_string(g_subprocess_get_term_sig(process_.get()));
  }
  std::string failure = "the helper ended with status " +
                        std::to_string(g_subprocess_get_exit_status(process_.get()));
  if (const std::string_view line = lastLine(errorOutput_->text()); !line.empty()) {
    failure.append(": ").append(line);
  }
  return failure;
}

}  // namespace vendril
