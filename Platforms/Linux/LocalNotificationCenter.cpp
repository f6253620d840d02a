#include "Platforms/Linux/LocalNotificationCenter.h"

#include <map>
#include <utility>
#include <vector>

namespace marrowby {

struct LocalNotificationCenter::Observers {
    struct Observer {
        std::string name;
        std::shared_ptr<const std::function<void()>> handler;
    };

    std::map<Token, Observer> byToken;

    void deliver(const std::string& name, Token last) const {
        std::vector<Token> tokens;
        for (const auto& [token, observer] : byToken) {
            if (token <= last && observer.name == name) tokens.push_back(token);
        }
        for (const Token token : tokens) {
            // A handler may have removed this one, or remove itself while it runs.
            const auto entry = byToken.find(token);
            if (entry == byToken.end()) continue;
            const auto handler = entry->second.handler;
            (*handler)();
        }
    }
};

LocalNotificationCenter::LocalNotificationCenter(MainThread& mainThread)
    : mainThread_(mainThread), observers_(std::make_shared<Observers>()) {}

LocalNotificationCenter::~LocalNotificationCenter() {
    // One of its handlers may be what destroys it.
    observers_->byToken.clear();
}

NotificationCenter::Token LocalNotificationCenter::observe(std::string name,
                                                           std::function<void()> handler) {
    const Token token{++lastToken_};
    observers_->byToken.emplace(
        token, Observers::Observer{std::move(name), std::make_shared<const std::function<void()>>(
                                                        std::move(handler))});
    return token;
}

void LocalNotificationCenter::remove(Token token) {
    observers_->byToken.erase(token);
}

void LocalNotificationCenter::post(const std::string& name) {
    mainThread_.post([weak = std::weak_ptr(observers_), name, last = Token{lastToken_}] {
        if (const auto observers = weak.lock()) observers->deliver(name, last);
    });
}

}  // namespace marrowby
