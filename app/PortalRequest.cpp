#include "app/ZQN5VendrilAppDelegate.h"
#include "platform/Host.h"
#include "platform/Utf8.h"
#include "platform/UuidGenerator.h"

namespace vendril {
namespace {

constexpr std::chrono::seconds kRequestTimeout{60};
constexpr int kSuccessfulStatus = 200;

bool isEmpty(const std::optional<std::string>& text) {
  return !text || text->empty();
}

UrlRequest postRequest(const std::string& portalURI, std::optional<std::string> body) {
  UrlRequest request;
  request.url = Url::parse(portalURI);
  request.cachePolicy = UrlRequest::CachePolicy::useProtocolCachePolicy;
  request.timeoutInterval = kRequestTimeout;
  request.httpMethod = "POST";
  request.headerFields = {{"Content-Type", "application/x-www-form-urlencoded"}};
  request.httpBody = std::move(body);
  return request;
}

/// The data as text; nothing when it is not UTF-8.
std::optional<std::string> textOf(const std::string& data) {
  return isValidUtf8(data) ? std::optional(data) : std::nullopt;
}

}  // namespace

void ZQN5VendrilAppDelegate::sendRequest(const std::optional<std::string>& portalURI,
                                         const std::optional<std::string>& sessionID,
                                         const std::optional<std::string>& data) {
  if (isEmpty(portalURI)) {
    logger_->log("[%@] Request failed with error: Portal URL is empty%s", kClassName, "");
    return;
  }
  if (isEmpty(sessionID)) {
    logger_->log("[%@] Request failed with error: Session ID is empty%s", kClassName, "");
    return;
  }
  if (isEmpty(data)) {
    logger_->log("[%@] Request failed with error: Data is empty%s", kClassName, "");
    return;
  }
  const Payload payload{{"data", *data}, {"session_id", *sessionID}, {"command", "set_data"}};
  UrlRequest request = postRequest(*portalURI, dataFromPayload(payload));
  const std::string identifier = generateUUIDString();
  logger_->log("[%@] Sending POST request %@ to: %@%s", kClassName, identifier, *portalURI, "");
  Host::current().urlConnection().sendAsynchronousRequest(
      std::move(request), operationQueue_,
      [identifier, weakDelegate = weak_from_this()](const std::optional<UrlResponse>& response,
                                                    const std::optional<std::string>& responseData,
                                                    const std::optional<UrlError>& error) {
        if (const auto delegate = weakDelegate.lock()) {
          delegate->logOutcome(identifier, response, responseData, error);
        }
      });
}

std::optional<std::string> ZQN5VendrilAppDelegate::dataFromPayload(
    const std::optional<Payload>& payload) const {
  if (!payload) {
    return std::nullopt;
  }
  const PropertyList::Dictionary dictionary(payload->begin(), payload->end());
  logger_->log("[%@] Payload:\n%@\n%s", kClassName, dictionary, "");
  std::string form;
  for (const auto& [key, value] : *payload) {
    if (!form.empty()) {
      form += '&';
    }
    form += formatMessage("%@=%@", escape(key), escape(value));
  }
  logger_->log("[%@] Payload string: %@%s", kClassName, form, "");
  return form;
}

std::string ZQN5VendrilAppDelegate::escape(const std::string& text) const {
  return addPercentEncoding(text, allowedCharacters_);
}

CharacterSet ZQN5VendrilAppDelegate::charactersOfForms() {
  CharacterSet characters = CharacterSet::urlPathAllowedCharacterSet();
  characters.removeCharactersInString("&+=");
  return characters;
}

std::string ZQN5VendrilAppDelegate::generateUUIDString() {
  return Host::current().uuidGenerator().createUuidString().value_or("");
}

void ZQN5VendrilAppDelegate::logOutcome(const std::string& request,
                                        const std::optional<UrlResponse>& response,
                                        const std::optional<std::string>& data,
                                        const std::optional<UrlError>& error) const {
  if (error) {
    logger_->log("[%@] Request %@ failed with error: %@%s", kClassName, request,
                 error->localizedDescription, "");
  } else if (!response || !response->statusCode) {
    logger_->log("[%@] Request %@ has been successfully sent%s", kClassName, request, "");
  } else if (*response->statusCode == kSuccessfulStatus) {
    logger_->log("[%@] Request %@ has been successfully sent with HTTP status code: %ld%s",
                 kClassName, request, *response->statusCode, "");
  } else {
    logger_->log("[%@] Request %@ failed with HTTP status code: %ld%s", kClassName, request,
                 *response->statusCode, "");
    if (data) {
      logger_->log("[%@] Request %@ response data: %@%s", kClassName, request, textOf(*data), "");
    }
  }
}

}  // namespace vendril
