#include "platform/freedesktop/CurlTransfer.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/AsciiCase.h"

namespace vendril {
namespace {

constexpr const char* kAllowedProtocols = "http,https";

/// True for a line that libcurl takes for a status line, whatever follows.
bool beginsAsStatusLine(std::string_view line) {
  constexpr std::string_view kStart = "http/";
  return asciiLowercase(line.substr(0, kStart.size())) == kStart;
}

/// By RFC 9112, section 4. libcurl takes other lines too, and for a status of 200 when there is no
/// number in them.
bool isStatusLine(std::string_view line) {
  constexpr std::string_view kPattern = "HTTP/d.d ddd";
  const auto fits = [](char character, char pattern) {
    return pattern == 'd' ? character >= '0' && character <= '9' : character == pattern;
  };
  const std::string_view start = line.substr(0, kPattern.size());
  return std::equal(start.begin(), start.end(), kPattern.begin(), kPattern.end(), fits) &&
         line.find_first_of(" \r\n", kPattern.size()) == kPattern.size();
}

/// What libcurl says of a portal that closes a new connection without an answer.
constexpr const char* kNoAnswer = "Empty reply from server";

constexpr const char* kBodyTooLarge = "The response body is too large";

/// A portal may close a connection that has been idle at any time, and a request on it would fail
/// then. The shortest time that servers in wide use leave to an idle connection is 5 s.
constexpr long kMaxIdleSeconds = 3;

}  // namespace

/// Sets options of a handle until one fails, whose result it keeps.
class CurlOptions {
 public:
  explicit CurlOptions(CURL* easy) : easy_(easy) {}

  template <class Value>
  void set(CURLoption option, Value value) {
    static_assert(!std::is_same_v<Value, int>, "libcurl reads a long");
    if (result_ == CURLE_OK) {
      result_ = curl().easy_setopt(easy_, option, value);
    }
  }

  CURLcode result() const { return result_; }

 private:
  CURL* easy_;
  CURLcode result_ = CURLE_OK;
};

namespace {

/// What holds for every transfer, and may not be loosened.
void setPolicy(CurlOptions& options) {
  options.set(CURLOPT_PROTOCOLS_STR, kAllowedProtocols);
  options.set(CURLOPT_REDIR_PROTOCOLS_STR, kAllowedProtocols);
  options.set(CURLOPT_FOLLOWLOCATION, 0L);
  options.set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  options.set(CURLOPT_SSL_VERIFYPEER, 1L);
  options.set(CURLOPT_SSL_VERIFYHOST, 2L);
  options.set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
  options.set(CURLOPT_HTTP09_ALLOWED, 0L);
  // One request on each socket: the bound on sockets is then a bound on requests, and a portal that
  // stalls holds up no other request.
  options.set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  options.set(CURLOPT_MAXAGE_CONN, kMaxIdleSeconds);
  options.set(CURLOPT_NOSIGNAL, 1L);
  // A transfer that ends while its host name is looked up does not wait for the lookup.
  options.set(CURLOPT_QUICK_EXIT, 1L);
}

}  // namespace

CurlTransfer::CurlTransfer(UrlRequest request, std::string origin, RequestCompletion completion)
    : request_(std::move(request)),
      origin_(std::move(origin)),
      completion_(std::move(completion)) {}

CURLcode CurlTransfer::prepare(CURL* easy, const CurlLimits& limits) {
  if (!makeHeaderList()) {
    return CURLE_OUT_OF_MEMORY;
  }
  maxBodySize_ = limits.maxBodySize;
  headerSizeLeft_ = limits.maxHeaderSize;
  CurlOptions options(easy);
  setPolicy(options);
  setMethodAndBody(options);
  options.set(CURLOPT_URL, request_.url->absoluteString().c_str());
  options.set(CURLOPT_HTTPHEADER, headers_.get());
  options.set(CURLOPT_TIMEOUT_MS, timeoutInMilliseconds(limits));
  options.set(CURLOPT_CONNECTTIMEOUT_MS, timeoutInMilliseconds(limits));
  options.set(CURLOPT_WRITEFUNCTION, &CurlTransfer::receiveBody);
  options.set(CURLOPT_WRITEDATA, static_cast<void*>(this));
  options.set(CURLOPT_HEADERFUNCTION, &CurlTransfer::receiveHeader);
  options.set(CURLOPT_HEADERDATA, static_cast<void*>(this));
  options.set(CURLOPT_ERRORBUFFER, errorBuffer_.data());
  if (proxy_) {
    options.set(CURLOPT_PROXY, proxy_->c_str());
  }
  if (limits.certificateAuthorityFile) {
    options.set(CURLOPT_CAINFO, limits.certificateAuthorityFile->c_str());
  }
  return options.result();
}

void CurlTransfer::finish(CURL* easy, CURLcode result) {
  long status = 0;
  if (result == CURLE_OK) {
    result = curl().easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
  }
  if (result == CURLE_OK) {
    completion_.succeed(UrlResponse{static_cast<int>(status)}, std::move(body_));
  } else {
    fail(failureDescription(result));
  }
}

// libcurl would send a request once more when a connection that it has kept ends before the answer.
// It cannot do so with a body that it takes piece by piece.
void CurlTransfer::setMethodAndBody(CurlOptions& options) {
  if (request_.httpBody) {
    unsent_ = *request_.httpBody;
    options.set(CURLOPT_POST, 1L);
    options.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(unsent_.size()));
    options.set(CURLOPT_READFUNCTION, &CurlTransfer::sendBody);
    options.set(CURLOPT_READDATA, static_cast<void*>(this));
  } else if (request_.httpMethod == "POST") {
    options.set(CURLOPT_POSTFIELDS, "");
  }
  if (request_.httpMethod == "HEAD") {
    options.set(CURLOPT_NOBODY, 1L);
  }
  options.set(CURLOPT_CUSTOMREQUEST, request_.httpMethod.c_str());
}

