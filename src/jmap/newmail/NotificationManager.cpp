#include "jmap/newmail/NotificationManager.h"

#include "base/Log.h"

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <algorithm>

namespace ondrel::jmap {

namespace {
constexpr base::Logger logger("notifications");
}

NotificationManager::NotificationManager(platform::NotificationCenter& center) : center_(center) {
  center_.setDelegate(this);
}

NotificationManager::~NotificationManager() {
  center_.setDelegate(nullptr);
}

async::Task<void> NotificationManager::requestPermission() {
  const auto granted = co_await center_.requestAuthorization();
  if (granted)
    logger.info("requestPermission: granted={}", *granted);
  else
    logger.error("requestPermission failed: {}", granted.error());
  const auto status = co_await center_.authorizationStatus();
  logger.info("requestPermission: authorizationStatus={}", static_cast<int>(status));
}

void NotificationManager::registerCategory(platform::NotificationCategory category) {
  const auto known =
      std::ranges::find(categories_, category.identifier, &platform::NotificationCategory::identifier);
  if (known == categories_.end())
    categories_.push_back(std::move(category));
  else
    *known = std::move(category);
  center_.setCategories(categories_);
}

void NotificationManager::setResponseHandler(const std::string& categoryIdentifier, ResponseHandler handler) {
  if (handler)
    responseHandlers_.insert_or_assign(categoryIdentifier, std::move(handler));
  else
    responseHandlers_.erase(categoryIdentifier);
}

std::string NotificationManager::newIdentifier() {
  return to_string(boost::uuids::random_generator()());
}

async::Task<void> NotificationManager::send(std::string title, std::string body,
                                            std::string categoryIdentifier,
                                            std::map<std::string, std::string> userInfo) {
  platform::NotificationContent content{.title = std::move(title),
                                        .body = std::move(body),
                                        .categoryIdentifier = std::move(categoryIdentifier),
                                        .userInfo = std::move(userInfo)};
  return send({newIdentifier(), std::move(content)});
}

async::Task<void> NotificationManager::send(platform::NotificationRequest request) {
  const auto identifier = request.identifier;
  const auto category = request.content.categoryIdentifier;
  const auto delivered = co_await center_.add(std::move(request));
  if (delivered)
    logger.info("send: delivered notification {} — category={}", identifier, category);
  else
    logger.error("send: failed to deliver notification {} — {}", identifier, delivered.error());
}

void NotificationManager::withdraw(const std::string& identifier) {
  logger.info("withdraw: {}", identifier);
  center_.withdraw(identifier);
}

void NotificationManager::willPresent(const platform::NotificationRequest& request) {
  logger.info("willPresent: {}", request.identifier);
}

void NotificationManager::didReceive(const platform::NotificationResponse& response) {
  const auto found = responseHandlers_.find(response.request.content.categoryIdentifier);
  if (found == responseHandlers_.end())
    return;
  // A copy: the handler may replace itself.
  const auto handler = found->second;
  handler(response);
}

} // namespace ondrel::jmap
