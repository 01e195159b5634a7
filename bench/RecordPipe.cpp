#include "bench/RecordPipe.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace vendril::bench {
namespace {

/// A pipe as large as the system lets us have it (pipe(7)): 16 MiB, else the 1 MiB that anyone
/// gets.
void enlarge(int pipe) {
  constexpr int kMebibyte = 1024 * 1024;
  if (fcntl(pipe, F_SETPIPE_SZ, 16 * kMebibyte) < 0) {
    fcntl(pipe, F_SETPIPE_SZ, kMebibyte);
  }
}

/// Hands the whole lines of `text` over and leaves what follows them.
void takeLines(std::string& text, const RecordPipe::LineReader& read) {
  std::size_t begin = 0;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
    read(std::string_view(text).substr(begin, end - begin));
    begin = end + 1;
  }
  text.erase(0, begin);
}

}  // namespace

RecordPipe::RecordPipe(LineReader read) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  readEnd_ = Descriptor(ends[0]);
  writeEnd_ = Descriptor(ends[1]);
  enlarge(ends[0]);
  thread_ = std::thread([this, read = std::move(read)] { run(read); });
}

RecordPipe::~RecordPipe() {
  closeWriteEnd();
  thread_.join();
}

void RecordPipe::run(const LineReader& read) {
  std::array<char, 65536> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init)
  std::string text;
  ssize_t count = 0;
  while ((count = ::read(readEnd_.get(), buffer.data(), buffer.size())) > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
    takeLines(text, read);
  }
}

}  // namespace vendril::bench
