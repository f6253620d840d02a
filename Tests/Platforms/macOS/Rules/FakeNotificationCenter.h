// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/NotificationCenter.h"
#include "UnlockCore/Platform/MainThread.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace marrowby {

/// A notification centre. Without a main thread a post calls the handlers at once on the poster's
/// thread, else on the main thread's next turn.
class FakeNotificationCenter final : public NotificationCenter {
  public:
    explicit FakeNotificationCenter(MainThread* mainThread = nullptr) : mainThread_(mainThread) {}

    [[nodiscard]] Token observe(std::string name, std::function<void()> handler) override {
        const Token token{++observers_->lastToken};
        observers_->byToken.emplace(token, Observer{std::move(name), std::move(handler)});
        return token;
    }
    void remove(Token token) override { observers_->byToken.erase(token); }
    void post(const std::string& name) override {
        if (!mainThread_) return observers_->deliver(name);
        mainThread_->post([weak = std::weak_ptr(observers_), name] {
            if (const auto observers = weak.lock()) observers->deliver(name);
        });
    }

    /// Observed names in alphabetical order, one per registration.
    [[nodiscard]] std::vector<std::string> observedNames() const {
        std::vector<std::string> names;
        for (const auto& [token, observer] : observers_->byToken)
            names.push_back(observer.name);
        std::ranges::sort(names);
        return names;
    }

  private:
    struct Observer {
        std::string name;
        std::function<void()> handler;
    };
    struct Observers {
        std::map<Token, Observer> byToken;
        std::uint64_t lastToken = 0;

        void deliver(const std::string& name) const {
            // Copy: handlers may add and remove observers.
            const auto now = byToken;
            for (const auto& [token, observer] : now) {
                if (observer.name == name && byToken.contains(token)) observer.handler();
            }
        }
    };

    MainThread* mainThread_;
    std::shared_ptr<Observers> observers_ = std::make_shared<Observers>();
};

}  // namespace marrowby