std::size_t CurlTransfer::sendBody(char* room, std::size_t size, std::size_t count,
                                   void* transfer) noexcept {
  std::string_view& unsent = static_cast<CurlTransfer*>(transfer)->unsent_;
  const std::size_t length = unsent.copy(room, size * count);
  unsent.remove_prefix(length);
  return length;
}

std::size_t CurlTransfer::receiveBody(char* data, std::size_t size, std::size_t count,
                                      void* transfer) noexcept {
  auto& self = *static_cast<CurlTransfer*>(transfer);
  const std::size_t length = size * count;
  try {
    if (length > self.maxBodySize_ - self.body_.size()) {
      self.refusal_ = kBodyTooLarge;
      return CURL_WRITEFUNC_ERROR;
    }
    self.body_.append(data, length);
    return length;
  } catch (const std::bad_alloc&) {
    return CURL_WRITEFUNC_ERROR;
  }
}

std::size_t CurlTransfer::receiveHeader(char* data, std::size_t size, std::size_t count,
                                        void* transfer) noexcept {
  auto& self = *static_cast<CurlTransfer*>(transfer);
  const std::size_t length = size * count;
  if (length > self.headerSizeLeft_) {
    self.refusal_ = "The response headers are too large";
    return CURL_WRITEFUNC_ERROR;
  }
  self.headerSizeLeft_ -= length;
  const std::string_view line(data, length);
  if (beginsAsStatusLine(line) && !isStatusLine(line)) {
    self.refusal_ = "The response has a malformed status";
    return CURL_WRITEFUNC_ERROR;
  }
  return length;
}

bool CurlTransfer::makeHeaderList() {
  // Without this line libcurl would ask for leave to send a large body, and wait for it.
  std::vector<std::string> lines{"Expect:"};
  for (const auto& [name, value] : request_.headerFields) {
    // libcurl drops a header without a value unless it ends in a semicolon.
    std::string line = name;
    line.append(value.empty() ? ";" : ": ").append(value);
    lines.push_back(std::move(line));
  }
  headers_.reset();
  for (const std::string& line : lines) {
    curl_slist* const longer = curl().slist_append(headers_.get(), line.c_str());
    if (longer == nullptr) {
      return false;
    }
    static_cast<void>(headers_.release());
    headers_.reset(longer);
  }
  return true;
}

/// At least 1, since 0 would stand for no limit.
long CurlTransfer::timeoutInMilliseconds(const CurlLimits& limits) const {
  constexpr double kMax = std::numeric_limits<int>::max();
  double milliseconds = request_.timeoutInterval.count() * 1000;
  if (limits.timeoutCap) {
    milliseconds = std::min(milliseconds, static_cast<double>(limits.timeoutCap->count()));
  }
  return static_cast<long>(std::clamp(milliseconds, 1.0, kMax));
}

std::string CurlTransfer::failureDescription(CURLcode result) const {
  if (refusal_ == kBodyTooLarge) {
    return "The response body is larger than " + std::to_string(maxBodySize_) + " bytes";
  }
  if (refusal_ != nullptr) {
    return refusal_;
  }
  if (result == CURLE_SEND_FAIL_REWIND) {
    return kNoAnswer;
  }
  const std::string_view details(errorBuffer_.data());
  return details.empty() ? curl().easy_strerror(result) : std::string(details);
}

}  // namespace vendril
